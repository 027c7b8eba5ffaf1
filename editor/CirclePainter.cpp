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

/// The pixels that lie within such a run wholly.
Span spanWithin(float from, float to, juce::Range<int> bounds)
{
    return {bounds.clipValue(static_cast<int>(std::ceil(from))),
            bounds.clipValue(static_cast<int>(std::floor(to)))};
}

/// What lies between two circles; an inner radius below 0 makes a disc.
struct Band
{
    Band(float innerRadius, float outerRadius)
        : inner(innerRadius), outer(outerRadius), thickness(std::min(1.0f, outerRadius - innerRadius)),
          fullFrom(std::max(0.0f, innerRadius + edge)), fullTo(std::max(0.0f, outerRadius - edge))
    {}

    [[nodiscard]] bool coversFully(float distanceSquared) const
    {
        return (distanceSquared >= fullFrom * fullFrom) & (distanceSquared <= fullTo * fullTo);
    }

    /// Near an edge; 0 or below where nothing is covered.
    [[nodiscard]] float coverageAt(float distance) const
    {
        return std::min({thickness, outer + edge - distance, distance - inner + edge});
    }

    /// Whether it colours anything of a rectangle.
    [[nodiscard]] bool reaches(juce::Rectangle<float> fromCentre) const
    {
        const auto farX = std::max(std::abs(fromCentre.getX()), std::abs(fromCentre.getRight()));
        const auto farY = std::max(std::abs(fromCentre.getY()), std::abs(fromCentre.getBottom()));
        const auto near = fromCentre.getConstrainedPoint({});
        const auto hole = std::max(0.0f, inner - edge);
        return farX * farX + farY * farY > hole * hole &&
               near.getDistanceSquaredFromOrigin() < (outer + edge) * (outer + edge);
    }

    float inner;
    float outer;
    float thickness;
    float fullFrom; ///< radii between which every pixel is covered fully
    float fullTo;
};

template <typename Pixel>
forcedinline void blendPartly(Pixel& pixel, juce::PixelARGB source, float coverage)
{
    // NOLINTNEXTLINE(bugprone-incorrect-roundings): positive, and in the innermost loop
    pixel.blend(source, static_cast<juce::uint32>(255.0f * coverage + 0.5f));
}

} // namespace

template <typename Pixel>
CirclePainter<Pixel>::CirclePainter(juce::Image& image, juce::Point<int> origin)
    : pixels(image, juce::Image::BitmapData::readWrite), start(origin), clip(image.getBounds() - origin)
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
    const auto halfSpan = std::abs(along.y) > 0.0f ? reach / std::abs(along.y) : length + reach;

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
void CirclePainter<Pixel>::drawSpot(juce::Point<float> centre, float radius, float lineWidth,
                                    juce::Colour fill, juce::Colour line)
{
    // The disc's edge needs to be smooth only where the line does not hide it.
    constexpr float hidingWidth = 2.0f;
    if (fill.isOpaque() && line.isOpaque() && lineWidth >= hidingWidth)
        fillWithin(centre, radius - lineWidth / 2.0f + 2.0f * edge, fill);
    else
        fillDisc(centre, radius, fill);
    drawCircle(centre, radius, lineWidth, line);
}

/// The pixels of a disc without its edge: of those left out, none is further inside than half a pixel.
template <typename Pixel>
void CirclePainter<Pixel>::fillWithin(juce::Point<float> centre, float radius, juce::Colour opaque)
{
    Pixel pixel{};
    pixel.set(opaque.getPixelARGB());
    const auto rows = boundedSpan(centre.y - radius, centre.y + radius, clip.getVerticalRange());
    for (auto y = rows.first; y < rows.end; ++y) {
        const auto half = halfChord(radius, middleOf(y) - centre.y);
        const auto span = spanWithin(centre.x - half, centre.x + half, clip.getHorizontalRange());
        if (span.first < span.end)
            std::fill_n(rowAt(y) + span.first, span.end - span.first, pixel);
    }
}

template <typename Pixel>
void CirclePainter<Pixel>::fillBetween(juce::Point<float> centre, float innerRadius, float outerRadius,
                                       juce::Colour colour)
{
    const Band band(innerRadius, outerRadius);
    if (!band.reaches(clip.toFloat() - centre))
        return;
    const auto source = colour.getPixelARGB();
    const auto isOpaque = colour.isOpaque();
    Pixel opaque{};
    opaque.set(source);

    // Without branches: at an edge, any of them would be guessed wrong in every row.
    const auto paintEach = [&](Pixel* row, Span span, float dy) {
        for (auto x = span.first; x < span.end; ++x) {
            const auto dx = middleOf(x) - centre.x;
            const auto distanceSquared = dx * dx + dy * dy;
            auto partly = row[x];
            blendPartly(partly, source, std::max(0.0f, band.coverageAt(std::sqrt(distanceSquared))));
            auto fully = row[x];
            fully.blend(source);
            row[x] = band.coversFully(distanceSquared) ? fully : partly;
        }
    };
    const auto paint = [&](Pixel* row, Span span, Span covered, float dy) {
        if (!isOpaque || covered.first < span.first || covered.end <= covered.first) {
            paintEach(row, span, dy);
            return;
        }
        paintEach(row, {span.first, covered.first}, dy);
        std::fill_n(row + covered.first, covered.end - covered.first, opaque);
        paintEach(row, {covered.end, span.end}, dy);
    };

    const auto columns = clip.getHorizontalRange();
    const auto rows =
        boundedSpan(centre.y - outerRadius - edge, centre.y + outerRadius + edge, clip.getVerticalRange());
    for (auto y = rows.first; y < rows.end; ++y) {
        auto* row = rowAt(y);
        const auto dy = middleOf(y) - centre.y;
        const auto outer = halfChord(outerRadius + edge, dy);
        // Nothing is painted nearer than this, so that it may be left out.
        const auto inner = halfChord(innerRadius - edge, dy);
        const auto fullTo = halfChord(band.fullTo, dy);
        const auto fullFrom = halfChord(band.fullFrom, dy);
        const auto left = boundedSpan(centre.x - outer, centre.x - inner, columns);
        const auto right = boundedSpan(centre.x + inner, centre.x + outer, columns);
        paint(row, left, spanWithin(centre.x - fullTo, centre.x - fullFrom, columns), dy);
        paint(row, {std::max(left.end, right.first), right.end},
              spanWithin(centre.x + fullFrom, centre.x + fullTo, columns), dy);
    }
}

template class CirclePainter<juce::PixelRGB>;
template class CirclePainter<juce::PixelARGB>;

} // namespace velotrine
