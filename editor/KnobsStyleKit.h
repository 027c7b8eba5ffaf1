#pragma once

#include <juce_graphics/juce_graphics.h>

namespace velotrine {

/// The knobs' artwork: white on transparent, scaled to any rectangle. Main thread; the display font should be
/// registered before.
class KnobsStyleKit
{
public:
    /// The knob's name, set round its foot.
    static void drawActivityUnderlay(juce::Graphics& graphics, juce::Rectangle<float> target);
    static void drawBoredomUnderlay(juce::Graphics& graphics, juce::Rectangle<float> target);
    static void drawCaloriesUnderlay(juce::Graphics& graphics, juce::Rectangle<float> target);
    static void drawDrudgeryUnderlay(juce::Graphics& graphics, juce::Rectangle<float> target);

    /// The scalloped rim that turns, with a mark that points up.
    static void drawOverlay(juce::Graphics& graphics, juce::Rectangle<float> target);

    /// A ring, 1.5 points wide, and the same with a disc in it.
    static void drawCircle(juce::Graphics& graphics, juce::Rectangle<float> target);
    static void drawCircleWithDisc(juce::Graphics& graphics, juce::Rectangle<float> target);

    /// @param sizePoints      width and height, above 0
    /// @param pixelsPerPoint  the screen's density, so that a picture of these points is as sharp as it can
    /// be
    static juce::Image imageOfActivityUnderlay(juce::Point<float> sizePoints, float pixelsPerPoint);
    static juce::Image imageOfBoredomUnderlay(juce::Point<float> sizePoints, float pixelsPerPoint);
    static juce::Image imageOfCaloriesUnderlay(juce::Point<float> sizePoints, float pixelsPerPoint);
    static juce::Image imageOfDrudgeryUnderlay(juce::Point<float> sizePoints, float pixelsPerPoint);
    static juce::Image imageOfOverlay(juce::Point<float> sizePoints, float pixelsPerPoint);
};

/// Draws into a new transparent image of this size and density.
template <typename Draw>
[[nodiscard]] juce::Image imageDrawnBy(juce::Point<float> sizePoints, float pixelsPerPoint, const Draw& draw)
{
    const auto pixels = [&](float points) { return std::max(1, juce::roundToInt(points * pixelsPerPoint)); };
    juce::Image image(juce::Image::ARGB, pixels(sizePoints.x), pixels(sizePoints.y), true);
    juce::Graphics graphics(image);
    graphics.addTransform(juce::AffineTransform::scale(static_cast<float>(image.getWidth()) / sizePoints.x,
                                                       static_cast<float>(image.getHeight()) / sizePoints.y));
    draw(graphics, juce::Rectangle<float>(sizePoints.x, sizePoints.y));
    return image;
}

} // namespace velotrine
