#include "editor/RingsPicture.h"

#include "editor/CirclePainter.h"
#include "editor/PixelContext.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

/// How far beyond a shape's own edge its smooth edge may colour a pixel.
constexpr float smoothing = 1.0f;

/// A rectangle that is painted and sent costs about as much as this many pixels more.
constexpr int pixelsARectangle = 600;

/// The hand is a chain of rectangles about as long as this.
constexpr float handPiecePixels = 40.0f;

juce::Rectangle<int> pixelsAround(juce::Point<float> from, juce::Point<float> to, float reach)
{
    return juce::Rectangle<float>(from, to).expanded(reach + smoothing).getSmallestIntegerContainer();
}

juce::Rectangle<int> pixelsOf(const RingsFrame::Spot& spot, const RingsFrame& frame)
{
    return pixelsAround(spot.centre, spot.centre, frame.spotRadius + frame.lineWidth / 2.0f);
}

/// Of all spots, ring after ring.
std::vector<juce::Rectangle<int>> placesOf(const RingsFrame& frame)
{
    std::vector<juce::Rectangle<int>> places;
    for (const auto& ring : frame.rings)
        for (const auto& spot : ring.spots)
            places.push_back(pixelsOf(spot, frame));
    return places;
}

int areaOf(juce::Rectangle<int> rectangle)
{
    return rectangle.getWidth() * rectangle.getHeight();
}

/// Whether frames differ in nothing but hand and spots.
bool isSameButForWhatMoves(const RingsFrame& a, const RingsFrame& b)
{
    return a.centre == b.centre && a.hand == b.hand && a.handTip.has_value() == b.handTip.has_value() &&
           a.handWidth == b.handWidth && a.dotRadius == b.dotRadius && a.lineWidth == b.lineWidth &&
           a.spotRadius == b.spotRadius &&
           std::ranges::equal(a.rings, b.rings, [](const auto& left, const auto& right) {
               return left.radius == right.radius && left.line == right.line;
           });
}

} // namespace

std::span<const juce::Rectangle<int>> RingsPicture::show(const RingsFrame& frame, const PixelGrid& grid)
{
    changes.clear();
    const bool isSameGrid = grid == shownGrid;
    shownGrid = grid;
    if (isSameGrid && isSameButForWhatMoves(shown, frame))
        findChanges(frame);
    else
        add({grid.width, grid.height});
    shown = frame;
    return changes;
}

void RingsPicture::findChanges(const RingsFrame& next)
{
    if (next.handTip && *next.handTip != *shown.handTip)
        addHandChanges(next);
    for (std::size_t ring = 0; ring < next.rings.size(); ++ring) {
        const auto& before = shown.rings[ring].spots;
        const auto& after = next.rings[ring].spots;
        for (std::size_t spot = 0; spot < std::max(before.size(), after.size()); ++spot) {
            if (spot >= before.size())
                add(pixelsOf(after[spot], next));
            else if (spot >= after.size())
                add(pixelsOf(before[spot], shown));
            else if (before[spot] != after[spot])
                addChange(pixelsOf(before[spot], shown), pixelsOf(after[spot], next));
        }
    }
}

void RingsPicture::addHandChanges(const RingsFrame& next)
{
    const auto length = next.centre.getDistanceFrom(*next.handTip);
    const auto pieces = std::max(1, static_cast<int>(std::ceil(length / handPiecePixels)));
    const auto pixelsOfPiece = [&](const RingsFrame& frame, int piece) {
        const auto pointAt = [&](int end) {
            return frame.centre +
                   (*frame.handTip - frame.centre) * (static_cast<float>(end) / static_cast<float>(pieces));
        };
        return pixelsAround(pointAt(piece), pointAt(piece + 1), frame.handWidth / 2.0f);
    };
    for (int piece = 0; piece < pieces; ++piece)
        addChange(pixelsOfPiece(shown, piece), pixelsOfPiece(next, piece));
}

void RingsPicture::addChange(juce::Rectangle<int> before, juce::Rectangle<int> after)
{
    const auto both = before.getUnion(after);
    if (areaOf(both) <= areaOf(before) + areaOf(after) + pixelsARectangle) {
        add(both);
        return;
    }
    add(before);
    add(after);
}

void RingsPicture::add(juce::Rectangle<int> changed)
{
    const auto visible = changed.getIntersection({shownGrid.width, shownGrid.height});
    if (!visible.isEmpty())
        changes.push_back(visible);
}

void RingsPicture::paint(const WindowPixels& window, std::optional<juce::Colour> backdrop) const
{
    if (window.image.getFormat() == juce::Image::RGB)
        paintParts<juce::PixelRGB>(window, backdrop);
    else
        paintParts<juce::PixelARGB>(window, backdrop);
}

template <typename Pixel>
void RingsPicture::paintParts(const WindowPixels& window, std::optional<juce::Colour> backdrop) const
{
    CirclePainter<Pixel> painter(window.image, window.origin);
    const auto places = placesOf(shown);
    const auto visible = window.image.getBounds() - window.origin;
    for (const auto& rectangle : window.clip) {
        const auto part = (rectangle - window.origin).getIntersection(visible);
        painter.clipTo(part);
        if (backdrop)
            painter.clear(*backdrop);
        paintFrame(painter, part, places);
    }
}

template <typename Pixel>
void RingsPicture::paintFrame(CirclePainter<Pixel>& painter, juce::Rectangle<int> part,
                              std::span<const juce::Rectangle<int>> places) const
{
    if (shown.handTip)
        painter.drawLine(shown.centre, *shown.handTip, shown.handWidth, shown.hand);
    painter.fillDisc(shown.centre, shown.dotRadius, shown.hand);
    for (const auto& ring : shown.rings) {
        painter.drawCircle(shown.centre, ring.radius, shown.lineWidth, ring.line);
        for (std::size_t spot = 0; spot < ring.spots.size(); ++spot)
            if (part.intersects(places[spot]))
                painter.drawSpot(ring.spots[spot].centre, shown.spotRadius, shown.lineWidth,
                                 ring.spots[spot].fill, ring.line);
        places = places.subspan(ring.spots.size());
    }
}

} // namespace velotrine
