#include "editor/CirclePainter.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

/// From covered to not covered takes this many pixels on either side of a radius.
constexpr float edge = 0.5f;

float middleOf(int pixel)
{
    return static_cast<float>(pixel) + 0.5f;
}

/// Half the length of a circle's chord; 0 outside the circle, and if its radius is not above 0.
float halfChord(float radius, float distanceFromCentre)
{
    if (radius <= std::abs(distanceFromCentre))
        return 0.0f;
    return std::sqrt(radius * radius - distanceFromCentre * distanceFromCentre);
}

/// A run of pixels in a row.
struct Span
{
    int first;
    int end;
};

Span boundedSpan(float from, float to, int size)
{
    return {std::clamp(static_cast<int>(std::floor(from)), 0, size),
            std::clamp(static_cast<int>(std::ceil(to)), 0, size)};
}

} // namespace

template <typename Pixel>
CirclePainter<Pixel>::CirclePainter(juce::Image& image) : pixels(image, juce::Image::BitmapData::readWrite)
{
    jassert(pixels.pixelStride == static_cast<int>(sizeof(Pixel)));
}

template <typename Pixel>
void CirclePainter<Pixel>::fillDisc(juce::Point<float> centre, float radius, juce::Colour colour)
{
    fillBetween(centre, -1.0f, radius, colour);
}

template <typename Pixel>
void CirclePainter<Pixel>::drawCircle(juce::Point<float> centre, float radius, float lineWidth,
                                      juce::Colour colour)
{
    fillBetween(centre, radius - lineWidth / 2.0f, radius + lineWidth / 2.0f, colour);
}

template <typename Pixel>
void CirclePainter<Pixel>::fillBetween(juce::Point<float> centre, float innerRadius, float outerRadius,
                                       juce::Colour colour)
{
    const auto source = colour.getPixelARGB();
    const auto isOpaque = source.getAlpha() == 255;
    const auto thickness = std::min(1.0f, outerRadius - innerRadius);
    const auto squared = [](float radius) { return radius > 0.0f ? radius * radius : 0.0f; };
    const auto fullFrom = squared(innerRadius + edge);
    const auto fullTo = squared(outerRadius - edge);

    const auto paint = [&](Pixel* row, Span span, float dy) {
        for (auto x = span.first; x < span.end; ++x) {
            const auto dx = middleOf(x) - centre.x;
            const auto distanceSquared = dx * dx + dy * dy;
            if (distanceSquared >= fullFrom && distanceSquared <= fullTo) {
                if (isOpaque)
                    row[x].set(source);
                else
                    row[x].blend(source);
                continue;
            }
            const auto distance = std::sqrt(distanceSquared);
            const auto coverage =
                std::min({thickness, outerRadius + edge - distance, distance - innerRadius + edge});
            if (coverage > 0.0f) {
                // NOLINTNEXTLINE(bugprone-incorrect-roundings): positive, and in the innermost loop
                row[x].blend(source, static_cast<juce::uint32>(255.0f * coverage + 0.5f));
            }
        }
    };

    const auto rows =
        boundedSpan(centre.y - outerRadius - edge, centre.y + outerRadius + edge, pixels.height);
    for (auto y = rows.first; y < rows.end; ++y) {
        auto* row = reinterpret_cast<Pixel*>(pixels.getLinePointer(y));
        const auto dy = middleOf(y) - centre.y;
        const auto outer = halfChord(outerRadius + edge, dy);
        // Nothing is painted nearer than this, so that it may be left out.
        const auto inner = halfChord(innerRadius - edge, dy);
        const auto left = boundedSpan(centre.x - outer, centre.x - inner, pixels.width);
        const auto right = boundedSpan(centre.x + inner, centre.x + outer, pixels.width);
        paint(row, left, dy);
        paint(row, {std::max(left.end, right.first), right.end}, dy);
    }
}

template class CirclePainter<juce::PixelRGB>;
template class CirclePainter<juce::PixelARGB>;

} // namespace velotrine
