#include "editor/EditorLayout.h"

#include "audiounit/Parameters.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velotrine {

namespace {

constexpr double ringsClearance = 4.0;
constexpr double rowGap = 6.0;
constexpr double itemGap = 6.0;
constexpr double stepperWidth = 19.0;
constexpr double fieldGap = 3.0;      ///< on both sides of the tempo field
constexpr double labelSlack = 4.0;    ///< so that no rounding cuts a text
constexpr double buttonPadding = 1.3; ///< ems, both sides together
constexpr double minPanelHeight = 206.0;

using Rectangle = juce::Rectangle<double>;

double widest(auto names, double fontSize, const TextWidth& textWidth)
{
    double result = 0.0;
    for (const auto name : names)
        result = std::max(result, textWidth(name, fontSize));
    return result;
}

void placeKnobs(EditorLayout& layout, double width, double height)
{
    const auto count = static_cast<double>(layout.knobs.size());
    const auto size = layout.knobSize;
    const auto gap = ((layout.isTall ? width : height) - count * size) / (count + 1.0);
    for (std::size_t i = 0; i < layout.knobs.size(); ++i) {
        const auto along = gap + static_cast<double>(i) * (gap + size);
        layout.knobs[i] = layout.isTall ? Rectangle(along, height - size - layout.margin, size, size)
                                        : Rectangle(width - size - layout.margin, along, size, size);
    }
}

void placeScaleRow(EditorLayout& layout, double rowHeight, const TextWidth& textWidth)
{
    const auto font = layout.fontSize;
    const auto padding = buttonPadding * font;
    Rectangle row(layout.margin, layout.margin, 1.0e6, rowHeight);
    layout.scaleLabel = row.removeFromLeft(std::ceil(textWidth("SCALE:", font)) + labelSlack);
    row.removeFromLeft(itemGap);
    layout.rootButton = row.removeFromLeft(std::ceil(widest(rootNames, font, textWidth) + padding));
    row.removeFromLeft(itemGap);
    layout.scaleButton = row.removeFromLeft(std::ceil(widest(scaleNames, font, textWidth) + padding));
}

/// From the bottom left upward: play, tempo, sync.
void placeTransportWide(EditorLayout& layout, double height, double rowHeight, const TextWidth& textWidth)
{
    const auto font = layout.fontSize;
    const auto x = layout.margin;
    const auto captionWidth = [&](std::string_view text) {
        return std::ceil(textWidth(text, font)) + labelSlack;
    };
    const auto playY = height - layout.margin - rowHeight;
    layout.playButton = {x, playY, rowHeight, rowHeight};

    const auto tempoY = playY - rowGap - rowHeight;
    layout.bpmPrefixLabel = {x, tempoY, captionWidth("BPM:"), rowHeight};
    layout.bpmField = {layout.bpmPrefixLabel.getRight() + fieldGap, tempoY + 1.0, 3.5 * font,
                       rowHeight - 2.0};
    layout.bpmStepper = {layout.bpmField.getRight() + fieldGap, tempoY, stepperWidth, rowHeight};

    const auto syncY = tempoY - rowGap - rowHeight;
    layout.syncButton = {x, syncY, rowHeight, rowHeight};
    layout.syncTextLabel = {layout.syncButton.getRight() + itemGap, syncY, captionWidth("SYNC"), rowHeight};
    layout.transportNotice = {layout.playButton.getRight() + itemGap, playY, 5.6 * font, rowHeight};
}

/// From the top right downward: sync, tempo, play.
void placeTransportTall(EditorLayout& layout, double width, double rowHeight, const TextWidth& textWidth)
{
    const auto font = layout.fontSize;
    const auto right = width - layout.margin;
    const auto captionWidth = [&](std::string_view text) {
        return std::ceil(textWidth(text, font)) + labelSlack;
    };
    const auto syncY = layout.margin;
    const auto sync = captionWidth("SYNC");
    layout.syncTextLabel = {right - sync, syncY, sync, rowHeight};
    layout.syncButton = {layout.syncTextLabel.getX() - itemGap - rowHeight, syncY, rowHeight, rowHeight};

    const auto tempoY = syncY + rowHeight + rowGap;
    layout.bpmStepper = {right - stepperWidth, tempoY, stepperWidth, rowHeight};
    layout.bpmField = {layout.bpmStepper.getX() - fieldGap - 3.5 * font, tempoY + 1.0, 3.5 * font,
                       rowHeight - 2.0};
    const auto caption = captionWidth("BPM:");
    layout.bpmPrefixLabel = {layout.bpmField.getX() - fieldGap - caption, tempoY, caption, rowHeight};
    layout.portraitTransportBottomY = tempoY + rowHeight;

    const auto playSide = 0.75 * rowHeight;
    layout.playButton = {right - playSide, layout.portraitTransportBottomY + rowGap, playSide, playSide};
    const auto noticeWidth = 5.6 * font;
    layout.transportNotice = {layout.playButton.getX() - itemGap - noticeWidth, layout.playButton.getY(),
                              noticeWidth, rowHeight};
}

void placeRings(EditorLayout& layout, double width, double height)
{
    const auto bounds = Rectangle(width, height).reduced(layout.margin);
    const auto area = layout.isTall ? bounds.withBottom(std::min(bounds.getBottom(), layout.knobs[0].getY()))
                                    : bounds.withRight(std::min(bounds.getRight(), layout.knobs[0].getX()));
    const std::array obstacles{layout.scaleLabel.getUnion(layout.scaleButton),
                               layout.syncButton.getUnion(layout.syncTextLabel),
                               layout.bpmPrefixLabel.getUnion(layout.bpmStepper), layout.playButton};
    layout.rings = largestClearSquare(area, obstacles, ringsClearance);
}

/// Beside the rings' middle, so that a part of each ring stays in view, and clear of the other controls.
void placeRingEditor(EditorLayout& layout, double width, double height)
{
    const auto lesser = std::min(width, height);
    const auto panelHeight = std::max(minPanelHeight, std::floor(0.45 * lesser));
    const auto panelWidth = std::floor(1.2 * panelHeight);
    if (layout.isTall) {
        const auto bottom = layout.knobs[0].getY() - layout.margin;
        layout.ringEditor = {std::floor((width - panelWidth) / 2.0), bottom - panelHeight, panelWidth,
                             panelHeight};
    } else {
        const auto top = layout.scaleButton.getBottom();
        const auto bottom = layout.syncButton.getY();
        layout.ringEditor = {layout.margin, std::floor((top + bottom - panelHeight) / 2.0), panelWidth,
                             panelHeight};
    }
}

double distanceBetween(juce::Point<double> point, const Rectangle& rectangle)
{
    return rectangle.getConstrainedPoint(point).getDistanceFrom(point);
}

} // namespace

