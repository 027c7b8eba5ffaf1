#pragma once

#include "editor/Control.h"

#include <functional>
#include <utility>

namespace velotrine {

/// Hears of clicks outside a panel that floats in a view, while enabled. A drag is no click; a slow click is
/// one. Add it to the view as a listener for all that lies in it. Main thread.
class ClickOutside final : public juce::MouseListener
{
public:
    std::function<void()> onClick;

    /// @param floatingPanel  in the view that this listens to; it lives as long as this is enabled
    void enable(const juce::Component& floatingPanel)
    {
        panel = &floatingPanel;
        // The click that opened the panel is not over yet.
        ignoresClick = juce::ModifierKeys::currentModifiers.isAnyMouseButtonDown();
    }

    void disable() { panel = nullptr; }

    void mouseDown(const juce::MouseEvent&) override { isDrag = false; }

    void mouseDrag(const juce::MouseEvent& event) override
    {
        constexpr int furthestInClick = 4; // points, as far as a hand shakes
        isDrag = isDrag || event.getDistanceFromDragStart() > furthestInClick;
    }

    void mouseUp(const juce::MouseEvent& event) override
    {
        if (std::exchange(ignoresClick, false) || panel == nullptr || isDrag || !isPrimaryButton(event))
            return;
        const auto* view = panel->getParentComponent();
        const auto position = view->getLocalPoint(event.eventComponent, event.getPosition());
        if (!panel->getBounds().contains(position) && onClick)
            onClick();
    }

private:
    const juce::Component* panel = nullptr;
    bool ignoresClick = false;
    bool isDrag = false;
};

} // namespace velotrine
