#include "host/RingsMotifViewMac.h"

#include "editor/Colours.h"

#include <array>

namespace velotrine {

namespace {

// All lengths in units of the square that the motif is designed in.
constexpr float designSide = 360.0f;
constexpr float lineWidth = 7.0f;
constexpr float spotRadius = 14.0f;

struct MotifRing
{
    float radius;
    int spotCount;
};

constexpr std::array rings{MotifRing{140.0f, 6}, MotifRing{100.0f, 5}, MotifRing{60.0f, 4}};

juce::Rectangle<float> circle(juce::Point<float> centre, float radius)
{
    return juce::Rectangle<float>(2.0f * radius, 2.0f * radius).withCentre(centre);
}

void drawSpots(juce::Graphics& graphics, const MotifRing& ring, juce::Point<float> centre)
{
    for (int spot = 0; spot < ring.spotCount; ++spot) {
        // From twelve o'clock, which is where JUCE's angles begin, clockwise.
        const auto angle =
            juce::MathConstants<float>::twoPi * static_cast<float>(spot) / static_cast<float>(ring.spotCount);
        const auto outline = circle(centre.getPointOnCircumference(ring.radius, angle), spotRadius);
        graphics.setColour(grey(0.18f));
        graphics.fillEllipse(outline);
        graphics.setColour(juce::Colours::white);
        graphics.drawEllipse(outline, lineWidth);
    }
}

} // namespace

RingsMotifViewMac::RingsMotifViewMac()
{
    setInterceptsMouseClicks(false, false);
}

void RingsMotifViewMac::paint(juce::Graphics& graphics)
{
    const auto bounds = getLocalBounds().toFloat();
    const auto scale = juce::jmin(bounds.getWidth(), bounds.getHeight()) / designSide;
    graphics.addTransform(juce::AffineTransform::scale(scale).translated(bounds.getCentre()));

    const juce::Point<float> centre;
    graphics.setColour(juce::Colours::white);
    for (const auto& ring : rings)
        graphics.drawEllipse(circle(centre, ring.radius), lineWidth);
    for (const auto& ring : rings)
        drawSpots(graphics, ring, centre);
}

} // namespace velotrine
