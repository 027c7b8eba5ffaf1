#pragma once

#include "editor/PixelContext.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// An image that is painted as a window is: with whatever a component has asked for since the last time, at
/// first with all of it. The component outlives it.
class WindowInMemory
{
public:
    WindowInMemory(juce::Component& shown, float pixelsPerPoint)
        : component(shown), scale(pixelsPerPoint),
          pixels(juce::Image::ARGB, toPixels(shown.getWidth()), toPixels(shown.getHeight()), true,
                 juce::SoftwareImageType())
    {
        component.setVisible(true);
        component.setCachedComponentImage(new Requests(*this));
        askForAll();
    }

    ~WindowInMemory() { component.setCachedComponentImage(nullptr); }

    WindowInMemory(const WindowInMemory&) = delete;
    WindowInMemory& operator=(const WindowInMemory&) = delete;

    void askForAll() { askedFor = pixels.getBounds(); }

    /// Pixels.
    [[nodiscard]] const juce::RectangleList<int>& asked() const { return askedFor; }

    const juce::Image& paint()
    {
        PixelContext context(pixels, {}, askedFor);
        askedFor.clear();
        context.addTransform(juce::AffineTransform::scale(scale));
        juce::Graphics graphics(context);
        component.paintEntireComponent(graphics, true);
        return pixels;
    }

    [[nodiscard]] const juce::Image& image() const { return pixels; }

private:
    /// JUCE tells whoever keeps an image of a component what it asks for.
    class Requests final : public juce::CachedComponentImage
    {
    public:
        explicit Requests(WindowInMemory& ownerToTell) : owner(ownerToTell) {}

        void paint(juce::Graphics&) override {}

        bool invalidateAll() override
        {
            owner.askForAll();
            return false;
        }

        bool invalidate(const juce::Rectangle<int>& area) override
        {
            owner.askedFor.add(area * owner.scale);
            return false;
        }

        void releaseResources() override {}

    private:
        WindowInMemory& owner;
    };

    [[nodiscard]] int toPixels(int points) const
    {
        return static_cast<int>(static_cast<float>(points) * scale);
    }

    juce::Component& component;
    float scale;
    juce::Image pixels;
    juce::RectangleList<int> askedFor;
};

} // namespace velotrine
