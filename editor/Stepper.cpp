#include "editor/Stepper.h"

#include "editor/AccessibleValue.h"
#include "editor/Colours.h"

#include <algorithm>

namespace velotrine {

namespace {

constexpr int firstRepeatMilliseconds = 400;
constexpr int repeatMilliseconds = 60;
constexpr double incrementsInPage = 10.0;

juce::Path chevron(juce::Rectangle<float> area, float pointing)
{
    const auto width = area.getWidth() * 0.42f;
    const auto height = width * 0.5f * pointing;
    const auto middle = area.getCentre();
    juce::Path path;
    path.startNewSubPath(middle.x - width / 2.0f, middle.y + height / 2.0f);
    path.lineTo(middle.x, middle.y - height / 2.0f);
    path.lineTo(middle.x + width / 2.0f, middle.y + height / 2.0f);
    return path;
}

} // namespace

void Stepper::setValue(double newValue)
{
    _value = std::max(minValue, std::min(newValue, maxValue));
}

void Stepper::turn(const KeyTurn& turn)
{
    const auto before = _value;
    _value = turned(_value, {minValue, maxValue}, {increment, incrementsInPage * increment}, turn);
    if (_value != before && onStep)
        onStep(_value);
}

void Stepper::step(int direction)
{
    turn({KeyTurn::Distance::step, direction});
}

void Stepper::press(int direction)
{
    pressed = direction;
    repaint();
    if (direction != 0)
        step(direction);
}

void Stepper::mouseDown(const juce::MouseEvent& event)
{
    if (!isEnabled() || !isPrimaryButton(event))
        return;
    press(event.position.y < static_cast<float>(getHeight()) / 2.0f ? 1 : -1);
    startTimer(firstRepeatMilliseconds);
}

void Stepper::mouseUp(const juce::MouseEvent&)
{
    stopTimer();
    press(0);
}

void Stepper::timerCallback()
{
    startTimer(repeatMilliseconds);
    step(pressed);
}

void Stepper::mouseWheelMove(const juce::MouseEvent&, const juce::MouseWheelDetails& wheel)
{
    if (isEnabled() && wheel.deltaY != 0.0f)
        step(wheel.deltaY > 0.0f ? 1 : -1);
}

bool Stepper::keyPressed(const juce::KeyPress& key)
{
    const auto asked = valueTurnOf(key);
    if (asked)
        turn(*asked);
    return asked.has_value();
}

void Stepper::paint(juce::Graphics& graphics)
{
    const auto bounds = getLocalBounds().toFloat();
    graphics.setColour(colours::control);
    graphics.fillRoundedRectangle(bounds, controlCornerRadius);
    auto lower = bounds;
    auto upper = lower.removeFromTop(bounds.getHeight() / 2.0f);
    for (const auto direction : {1, -1}) {
        graphics.setColour(grey(1.0f, pressed == direction ? 1.0f : 0.85f));
        const auto area = direction == 1 ? upper.translated(0.0f, 0.5f) : lower.translated(0.0f, -0.5f);
        graphics.strokePath(chevron(area, static_cast<float>(direction)),
                            juce::PathStrokeType(pressed == direction ? 2.2f : 1.6f,
                                                 juce::PathStrokeType::curved,
                                                 juce::PathStrokeType::rounded));
    }
}

std::unique_ptr<juce::AccessibilityHandler> Stepper::createAccessibilityHandler()
{
    const auto setByReader = [this](double newValue) {
        setValue(newValue);
        if (onStep)
            onStep(_value);
    };
    return makeSliderHandler(
        *this, {{minValue, maxValue}, increment},
        {[this] { return _value; }, setByReader, [this] { return juce::String(_value, 1); }});
}

} // namespace velotrine
