#include "engine/HostClock.h"

#include <chrono>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(HostClock, NeverShowsZeroAndNeverRunsBackwards)
{
    auto last = hostClockNow();
    EXPECT_GT(last, 0U);
    for (int i = 0; i < 10000; ++i) {
        const auto now = hostClockNow();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(HostClock, OneTickIsOneNanosecondOfTheSteadyClock)
{
    using std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;

    // However slowly this thread runs, what the clock counts lies between the inner and the outer stretch.
    const auto outerStart = steady_clock::now();
    const auto first = hostClockNow();
    const auto innerStart = steady_clock::now();
    auto innerEnd = innerStart;
    while (innerEnd - innerStart < std::chrono::milliseconds(2))
        innerEnd = steady_clock::now();
    const auto last = hostClockNow();
    const auto outerEnd = steady_clock::now();

    const double passed = static_cast<double>(last - first) * hostClockSecondsPerTick;
    EXPECT_LE(passed, Seconds(outerEnd - outerStart).count() + 1.0e-9);
    EXPECT_GE(passed, Seconds(innerEnd - innerStart).count() - 1.0e-9);
}

} // namespace
} // namespace velotrine
