#include "render/ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace velotrine {

namespace {

constexpr auto redrawInterval = std::chrono::milliseconds(100);
constexpr int barWidth = 30;
constexpr const char* clearLine = "\r\x1b[K";

} // namespace

ProgressBar::ProgressBar(bool wanted) : visible(wanted && ::isatty(STDERR_FILENO) != 0) {}

ProgressBar::~ProgressBar()
{
    if (drawn)
        std::fputs(clearLine, stderr);
}

double ProgressBar::secondsSinceStart() const
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void ProgressBar::update(double fraction, double secondsOfSound)
{
    if (!visible || Clock::now() - lastDrawn < redrawInterval)
        return;
    lastDrawn = Clock::now();
    drawn = true;
    const double bounded = std::clamp(fraction, 0.0, 1.0);
    const auto filled = static_cast<std::size_t>(bounded * barWidth);
    const auto bar = std::string(filled, '#') + std::string(barWidth - filled, '.');
    std::fprintf(stderr, "\r[%s] %3.0f %%  %.0f x real time", bar.c_str(), bounded * 100.0,
                 secondsOfSound / secondsSinceStart());
    std::fflush(stderr);
}

void ProgressBar::finish(const char* fileName, double secondsOfSound)
{
    if (!visible)
        return;
    const double seconds = secondsSinceStart();
    std::fprintf(stderr, "%s%s: %.1f s of sound, rendered in %.2f s (%.0f x real time)\n",
                 drawn ? clearLine : "", fileName, secondsOfSound, seconds, secondsOfSound / seconds);
    drawn = false;
}

} // namespace velotrine
