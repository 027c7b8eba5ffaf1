#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <cmath>
#include <optional>

namespace velotrine {

/// How a component lies on the screen's pixels, whatever the scale factor, so that a picture kept of it can
/// be drawn pixel by pixel.
struct PixelGrid
{
    float pixelsPerPoint = 1.0f;
    juce::Point<float> origin; ///< of the component in its picture: pixels, in [0, 1)
    int width = 0;             ///< of the picture, pixels
    int height = 0;

    [[nodiscard]] bool operator==(const PixelGrid&) const = default;

    [[nodiscard]] juce::Point<float> pixelAt(juce::Point<double> point) const
    {
        return origin + point.toFloat() * pixelsPerPoint;
    }

    [[nodiscard]] float pixels(double points) const { return static_cast<float>(points) * pixelsPerPoint; }

    /// The least whole points around pixels, whichever way a screen rounds them.
    [[nodiscard]] juce::Rectangle<int> pointsAround(juce::Rectangle<int> pixelArea) const
    {
        const auto points = (pixelArea.toFloat() - origin) / pixelsPerPoint;
        return points.getSmallestIntegerContainer().expanded(isWhole() ? 0 : 1);
    }

    /// Whether every point begins with a pixel.
    [[nodiscard]] bool isWhole() const
    {
        return pixelsPerPoint == std::round(pixelsPerPoint) && origin == juce::Point<float>();
    }

    [[nodiscard]] juce::AffineTransform fromPoints() const
    {
        return juce::AffineTransform::scale(pixelsPerPoint).translated(origin);
    }
};

/// @param graphics  what the component is painting itself with
[[nodiscard]] inline PixelGrid pixelGridOf(const juce::Component& component, const juce::Graphics& graphics)
{
    PixelGrid grid;
    grid.pixelsPerPoint = graphics.getInternalContext().getPhysicalPixelScaleFactor();
    const auto corner = component.getTopLevelComponent()->getLocalPoint(&component, juce::Point<float>()) *
                        grid.pixelsPerPoint;
    grid.origin = {corner.x - std::floor(corner.x), corner.y - std::floor(corner.y)};
    grid.width = static_cast<int>(std::ceil(grid.pixels(component.getWidth()) + grid.origin.x));
    grid.height = static_cast<int>(std::ceil(grid.pixels(component.getHeight()) + grid.origin.y));
    return grid;
}

/// Makes a picture the size of a grid and empties it.
/// @param backdrop  what it is filled with; without one it is transparent, and slower to draw
inline void emptyPicture(juce::Image& picture, const PixelGrid& grid, std::optional<juce::Colour> backdrop)
{
    const auto format = backdrop ? juce::Image::RGB : juce::Image::ARGB;
    if (picture.getFormat() != format || picture.getWidth() != grid.width ||
        picture.getHeight() != grid.height)
        picture = juce::Image(format, grid.width, grid.height, false, juce::SoftwareImageType());
    picture.clear(picture.getBounds(), backdrop.value_or(juce::Colour()));
}

} // namespace velotrine
