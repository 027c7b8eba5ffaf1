// Takes in the application: what was heard while hands were at work is kept, to the bit.

#include "tests/host/JackRecorder.h"
#include "tests/host/windows/ApplicationTest.h"
#include "tests/host/windows/KeptTakes.h"
#include "tests/support/JackServer.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>

namespace velotrine {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::SizeIs;

class TakesInTheApplication : public ApplicationTest
{
protected:
    void SetUp() override
    {
        environment = {{"HOME", folder.path().string()}};
        launchForUse();
    }

    [[nodiscard]] std::vector<fs::path> kept(const std::string& ending) const
    {
        return keptTakes(folder.path(), ending);
    }

    /// Presses the key for it, and waits for the notes' file, which comes with the sound's.
    void keep(std::size_t takes)
    {
        pressKey("ctrl+k");
        ASSERT_TRUE(runMessagesUntil([&] { return kept(".mid").size() == takes; }, 60.0));
    }

    JackServer server{{"-S"}}; // it waits for its clients, and loses nothing
};

std::ptrdiff_t silentFrames(const std::vector<float>& sound)
{
    return std::ranges::find_if(sound, [](float sample) { return sample != 0.0f; }) - sound.begin();
}

TEST_F(TakesInTheApplication, AreBitForBitWhatWasHeard)
{
    const char* const wanted = std::getenv("VELOTRINE_TAKE_SECONDS");
    const double seconds = wanted != nullptr ? std::atof(wanted) : 10.0;
    JackRecorder recorder(seconds + 60.0);
    ASSERT_TRUE(recorder.isConnected());
    pressKey("space");
    turnThings(seconds);
    pressKey("space");
    runMessagesFor(3.0);
    const auto heard = recorder.samples();
    keep(1);

    int rate = 0;
    const auto take = leftOf(kept(".wav").at(0), &rate);
    EXPECT_EQ(rate, 48000);
    // The server's time goes slower than the clock's where the machine is busy.
    ASSERT_GT(static_cast<double>(take.size()), 0.5 * seconds * rate);
    const auto offset = silentFrames(heard) - silentFrames(take);
    ASSERT_GE(offset, 0);
    ASSERT_GE(heard.size(), static_cast<std::size_t>(offset) + take.size());
    const auto [first, second] =
        std::ranges::mismatch(take, std::span(heard).subspan(static_cast<std::size_t>(offset), take.size()));
    EXPECT_TRUE(first == take.end()) << "from frame " << first - take.begin() << " of " << take.size()
                                     << " on";
}

TEST_F(TakesInTheApplication, AreThreeFilesAndOnlyTheLastPlay)
{
    pressKey("ctrl+k");
    runMessagesFor(0.5);
    EXPECT_THAT(kept(".wav"), IsEmpty()) << "nothing has played";
    const JackRecorder listener(60.0); // so that the server drives the clock
    ASSERT_TRUE(listener.isConnected());
    for (const double seconds : {6.0, 2.5}) {
        pressKey("space");
        const auto end = listener.seconds() + seconds;
        ASSERT_TRUE(runMessagesUntil([&] { return listener.seconds() >= end; }, 40.0));
        pressKey("space");
        runMessagesFor(3.0);
    }
    keep(1);
    EXPECT_THAT(kept(".velotrine-take"), SizeIs(1));
    int rate = 0;
    const auto take = leftOf(kept(".wav").at(0), &rate);
    EXPECT_GT(take.size(), 2U * 48000U);
    EXPECT_LT(take.size(), 6U * 48000U);
}

TEST_F(TakesInTheApplication, SurviveTheApplicationThatIsKilled)
{
    {
        const JackRecorder listener(1.0); // so that the server drives the clock
        ASSERT_TRUE(listener.isConnected());
        pressKey("space");
        runMessagesFor(3.0);
    }
    application->send(SIGKILL);
    ASSERT_TRUE(ends());
    launch();
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    runMessagesFor(0.5);
    keep(1);
    int rate = 0;
    EXPECT_GT(leftOf(kept(".wav").at(0), &rate).size(), 48000U);

    pressKey("ctrl+q");
    EXPECT_EQ(end().exitCode, 0);
    EXPECT_TRUE(fs::is_empty(folder.path() / "state/Velotrine/takes"));
}

} // namespace
} // namespace velotrine
