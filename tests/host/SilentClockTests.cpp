#include "host/SilentClock.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

constexpr SilentClock::TimePoint begin{100s};

TEST(SilentClock, AsksForAsMuchSoundAsTimeHasPassed)
{
    SilentClock clock;
    clock.start(begin, 44100.0);
    EXPECT_EQ(clock.framesDue(begin), 0);
    EXPECT_EQ(clock.framesDue(begin + 100ms), 4410);
    EXPECT_EQ(clock.framesDue(begin + 100ms), 0);
    EXPECT_EQ(clock.framesDue(begin + 110ms), 441);
}

TEST(SilentClock, LosesNoFractionOfAFrame)
{
    SilentClock clock;
    clock.start(begin, 44100.0);
    int frames = 0;
    for (int call = 1; call <= 100000; ++call)
        frames += clock.framesDue(begin + call * 100us);
    EXPECT_NEAR(frames, 441000, 1);
}

TEST(SilentClock, SkipsWhatALongPauseWouldHaveAskedFor)
{
    SilentClock clock;
    clock.start(begin, 48000.0);
    EXPECT_EQ(clock.framesDue(begin + 2h), 12000);
    EXPECT_EQ(clock.framesDue(begin + 2h + 10ms), 480);
}

TEST(SilentClock, AsksForNothingWhenTimeStandsStillOrRunsBack)
{
    SilentClock clock;
    clock.start(begin, 48000.0);
    EXPECT_EQ(clock.framesDue(begin - 1s), 0);
}

TEST(SilentClock, StartsAfreshEachTime)
{
    SilentClock clock;
    clock.start(begin, 48000.0);
    clock.start(begin + 1s, 96000.0);
    EXPECT_EQ(clock.framesDue(begin + 1s + 10ms), 960);
}

} // namespace
} // namespace velotrine
