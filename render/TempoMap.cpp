#include "render/TempoMap.h"

#include <algorithm>
#include <cstddef>

namespace velotrine {

namespace {

constexpr double secondsPerMinute = 60.0;
constexpr double shortestStep = 1.0 / 16.0; ///< quarters

double quartersAfter(const TempoMap::Step& step, double seconds)
{
    return step.quarters + (seconds - step.seconds) * step.quartersPerMinute / secondsPerMinute;
}

} // namespace

void TempoMap::set(double seconds, double quartersPerMinute)
{
    if (quartersPerMinute == latest.quartersPerMinute)
        return;
    const auto quarters = quartersAfter(latest, seconds);
    // A tempo that held for a while has a step of its own, however short the glide before it was.
    if (latest.quarters > points.back().quarters && quarters - latest.quarters >= shortestStep)
        points.push_back({latest.seconds, latest.quarters});
    if (quarters - points.back().quarters >= shortestStep)
        points.push_back({seconds, quarters});
    latest = {seconds, quarters, quartersPerMinute};
}

std::vector<TempoMap::Step> TempoMap::steps() const
{
    auto all = points;
    if (latest.quarters > all.back().quarters)
        all.push_back({latest.seconds, latest.quarters});
    std::vector<Step> steps;
    for (std::size_t i = 0; i + 1 < all.size(); ++i)
        steps.push_back({all[i].seconds, all[i].quarters,
                         (all[i + 1].quarters - all[i].quarters) / (all[i + 1].seconds - all[i].seconds) *
                             secondsPerMinute});
    steps.push_back({all.back().seconds, all.back().quarters, latest.quartersPerMinute});
    return steps;
}

double TempoMap::quartersAt(const std::vector<Step>& steps, double seconds)
{
    const auto next = std::ranges::upper_bound(steps, seconds, {}, &Step::seconds);
    return quartersAfter(*(next == steps.begin() ? next : next - 1), seconds);
}

} // namespace velotrine
