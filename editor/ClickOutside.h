#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <utility>

namespace velotrine {

/// Hears of clicks outside a panel that floats in a view, while enabled; a drag is no click. Add it to the
/// view as a listener for all that lies in it. Main thread.
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

    void mouseUp(const juce::MouseEvent& event) override
    {
        if (std::exchange(ignoresClick, false) || panel == nullptr || !event.mouseWasClicked())
            return;
        const auto* view = panel->getParentComponent();
        const auto position = view->getLocalPoint(event.eventComponent, event.getPosition());
        if (!panel->getBounds().contains(position) && onClick)
            onClick();
    }

private:
    const juce::Component* panel = nullptr;
    bool ignoresClick = false;
};

} // namespace velotrine
