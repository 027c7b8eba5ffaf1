#include "host/WindowPlacement.h"

#include <array>

namespace velotrine {

namespace {

constexpr int gap = 8; ///< points between two windows, where there is room

} // namespace

juce::Rectangle<int> placedBeside(juce::Rectangle<int> neighbour, juce::Rectangle<int> area,
                                  juce::Rectangle<int> screen)
{
    const auto at = [&](int x, int y) { return area.withPosition(x, y).constrainedWithin(screen); };
    const std::array places{
        at(neighbour.getRight() + gap, neighbour.getY()),
        at(neighbour.getX() - gap - area.getWidth(), neighbour.getY()),
        at(neighbour.getX(), neighbour.getBottom() + gap),
        at(neighbour.getX(), neighbour.getY() - gap - area.getHeight()),
    };
    const auto covered = [&](juce::Rectangle<int> place) {
        const auto common = place.getIntersection(neighbour);
        return common.getWidth() * common.getHeight();
    };
    // A strip more or less is no reason to leave the usual side; covering nothing is.
    const auto strip = gap * neighbour.getHeight();
    auto best = places.front();
    for (const auto& place : places)
        if (covered(place) == 0 ? covered(best) > 0 : covered(place) + strip < covered(best))
            best = place;
    return best;
}

} // namespace velotrine
