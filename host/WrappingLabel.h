#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <string>

namespace velotrine {

/// A text that wraps between words and can be as many lines high as it needs.
class WrappingLabel final : public juce::Component
{
public:
    /// @param utf8Text  nothing in it is a command
    WrappingLabel(const std::string& utf8Text, const juce::Font& font, juce::Colour colour,
                  juce::Justification justification = juce::Justification::topLeft);

    /// Width of the text on a single line, but no more than lines may have.
    [[nodiscard]] int preferredWidth() const;

    /// Height of the whole text when it wraps within a width. All in points.
    [[nodiscard]] int heightForWidth(int width) const;

    void paint(juce::Graphics& graphics) override;
    void resized() override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    [[nodiscard]] juce::TextLayout layoutForWidth(int width) const;

    juce::AttributedString text;
    juce::TextLayout layout;
};

} // namespace velotrine
