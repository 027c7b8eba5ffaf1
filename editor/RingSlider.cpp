#include "editor/RingSlider.h"

#include "editor/KeyTurn.h"
#include "editor/ValueField.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

TurnDistances distancesOf(const juce::Slider& slider, bool isFine)
{
    const auto range = slider.getMaximum() - slider.getMinimum();
    const auto step = slider.getInterval();
    if (step > 0.0)
        return {step, std::max(step, std::round(0.1 * range / step) * step)};
    return {(isFine ? 0.001 : 0.01) * range, 0.1 * range};
}

} // namespace

RingSlider::RingSlider() : Control(juce::Slider::LinearHorizontal, juce::Slider::NoTextBox) {}

void RingSlider::mouseDown(const juce::MouseEvent& event)
{
    valueAtPress = getValue();
    isDragCancelled = false;
    Control::mouseDown(event);
}

void RingSlider::mouseDrag(const juce::MouseEvent& event)
{
    if (!isDragCancelled)
        Control::mouseDrag(event);
}

bool RingSlider::cancelDrag()
{
    if (getThumbBeingDragged() < 0 || isDragCancelled)
        return false;
    isDragCancelled = true;
    setValue(valueAtPress, juce::sendNotificationSync);
    return true;
}

bool RingSlider::keyPressed(const juce::KeyPress& key)
{
    if (key.isKeyCode(juce::KeyPress::escapeKey))
        return cancelDrag();
    if (const auto turn = valueTurnOf(key)) {
        setValue(turned(getValue(), getRange(), distancesOf(*this, turn->isFine), *turn),
                 juce::sendNotificationSync);
        return true;
    }
    if (!onEntryBegan || !ValueField::isFirstKeyOfNumber(key))
        return false;
    onEntryBegan(juce::String::charToString(key.getTextCharacter()));
    return true;
}

} // namespace velotrine
