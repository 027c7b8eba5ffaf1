#pragma once

#include "editor/Colours.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// Controls answer to this mouse button alone.
[[nodiscard]] inline bool isPrimaryButton(const juce::MouseEvent& event)
{
    return event.mods.isLeftButtonDown();
}

/// What all controls have in common: a press takes the keyboard, and only the primary button presses. The
/// control that has the keyboard is marked for those who came to it by key; those who came with the mouse
/// know where they are, and their space bar plays. Main thread.
/// @tparam Base  the toolkit's component
template <typename Base>
class Control : public Base
{
public:
    template <typename... Arguments>
    explicit Control(Arguments&&... arguments) : Base(std::forward<Arguments>(arguments)...)
    {
        this->setWantsKeyboardFocus(true);
        this->setMouseClickGrabsKeyboardFocus(true);
    }

    /// Whether the keyboard is here and has come by key.
    [[nodiscard]] bool isMarked() const { return cameByKey && this->hasKeyboardFocus(false); }

    void focusGained(juce::Component::FocusChangeType cause) override
    {
        // A menu or another window takes the keyboard and gives it back: nothing new.
        if (cause != juce::Component::focusChangedDirectly)
            cameByKey = cause == juce::Component::focusChangedByTabKey;
        Base::focusGained(cause);
        this->repaint();
    }

    void focusLost(juce::Component::FocusChangeType cause) override
    {
        Base::focusLost(cause);
        this->repaint();
    }

    void mouseDown(const juce::MouseEvent& event) override
    {
        if (isPrimaryButton(event))
            Base::mouseDown(event);
    }

    void mouseDrag(const juce::MouseEvent& event) override
    {
        if (isPrimaryButton(event))
            Base::mouseDrag(event);
    }

    void mouseUp(const juce::MouseEvent& event) override
    {
        if (isPrimaryButton(event))
            Base::mouseUp(event);
    }

    void mouseDoubleClick(const juce::MouseEvent& event) override
    {
        if (isPrimaryButton(event))
            Base::mouseDoubleClick(event);
    }

    void paintOverChildren(juce::Graphics& graphics) override
    {
        Base::paintOverChildren(graphics);
        if (isMarked())
            drawMark(graphics);
    }

protected:
    /// Marks the control from now on: a key is used on it.
    void keyIsUsed()
    {
        cameByKey = true;
        this->repaint();
    }

    virtual void drawMark(juce::Graphics& graphics) const
    {
        constexpr float lineWidth = 2.0f;
        graphics.setColour(colours::focus);
        graphics.drawRoundedRectangle(this->getLocalBounds().toFloat().reduced(lineWidth / 2.0f),
                                      controlCornerRadius, lineWidth);
    }

private:
    bool cameByKey = false;
};

/// A button that Return presses, and the space bar while it is marked.
template <typename ButtonBase>
class ControlButton : public Control<ButtonBase>
{
public:
    using Control<ButtonBase>::Control;

    bool keyPressed(const juce::KeyPress& key) override
    {
        if (key.isKeyCode(juce::KeyPress::spaceKey) && this->isMarked() && this->isEnabled()) {
            this->triggerClick();
            return true;
        }
        return Control<ButtonBase>::keyPressed(key);
    }
};

} // namespace velotrine
