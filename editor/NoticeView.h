#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// A line or two near the window's lower edge, over everything else, that say what has just happened. It goes
/// away by itself after some seconds, or by a click. Main thread.
class NoticeView final : public juce::Component, private juce::Timer
{
public:
    NoticeView();

    /// Shows a text in place of the one before.
    /// @param staysUntilTheNext  for what goes on, such as "40 %"
    void show(const juce::String& text, bool staysUntilTheNext = false);

    [[nodiscard]] const juce::String& text() const noexcept { return shownText; }

    /// Lays it out near the lower edge of an area.
    void placeIn(juce::Rectangle<int> newArea);

    void paint(juce::Graphics& graphics) override;
    void mouseDown(const juce::MouseEvent& event) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    void timerCallback() override;
    void fit();

    juce::String shownText;
    juce::TextLayout layout;
    juce::Rectangle<int> area;
};

} // namespace velotrine
