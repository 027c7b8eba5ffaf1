#pragma once

#include <chrono>

namespace velotrine {

/// How much sound real time asks for, where no device does.
class SilentClock
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// What one call may ask for at most, in seconds. Time beyond it, in which the process was suspended or
    /// held up, is left out, not made up for.
    static constexpr double longestCatchUpSeconds = 0.25;

    /// @param sampleRateHz  above 0
    void start(TimePoint now, double sampleRateHz) noexcept;

    /// Frames since the last call, or since the start. Parts of a frame are kept for the next call.
    [[nodiscard]] int framesDue(TimePoint now) noexcept;

private:
    TimePoint last;
    double sampleRate = 0.0;
    double framesOwed = 0.0;
};

} // namespace velotrine
