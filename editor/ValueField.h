#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace velotrine {

/// A field for a number. Return ends an entry, and so do Tab, a click elsewhere and the field's going away;
/// Escape takes it back. Return and Escape leave the field, and the keyboard goes back to the window, or to
/// the control on which the entry began. Main thread.
class ValueField final : public juce::TextEditor
{
public:
    ValueField();
    ~ValueField() override;

    /// Told the text once an entry has ended that changed it.
    std::function<void(const juce::String&)> onEntryEnded;

    /// Told when the keyboard has left the field.
    std::function<void()> onLeft;

    /// Shows a value without telling anybody. What somebody is typing stays; Escape then brings this value.
    void show(const juce::String& text);

    /// Whether the key is one that a number may begin with, so that it begins an entry on a control.
    [[nodiscard]] static bool isFirstKeyOfNumber(const juce::KeyPress& key);

    /// Begins an entry with what was typed on another control, which gets the keyboard back when it ends.
    void beginEntry(const juce::String& text, juce::Component& control);

    /// @param points  size of the font's em
    void setFontSize(float points);

    void focusGained(FocusChangeType cause) override;
    void focusLost(FocusChangeType cause) override;
    bool keyPressed(const juce::KeyPress& key) override;

private:
    class ClickElsewhere;

    void endEntry();
    void leave();

    juce::String shown;
    SafePointer<juce::Component> begunOn;
    std::unique_ptr<ClickElsewhere> clickElsewhere;
};

} // namespace velotrine
