#pragma once

#include <juce_graphics/juce_graphics.h>

namespace velotrine {

/// Draws discs, circles and lines with smooth edges straight into an image's pixels. A pixel is covered as
/// far as its middle lies inside an edge, which takes a square root where an edge is near and nothing
/// elsewhere; a path needs a table of edges each time. That is why eighty flashing spots fit into a frame. A
/// pixel's colour does not depend on what the drawing is clipped to.
/// @tparam Pixel  juce::PixelRGB or juce::PixelARGB, as the image has them
template <typename Pixel>
class CirclePainter
{
public:
    /// @param origin  where in the image the drawing's own begins, if the image holds only a part of it; what
    ///                is drawn does not depend on that
    explicit CirclePainter(juce::Image& image, juce::Point<int> origin = {});

    /// Leaves everything outside of a part of the drawing alone from now on.
    /// @param part  within the image
    void clipTo(juce::Rectangle<int> part) noexcept { clip = part; }

    /// Replaces every pixel.
    void clear(juce::Colour colour);

    /// A straight line with blunt ends.
    /// @param from, to  pixels, apart from each other
    /// @param width     pixels, above 0
    void drawLine(juce::Point<float> from, juce::Point<float> to, float width, juce::Colour colour);

    /// @param centre  pixels; the middle of the drawing's first pixel is at (0.5, 0.5)
    /// @param radius  pixels, above 0
    void fillDisc(juce::Point<float> centre, float radius, juce::Colour colour);

    /// @param lineWidth  pixels, above 0; half of it lies on either side of the radius
    void drawCircle(juce::Point<float> centre, float radius, float lineWidth, juce::Colour colour);

    /// A disc with a circle around it, as the two give it one after the other, in less time.
    void drawSpot(juce::Point<float> centre, float radius, float lineWidth, juce::Colour fill,
                  juce::Colour line);

private:
    /// What lies between two circles; an inner radius below 0 makes a disc.
    void fillBetween(juce::Point<float> centre, float innerRadius, float outerRadius, juce::Colour colour);
    void fillWithin(juce::Point<float> centre, float radius, juce::Colour opaque);

    /// Where the row's pixel 0 is or would be.
    Pixel* rowAt(int y) { return reinterpret_cast<Pixel*>(pixels.getLinePointer(y + start.y)) + start.x; }

    juce::Image::BitmapData pixels;
    juce::Point<int> start;
    juce::Rectangle<int> clip;
};

extern template class CirclePainter<juce::PixelRGB>;
extern template class CirclePainter<juce::PixelARGB>;

} // namespace velotrine
