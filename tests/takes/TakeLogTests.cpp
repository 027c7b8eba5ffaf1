#include "takes/TakeLog.h"

#include "tests/takes/TakenInstrument.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

namespace velotrine {
namespace {

namespace fs = std::filesystem;

class Log : public testing::Test
{
protected:
    Log()
    {
        std::string name = fs::temp_directory_path() / "take-log-XXXXXX";
        folder = mkdtemp(name.data());
    }

    ~Log() override { fs::remove_all(folder); }

    static TakeRecord record(TakeRecord::Kind kind, std::int64_t frame = 0, double value = 0.0,
                             TakeTarget target = TakeTarget::end)
    {
        return {.frame = frame, .bits = std::bit_cast<std::uint64_t>(value), .kind = kind, .target = target};
    }

    static void addTake(TakeLog& log, double sampleRate)
    {
        log.add(record(TakeRecord::Kind::begin, 0, sampleRate));
        log.add(record(TakeRecord::Kind::change, 64, 0.25, takeTarget(3)));
    }

    /// What a program leaves behind that adds takes at these rates and is killed.
    void beKilledAfter(const std::vector<double>& sampleRates) const
    {
        const auto child = fork();
        if (child == 0) {
            TakeLog log(folder);
            for (const double rate : sampleRates)
                addTake(log, rate);
            log.flush();
            raise(SIGKILL);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status));
    }

    fs::path folder;
};

TEST_F(Log, HandsOutWhatAKilledProgramLeftBehindOnce)
{
    beKilledAfter({44100.0});
    TakeLog log(folder);
    const auto takes = log.leftBehind();
    ASSERT_EQ(takes.size(), 1U);
    EXPECT_EQ(takes[0].start.sampleRate, 44100.0);
    EXPECT_EQ(takes[0].changes,
              (std::vector<TakeChange>{{.time = {.amount = 64.0}, .value = 0.25, .target = takeTarget(3)},
                                       {.time = {.amount = 64.0}, .target = TakeTarget::end}}));
    EXPECT_TRUE(log.leftBehind().empty());
}

TEST_F(Log, KnowsHowFarATakeHadComeInWhichNothingChanged)
{
    const auto child = fork();
    if (child == 0) {
        TakeLog log(folder);
        addTake(log, 48000.0);
        log.add(record(TakeRecord::Kind::reached, 96000));
        log.flush();
        raise(SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const auto takes = TakeLog(folder).leftBehind();
    ASSERT_EQ(takes.size(), 1U);
    EXPECT_EQ(takes[0].changes.back(), (TakeChange{.time = {.amount = 96000.0}, .target = TakeTarget::end}));
}

TEST_F(Log, KeepsTheNewestTwoTakes)
{
    beKilledAfter({8000.0, 9000.0, 10000.0, 11000.0});
    const auto takes = TakeLog(folder).leftBehind();
    ASSERT_EQ(takes.size(), 2U);
    EXPECT_EQ(takes[0].start.sampleRate, 10000.0);
    EXPECT_EQ(takes[1].start.sampleRate, 11000.0);
}

TEST_F(Log, OffersWhatIsLeftBehindUntilItIsForgotten)
{
    beKilledAfter({44100.0});
    EXPECT_EQ(TakeLog(folder).leftBehind().size(), 1U);
    {
        TakeLog log(folder);
        EXPECT_EQ(log.leftBehind().size(), 1U);
        log.forgetLeftBehind();
    }
    EXPECT_TRUE(TakeLog(folder).leftBehind().empty());
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(Log, LeavesNothingBehindAfterAnOrderlyEnd)
{
    {
        TakeLog log(folder);
        addTake(log, 48000.0);
        log.flush();
    }
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(Log, ClearsAwayWhatHoldsNoTake)
{
    beKilledAfter({});
    EXPECT_FALSE(fs::is_empty(folder));
    EXPECT_TRUE(TakeLog(folder).leftBehind().empty());
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(Log, DoesNotTouchThoseOfAProgramThatStillRuns)
{
    TakeLog running(folder);
    addTake(running, 48000.0);
    running.flush();
    EXPECT_TRUE(TakeLog(folder).leftBehind().empty());
}

TEST_F(Log, ReadsAsFarAsItMakesSense)
{
    beKilledAfter({44100.0});
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".records") {
            std::ofstream(entry.path(), std::ios::binary | std::ios::app) << "a part of a rec";
        }
    TakeLog log(folder);
    const auto takes = log.leftBehind();
    ASSERT_EQ(takes.size(), 1U);
    EXPECT_EQ(takes[0].changes.size(), 2U);
}

TEST_F(Log, PassesOverWhatIsNotItsOwn)
{
    fs::create_directory(folder / "other");
    std::ofstream(folder / "other/000000.records") << "something else entirely";
    std::ofstream(folder / "file") << "no folder";
    EXPECT_TRUE(TakeLog(folder).leftBehind().empty());
    EXPECT_TRUE(fs::exists(folder / "file"));
}

TEST_F(Log, WhereNothingCanBeWrittenNothingIsAndThatIsAll)
{
    TakeLog log("/proc/nowhere");
    addTake(log, 48000.0);
    log.flush();
    EXPECT_TRUE(log.leftBehind().empty());
}

} // namespace
} // namespace velotrine
