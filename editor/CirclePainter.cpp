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

Span boundedSpan(float from, float to, juce::Range<int> bounds)
{
    return {bounds.clipValue(static_cast<int>(std::floor(from))),
            bounds.clipValue(static_cast<int>(std::ceil(to)))};
}

template <typename Pixel>
void blendPartly(Pixel& pixel, juce::PixelARGB source, float coverage)
{
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): positive, and in the innermost loop
    pixel.blend(source, static_cast<juce::uint32>(255.0f * coverage + 0.5f));
}

} // namespace

template <typename Pixel>
CirclePainter<Pixel>::CirclePainter(juce::Image& image)
    : pixels(image, juce::Image::BitmapData::readWrite), clip(image.getBounds())
{
    jassert(pixels.pixelStride == static_cast<int>(sizeof(Pixel)));
}

template <typename Pixel>
void CirclePainter<Pixel>::clear(juce::Colour colour)
{
    Pixel pixel{};
    pixel.set(colour.getPixelARGB());
    for (auto y = clip.getY(); y < clip.getBottom(); ++y)
        std::fill_n(rowAt(y) + clip.getX(), clip.getWidth(), pixel);
}

template <typename Pixel>
void CirclePainter<Pixel>::drawLine(juce::Point<float> from, juce::Point<float> to, float width,
                                    juce::Colour colour)
{
    const auto source = colour.getPixelARGB();
    const auto length = from.getDistanceFrom(to);
    const auto along = (to - from) / length;
    const auto reach = width / 2.0f + edge;
    const auto thickness = std::min(1.0f, width);
    // In a row, what lies within the line's width is as wide as this on either side of its middle.
    const auto halfSpan =
        std::abs(along.y) > 0.0f ? reach / std::abs(along.y) : static_cast<float>(pixels.width);

    const auto box = juce::Rectangle<float>(from, to).expanded(reach);
    const auto rows = boundedSpan(box.getY(), box.getBottom(), clip.getVerticalRange());
    for (auto y = rows.first; y < rows.end; ++y) {
        const auto dy = middleOf(y) - from.y;
        const auto middle = std::abs(along.y) > 0.0f ? from.x + dy * along.x / along.y : from.x;
        const auto left = std::max(box.getX(), middle - halfSpan);
        const auto right = std::min(box.getRight(), middle + halfSpan);
        const auto span = boundedSpan(left, right, clip.getHorizontalRange());
        for (auto x = span.first; x < span.end; ++x) {
            const auto dx = middleOf(x) - from.x;
            const auto across = std::abs(dx * along.y - dy * along.x);
            const auto ahead = dx * along.x + dy * along.y;
            const auto sides = std::min(thickness, reach - across);
            const auto ends = std::min({1.0f, ahead + edge, length - ahead + edge});
            if (sides > 0.0f && ends > 0.0f)
                blendPartly(rowAt(y)[x], source, sides * ends);
        }
    }
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
            if (coverage > 0.0f)
                blendPartly(row[x], source, coverage);
        }
    };

    const auto rows =
        boundedSpan(centre.y - outerRadius - edge, centre.y + outerRadius + edge, clip.getVerticalRange());
    for (auto y = rows.first; y < rows.end; ++y) {
        auto* row = rowAt(y);
        const auto dy = middleOf(y) - centre.y;
        const auto outer = halfChord(outerRadius + edge, dy);
        // Nothing is painted nearer than this, so that it may be left out.
        const auto inner = halfChord(innerRadius - edge, dy);
        const auto left = boundedSpan(centre.x - outer, centre.x - inner, clip.getHorizontalRange());
        const auto right = boundedSpan(centre.x + inner, centre.x + outer, clip.getHorizontalRange());
        paint(row, left, dy);
        paint(row, {std::max(left.end, right.first), right.end}, dy);
    }
}

template class CirclePainter<juce::PixelRGB>;
template class CirclePainter<juce::PixelARGB>;

} // namespace velotrine
