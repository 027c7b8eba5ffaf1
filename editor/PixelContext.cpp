#include "editor/PixelContext.h"

#include <cmath>

namespace velotrine {

namespace {

using Rectangles = juce::RenderingHelpers::ClipRegions<
    juce::RenderingHelpers::SoftwareRendererSavedState>::RectangleListRegion;

/// Where something's first pixel comes to lie that keeps its size but for what a window's whole number of
/// points makes of it: JUCE stretches the content by so much.
std::optional<juce::Point<int>> placeOf(const juce::AffineTransform& transform)
{
    constexpr float stretch = 0.002f;
    const auto differs = [](float a, float b) { return !(std::abs(a - b) <= stretch); };
    if (differs(transform.mat00, 1.0f) || differs(transform.mat11, 1.0f) || differs(transform.mat01, 0.0f) ||
        differs(transform.mat10, 0.0f))
        return std::nullopt;
    return juce::Point(transform.mat02, transform.mat12).roundToInt();
}

/// Where a component's grid begins in its window: the window's points are stretched to the peer's size, and
/// those are scaled to pixels.
std::optional<juce::Point<int>> placeIn(juce::ComponentPeer& peer, const juce::Component& component,
                                        const PixelGrid& grid)
{
    const auto& window = peer.getComponent();
    const auto size = peer.getBounds().toFloat();
    const auto scale = static_cast<float>(peer.getPlatformScaleFactor());
    return placeOf(grid.fromPoints()
                       .inverted()
                       .translated(window.getLocalPoint(&component, juce::Point<float>()))
                       .scaled(size.getWidth() / static_cast<float>(window.getWidth()),
                               size.getHeight() / static_cast<float>(window.getHeight()))
                       .scaled(scale));
}

/// Whether pixels follow each other without a gap, with or without alpha.
bool hasUsualPixels(const juce::Image& image)
{
    const juce::Image::BitmapData pixels(image, juce::Image::BitmapData::readOnly);
    switch (pixels.pixelFormat) {
    case juce::Image::RGB:
        return pixels.pixelStride == static_cast<int>(sizeof(juce::PixelRGB));
    case juce::Image::ARGB:
        return pixels.pixelStride == static_cast<int>(sizeof(juce::PixelARGB));
    default:
        return false;
    }
}

} // namespace

std::optional<WindowPixels> PixelContext::pixelsOf(const PixelGrid& grid)
{
    const auto origin = placeOf(stack->transform.getTransformWith(grid.fromPoints().inverted()));
    const auto* const clip = dynamic_cast<const Rectangles*>(stack->clip.get());
    if (!origin || clip == nullptr || !hasUsualPixels(stack->image))
        return std::nullopt;
    return WindowPixels{.image = stack->image, .origin = *origin, .clip = clip->clip};
}

void repaintPixels(juce::Component& component, const PixelGrid& grid, juce::Rectangle<int> area)
{
    auto* const peer = component.getPeer();
    // Whoever keeps an image of the component hears only of points.
    const bool isDirect = peer != nullptr && component.getCachedComponentImage() == nullptr;
    const auto place = isDirect ? placeIn(*peer, component, grid) : std::nullopt;
    if (!place) {
        component.repaint(grid.pointsAround(area));
        return;
    }
    const auto pixels = (area + *place).expanded(grid.isWhole() ? 0 : 1);
    const auto scale = static_cast<float>(peer->getPlatformScaleFactor());
    const bool isScaled = scale != 1.0f;
    peer->repaint(isScaled ? (pixels.toFloat() / scale).getSmallestIntegerContainer().expanded(1) : pixels);
}

} // namespace velotrine