juce::Rectangle<double> largestClearSquare(juce::Rectangle<double> area,
                                           std::span<const juce::Rectangle<double>> obstacles,
                                           double clearance)
{
    // Moving the square to whole points moves its centre by up to half a point each way.
    constexpr double roundingSlack = 0.75;
    constexpr int coarseSteps = 32;

    const auto halfSideAt = [&](juce::Point<double> centre) {
        auto half = std::min({centre.x - area.getX(), area.getRight() - centre.x, centre.y - area.getY(),
                              area.getBottom() - centre.y});
        for (const auto& obstacle : obstacles)
            half = std::min(half, distanceBetween(centre, obstacle) - clearance - roundingSlack);
        return half;
    };
    auto best = area.getCentre();
    for (int column = 0; column <= coarseSteps; ++column)
        for (int row = 0; row <= coarseSteps; ++row) {
            const auto candidate = area.getRelativePoint(static_cast<double>(column) / coarseSteps,
                                                         static_cast<double>(row) / coarseSteps);
            if (halfSideAt(candidate) > halfSideAt(best))
                best = candidate;
        }
    for (auto step = std::max(area.getWidth(), area.getHeight()) / coarseSteps; step > 0.05;) {
        const auto before = best;
        for (const auto& move : {juce::Point<double>(step, 0.0),
                                 {-step, 0.0},
                                 {0.0, step},
                                 {0.0, -step},
                                 {step, step},
                                 {-step, step},
                                 {step, -step},
                                 {-step, -step}})
            if (halfSideAt(before + move) > halfSideAt(best))
                best = before + move;
        if (best == before)
            step /= 2.0;
    }
    const auto half = halfSideAt(best);
    const auto furthest = [&](juce::Point<double> step) {
        auto centre = best;
        while (halfSideAt(centre + step) >= half)
            centre += step;
        return centre;
    };
    best = (furthest({0.5, 0.0}) + furthest({-0.5, 0.0})) / 2.0;
    best = (furthest({0.0, 0.5}) + furthest({0.0, -0.5})) / 2.0;

    const auto side = std::floor(2.0 * std::max(0.0, half));
    const auto x = std::clamp(std::round(best.x - side / 2.0), std::ceil(area.getX()),
                              std::max(std::ceil(area.getX()), std::floor(area.getRight()) - side));
    const auto y = std::clamp(std::round(best.y - side / 2.0), std::ceil(area.getY()),
                              std::max(std::ceil(area.getY()), std::floor(area.getBottom()) - side));
    return {x, y, side, side};
}

EditorLayout layOutEditor(double width, double height, const TextWidth& textWidth)
{
    EditorLayout layout;
    const auto lesser = std::min(width, height);
    layout.knobSize = std::floor(lesser / 5.0);
    layout.margin = std::floor(lesser * 0.03);
    layout.isTall = width < height;
    layout.fontSize = std::max(0.2 * layout.knobSize, 10.0);
    const auto rowHeight = std::max(1.6 * layout.fontSize, 20.0);

    placeKnobs(layout, width, height);
    placeScaleRow(layout, rowHeight, textWidth);
    if (layout.isTall)
        placeTransportTall(layout, width, rowHeight, textWidth);
    else
        placeTransportWide(layout, height, rowHeight, textWidth);
    placeRings(layout, width, height);
    placeRingEditor(layout, width, height);
    return layout;
}

} // namespace velotrine
