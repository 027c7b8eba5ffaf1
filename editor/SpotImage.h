#pragma once

#include <juce_graphics/juce_graphics.h>

namespace velotrine {

/// A picture of one spot, a disc with a line round it, at any fraction of a pixel. A pixel is covered as far
/// as its middle lies inside an edge: one square root, where a path needs a table of edges. That is why
/// eighty flashing spots fit into a frame. Main thread.
class SpotImage
{
public:
    /// Draws a spot over what was drawn before.
    /// @param centre     pixels, relative to any grid of pixels
    /// @param radius     pixels, above 0
    /// @param lineWidth  pixels, above 0; half of it lies on either side of the radius
    /// @param fill       opaque
    void draw(juce::Point<float> centre, float radius, float lineWidth, juce::Colour fill, juce::Colour line);

    [[nodiscard]] const juce::Image& image() const noexcept { return pixels; }

    /// Where the picture's first pixel lies on the grid that the centre refers to.
    [[nodiscard]] juce::Point<int> corner() const noexcept { return firstPixel; }

private:
    juce::Image pixels;
    juce::Point<int> firstPixel;
};

} // namespace velotrine
