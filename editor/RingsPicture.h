#pragma once

#include "editor/PixelGrid.h"

#include <juce_graphics/juce_graphics.h>

#include <optional>
#include <span>
#include <vector>

namespace velotrine {

template <typename Pixel>
class CirclePainter;
struct WindowPixels;

/// One frame of the rings, in pixels of their picture.
struct RingsFrame
{
    struct Spot
    {
        juce::Point<float> centre;
        juce::Colour fill;

        bool operator==(const Spot&) const = default;
    };

    struct Ring
    {
        float radius = 0.0f;
        juce::Colour line; ///< of the ring and its spots' outlines
        std::vector<Spot> spots;
    };

    juce::Point<float> centre;
    juce::Colour hand;                         ///< and the dot at the centre
    std::optional<juce::Point<float>> handTip; ///< none without rings
    float handWidth = 0.0f;
    float dotRadius = 0.0f;
    float lineWidth = 0.0f;
    float spotRadius = 0.0f;
    std::vector<Ring> rings; ///< innermost first, drawn in this order
};

/// What the screen shows of the rings, on its own pixels: knows the frame that is shown, says what the next
/// one changes, and paints any part of it. Parts painted at any time make up, pixel for pixel, what painting
/// the frame whole gives. Main thread.
class RingsPicture
{
public:
    /// From now on another frame is the one that is shown.
    /// @return  what is different from the last frame, in pixels of the grid; valid until the next call
    std::span<const juce::Rectangle<int>> show(const RingsFrame& frame, const PixelGrid& grid);

    /// Paints as much of the frame that is shown as a window asks for.
    /// @param backdrop  what lies behind, if that is one opaque colour; without it, what is there stays
    void paint(const WindowPixels& window, std::optional<juce::Colour> backdrop) const;

    /// Of the last frame; of no size before there is one.
    [[nodiscard]] const PixelGrid& grid() const noexcept { return shownGrid; }

private:
    void findChanges(const RingsFrame& next);
    void addHandChanges(const RingsFrame& next);
    void addChange(juce::Rectangle<int> before, juce::Rectangle<int> after);
    void add(juce::Rectangle<int> changed);

    template <typename Pixel>
    void paintParts(const WindowPixels& window, std::optional<juce::Colour> backdrop) const;
    template <typename Pixel>
    void paintFrame(CirclePainter<Pixel>& painter, juce::Rectangle<int> part,
                    std::span<const juce::Rectangle<int>> places) const;

    PixelGrid shownGrid;
    RingsFrame shown;
    std::vector<juce::Rectangle<int>> changes;
};

} // namespace velotrine
