#pragma once

#include "editor/Control.h"
#include "editor/KeyTurn.h"

#include <functional>

namespace velotrine {

/// Two small arrows that move a value up and down by an increment; held, they repeat. From the keyboard,
/// arrow keys do the same, Page Up and Page Down go ten times as far, Home and End to the ends. Main thread.
class Stepper final : public Control<juce::Component>, private juce::Timer
{
public:
    double minValue = 0.0;
    double maxValue = 1.0;
    double increment = 1.0;

    /// Told of the user's steps that made a difference.
    std::function<void(double)> onStep;

    [[nodiscard]] double value() const noexcept { return _value; }

    /// Bounds the value to the range and tells nobody.
    void setValue(double newValue);

    void paint(juce::Graphics& graphics) override;
    void mouseDown(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
    void mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel) override;
    bool keyPressed(const juce::KeyPress& key) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    void turn(const KeyTurn& turn);
    void step(int direction);
    void press(int direction);
    void timerCallback() override;

    double _value = 0.0;
    int pressed = 0; ///< 1 for the upper arrow, -1 for the lower, 0 for none
};

} // namespace velotrine
