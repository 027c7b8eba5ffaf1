#pragma once

#include "editor/Control.h"

namespace velotrine {

/// The editor's button: a rounded square with a sign or a text. Main thread.
class EditorButton : public ControlButton<juce::Button>
{
public:
    enum class Face
    {
        text,
        check,    ///< a mark while it is on
        playStop, ///< a triangle while off, a square while on
    };

    /// @param name  what it does, for those who hear the screen
    EditorButton(const juce::String& name, Face face);

    /// @param points  size of the text's em
    void setFontSize(float points);

    void paintButton(juce::Graphics& graphics, bool isHighlighted, bool isDown) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    [[nodiscard]] juce::Path sign() const;
    [[nodiscard]] juce::String valueText() const;

    Face _face;
    float fontSize = 12.0f;
};

} // namespace velotrine
