#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <utility>

namespace velotrine {

/// A control's value as a screen reader reads and sets it. The functions live as long as their control.
class AccessibleRange final : public juce::AccessibilityValueInterface
{
public:
    struct Functions
    {
        std::function<double()> value;
        std::function<void(double)> setValue;
        std::function<juce::String()> text;
    };

    AccessibleRange(AccessibleValueRange rangeOfValues, Functions functionsOfControl)
        : range(rangeOfValues), functions(std::move(functionsOfControl))
    {}

    bool isReadOnly() const override { return false; }

    double getCurrentValue() const override { return functions.value(); }

    juce::String getCurrentValueAsString() const override { return functions.text(); }

    void setValue(double newValue) override { functions.setValue(newValue); }

    void setValueAsString(const juce::String& text) override { setValue(text.getDoubleValue()); }

    AccessibleValueRange getRange() const override { return range; }

private:
    AccessibleValueRange range;
    Functions functions;
};

/// The handler of a control that reads like a slider.
[[nodiscard]] inline std::unique_ptr<juce::AccessibilityHandler> makeSliderHandler(
    juce::Component& control, AccessibleRange::AccessibleValueRange range,
    AccessibleRange::Functions functions)
{
    return std::make_unique<juce::AccessibilityHandler>(
        control, juce::AccessibilityRole::slider, juce::AccessibilityActions{},
        juce::AccessibilityHandler::Interfaces{
            std::make_unique<AccessibleRange>(range, std::move(functions))});
}

} // namespace velotrine
