#pragma once

#include "editor/PixelGrid.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <optional>

namespace velotrine {

/// Where a component may paint straight into the pixels of its window.
struct WindowPixels
{
    juce::Image& image;                   ///< RGB or ARGB, without gaps between pixels
    juce::Point<int> origin;              ///< of the component's grid in the image
    const juce::RectangleList<int>& clip; ///< pixels of the image; no other may change
};

/// Paints a window as the toolkit's software renderer does, and lets a component at its pixels: whoever keeps
/// a picture instead, and has the toolkit copy it, pays for a table of the picture's edges each time. Main
/// thread.
class PixelContext final : public juce::LowLevelGraphicsSoftwareRenderer
{
public:
    using LowLevelGraphicsSoftwareRenderer::LowLevelGraphicsSoftwareRenderer;

    /// @param grid  of the component that is painting itself
    /// @return      valid while it does; nothing where its pixels are not the window's, or where what may be
    ///              painted is not made of rectangles
    [[nodiscard]] std::optional<WindowPixels> pixelsOf(const PixelGrid& grid);
};

/// Asks for an area of a component to be painted, as exactly as its window takes it: in whole points it would
/// be much larger where a point is two and a quarter pixels. Main thread.
/// @param area  pixels of the grid
void repaintPixels(juce::Component& component, const PixelGrid& grid, juce::Rectangle<int> area);

} // namespace velotrine
