#pragma once

#include <chrono>

namespace velotrine {

/// How far a rendering has come and how fast it is, on standard error; silent when that is not a terminal.
class ProgressBar
{
public:
    /// @param wanted  false keeps it silent even on a terminal
    explicit ProgressBar(bool wanted);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Call it as often as you like; it draws a few times a second.
    /// @param fraction         done of the whole, 0 to 1
    /// @param secondsOfSound   rendered so far
    void update(double fraction, double secondsOfSound);

    /// Replaces the bar by a line that says what came of it.
    void finish(const char* fileName, double secondsOfSound);

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] double secondsSinceStart() const;

    bool visible;
    bool drawn = false;
    Clock::time_point start = Clock::now();
    Clock::time_point lastDrawn = start;
};

} // namespace velotrine
