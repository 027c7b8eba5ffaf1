#pragma once

#include "editor/PixelGrid.h"

#include <juce_graphics/juce_graphics.h>

#include <optional>
#include <span>
#include <vector>

namespace velotrine {

template <typename Pixel>
class CirclePainter;

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

/// The picture of the rings on the screen's own pixels, kept from frame to frame: what has not moved stays,
/// and the rest is painted again in small rectangles. Any picture got that way is, pixel for pixel, what
/// painting the frame whole gives. Main thread.
class RingsPicture
{
public:
    /// Brings the picture to a frame.
    /// @param backdrop  what lies behind, if that is one opaque colour; else the picture is transparent
    /// @return          what has changed since the last frame, in pixels; valid until the next call
    std::span<const juce::Rectangle<int>> show(const RingsFrame& frame, const PixelGrid& grid,
                                               std::optional<juce::Colour> backdrop);

    [[nodiscard]] const juce::Image& image() const noexcept { return picture; }

    /// Of the last frame; of no size before there is one.
    [[nodiscard]] const PixelGrid& grid() const noexcept { return shownGrid; }

private:
    void findChanges(const RingsFrame& next);
    void addHandChanges(const RingsFrame& next);
    void addChange(juce::Rectangle<int> before, juce::Rectangle<int> after);
    void add(juce::Rectangle<int> changed);

    template <typename Pixel>
    void paintChanges(juce::Colour backdrop);
    template <typename Pixel>
    void paintFrame(CirclePainter<Pixel>& painter, juce::Rectangle<int> clip) const;

    juce::Image picture;
    PixelGrid shownGrid;
    RingsFrame shown;
    std::vector<juce::Rectangle<int>> changes;
};

} // namespace velotrine
