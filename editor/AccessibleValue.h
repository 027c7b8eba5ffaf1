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

/// A value that a screen reader can read, and no more.
class AccessibleText final : public juce::AccessibilityTextValueInterface
{
public:
    explicit AccessibleText(std::function<juce::String()> textOfControl) : text(std::move(textOfControl)) {}

    bool isReadOnly() const override { return true; }

    juce::String getCurrentValueAsString() const override { return text(); }

    void setValueAsString(const juce::String&) override {}

private:
    std::function<juce::String()> text;
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

/// The handler of something that can be pressed and has something to read.
[[nodiscard]] inline std::unique_ptr<juce::AccessibilityHandler> makeButtonHandler(
    juce::Component& control, std::function<juce::String()> text, std::function<void()> press,
    juce::AccessibilityRole role = juce::AccessibilityRole::button)
{
    return std::make_unique<juce::AccessibilityHandler>(
        control, role,
        juce::AccessibilityActions().addAction(juce::AccessibilityActionType::press, std::move(press)),
        juce::AccessibilityHandler::Interfaces{std::make_unique<AccessibleText>(std::move(text))});
}

} // namespace velotrine
