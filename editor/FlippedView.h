#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// A plain area with a background; y grows downward.
class FlippedView : public juce::Component
{
public:
    /// A click on the bare background leaves the keyboard where it is.
    FlippedView() { setMouseClickGrabsKeyboardFocus(false); }

    /// @param cornerRadiusPoints  0 for a rectangle, which then hides all that lies behind it
    void setBackground(juce::Colour colour, float cornerRadiusPoints = 0.0f);

    void paint(juce::Graphics& graphics) override;

private:
    juce::Colour background;
    float cornerRadius = 0.0f;
};

} // namespace velotrine
