#pragma once

#include <juce_graphics/juce_graphics.h>

namespace velotrine {

/// Draws discs and circles with smooth edges straight into an image's pixels. A pixel is covered as far as
/// its middle lies inside an edge, which takes a square root where an edge is near and nothing elsewhere; a
/// path needs a table of edges each time. That is why eighty flashing spots fit into a frame.
/// @tparam Pixel  juce::PixelRGB or juce::PixelARGB, as the image has them
template <typename Pixel>
class CirclePainter
{
public:
    explicit CirclePainter(juce::Image& image);

    /// @param centre  pixels; the middle of the first pixel is at (0.5, 0.5)
    /// @param radius  pixels, above 0
    void fillDisc(juce::Point<float> centre, float radius, juce::Colour colour);

    /// @param lineWidth  pixels, above 0; half of it lies on either side of the radius
    void drawCircle(juce::Point<float> centre, float radius, float lineWidth, juce::Colour colour);

private:
    /// What lies between two circles; an inner radius below 0 makes a disc.
    void fillBetween(juce::Point<float> centre, float innerRadius, float outerRadius, juce::Colour colour);

    juce::Image::BitmapData pixels;
};

extern template class CirclePainter<juce::PixelRGB>;
extern template class CirclePainter<juce::PixelARGB>;

} // namespace velotrine
