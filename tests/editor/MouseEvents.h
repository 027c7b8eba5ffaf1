#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// A mouse event on a component, in its own coordinates.
/// @param pressedAt  where the button went down
/// @param modifiers  keys held
inline juce::MouseEvent mouseAt(juce::Component& component, juce::Point<float> position,
                                juce::Point<float> pressedAt, bool wasDragged = false, int modifiers = 0,
                                int button = juce::ModifierKeys::leftButtonModifier)
{
    const auto now = juce::Time::getCurrentTime();
    return {juce::Desktop::getInstance().getMainMouseSource(),
            position,
            juce::ModifierKeys(modifiers | button),
            juce::MouseInputSource::defaultPressure,
            juce::MouseInputSource::defaultOrientation,
            juce::MouseInputSource::defaultRotation,
            juce::MouseInputSource::defaultTiltX,
            juce::MouseInputSource::defaultTiltY,
            &component,
            &component,
            now,
            pressedAt,
            now,
            1,
            wasDragged};
}

inline juce::MouseEvent clickAt(juce::Component& component, juce::Point<float> position,
                                int button = juce::ModifierKeys::leftButtonModifier)
{
    return mouseAt(component, position, position, false, 0, button);
}

} // namespace velotrine
