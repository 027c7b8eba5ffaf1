// JUCE's timers, as cmake/JuceCorrections.cmake makes them.

#include "tests/support/MessageLoop.h"

#include <juce_events/juce_events.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class CalledTimer : public juce::Timer
{
public:
    explicit CalledTimer(std::function<void()> actionToTake) : action(std::move(actionToTake)) {}

    ~CalledTimer() override { stopTimer(); }

private:
    void timerCallback() override { action(); }

    std::function<void()> action;
};

/// Goes on, so that others are not the only ones.
struct Beat
{
    explicit Beat(int interval) { timer.startTimer(interval); }

    int count = 0;
    CalledTimer timer{[this] { ++count; }};
};

TEST(Timers, AreNotEarlyForTimeThatHadPassedBeforeTheyWereStarted)
{
    const Beat other(100);
    runMessagesFor(0.05);
    const auto start = steady_clock::now();
    auto fired = start;
    CalledTimer timer([&] { fired = steady_clock::now(); });
    timer.startTimer(80);
    ASSERT_TRUE(runMessagesUntil([&] { return fired != start; }, 5.0));
    EXPECT_GE(fired - start, milliseconds(79));
}

TEST(Timers, ComeAgainAndAgainUntilTheyAreStopped)
{
    Beat slow(30);
    Beat fast(5);
    ASSERT_TRUE(runMessagesUntil([&] { return slow.count >= 5; }, 5.0));
    EXPECT_GT(fast.count, slow.count);
    fast.timer.stopTimer();
    const auto count = fast.count;
    slow.count = 0;
    ASSERT_TRUE(runMessagesUntil([&] { return slow.count >= 2; }, 5.0));
    EXPECT_EQ(fast.count, count);
}

/// The time from the last call of one to that of another, which was started in between: the median of five.
steady_clock::duration distanceOf(int interval, int otherInterval)
{
    auto last = steady_clock::now();
    CalledTimer first([&] { last = steady_clock::now(); });
    first.startTimer(interval);
    runMessagesFor(0.037);
    std::vector<steady_clock::duration> distances;
    CalledTimer second([&] { distances.push_back(steady_clock::now() - last); });
    second.startTimer(otherInterval);
    EXPECT_TRUE(runMessagesUntil([&] { return distances.size() >= 5; }, 5.0));
    std::ranges::nth_element(distances, distances.begin() + 2);
    return distances[2];
}

TEST(Timers, ThatAreSlowComeTogether)
{
    const auto together = [](auto distance) {
        return distance < milliseconds(5) || distance > milliseconds(95);
    };
    EXPECT_PRED1(together, distanceOf(100, 100));
    EXPECT_PRED1(together, distanceOf(100, 300));
    const auto closeTogether = [](auto distance) {
        return distance < milliseconds(5) || distance > milliseconds(15);
    };
    EXPECT_PRED1(closeTogether, distanceOf(20, 100));
}

TEST(Timers, AreNotSlowedDownByComingTogether)
{
    auto last = steady_clock::now();
    bool isRegular = false;
    CalledTimer timer([&] {
        const auto now = steady_clock::now();
        isRegular = isRegular || now - last < milliseconds(35);
        last = now;
    });
    timer.startTimer(30);
    runMessagesFor(0.1);
    isRegular = false;
    EXPECT_TRUE(runMessagesUntil([&] { return isRegular; }, 5.0));
}

TEST(Timers, StartedOnAnotherThreadComeOnTheMessageThread)
{
    std::thread::id caller;
    CalledTimer timer([&] { caller = std::this_thread::get_id(); });
    std::thread([&] { timer.startTimer(1); }).join();
    ASSERT_TRUE(runMessagesUntil([&] { return caller != std::thread::id(); }, 5.0));
    EXPECT_EQ(caller, std::this_thread::get_id());
}

TEST(Timers, GoOnWhileOneOfThemRunsMessagesItself)
{
    Beat other(5);
    bool wentOn = false;
    CalledTimer timer([&] {
        timer.stopTimer();
        other.count = 0;
        wentOn = runMessagesUntil([&] { return other.count >= 3; }, 5.0);
    });
    timer.startTimer(10);
    ASSERT_TRUE(runMessagesUntil([&] { return wentOn; }, 6.0));
}

/// Each would wake a processor twice for each time that a timer comes.
TEST(Timers, NeedNoThreadOfTheirOwn)
{
    Beat beat(5);
    ASSERT_TRUE(runMessagesUntil([&] { return beat.count >= 3; }, 5.0));
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        EXPECT_NE(name, "JUCE Timer");
    }
}

} // namespace
} // namespace velotrine
