#include "host/SilentClock.h"

#include <algorithm>

namespace velotrine {

void SilentClock::start(TimePoint now, double sampleRateHz) noexcept
{
    last = now;
    sampleRate = sampleRateHz;
    framesOwed = 0.0;
}

int SilentClock::framesDue(TimePoint now) noexcept
{
    const auto elapsedSeconds = std::chrono::duration<double>(now - last).count();
    last = now;
    framesOwed += std::clamp(elapsedSeconds, 0.0, longestCatchUpSeconds) * sampleRate;
    const auto due = static_cast<int>(framesOwed);
    framesOwed -= due;
    return due;
}

} // namespace velotrine
