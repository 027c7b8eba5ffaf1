#pragma once

#include <gtest/gtest.h>

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// An event at a point in a component's own coordinates.
inline juce::MouseEvent mouseEventAt(juce::Component& component, juce::Point<int> position,
                                     juce::ModifierKeys modifiers = juce::ModifierKeys::leftButtonModifier)
{
    return {juce::Desktop::getInstance().getMainMouseSource(),
            position.toFloat(),
            modifiers,
            juce::MouseInputSource::defaultPressure,
            juce::MouseInputSource::defaultOrientation,
            juce::MouseInputSource::defaultRotation,
            juce::MouseInputSource::defaultTiltX,
            juce::MouseInputSource::defaultTiltY,
            &component,
            &component,
            juce::Time::getCurrentTime(),
            position.toFloat(),
            juce::Time::getCurrentTime(),
            1,
            false};
}

/// A click with the left button on whatever lies at a point of a component.
inline void clickAt(juce::Component& parent, juce::Point<int> position)
{
    auto* target = parent.getComponentAt(position);
    ASSERT_NE(target, nullptr) << "nothing visible at " << position.toString();
    const auto event = mouseEventAt(*target, target->getLocalPoint(&parent, position));
    target->mouseDown(event);
    target->mouseUp(event);
}

} // namespace velotrine
