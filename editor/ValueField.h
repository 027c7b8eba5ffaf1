#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace velotrine {

/// A field for a number. Return ends an entry, and so do Tab, a click elsewhere and the field's going away;
/// Escape takes it back. Main thread.
class ValueField final : public juce::TextEditor
{
public:
    ValueField();
    ~ValueField() override;

    /// Told the text once an entry has ended that changed it.
    std::function<void(const juce::String&)> onEntryEnded;

    /// Shows a value without telling anybody. What somebody is typing stays; Escape then brings this value.
    void show(const juce::String& text);

    /// @param points  size of the font's em
    void setFontSize(float points);

    void focusGained(FocusChangeType cause) override;
    void focusLost(FocusChangeType cause) override;
    bool keyPressed(const juce::KeyPress& key) override;

private:
    class ClickElsewhere;

    void endEntry();

    juce::String shown;
    std::unique_ptr<ClickElsewhere> clickElsewhere; ///< while the field has the focus
};

} // namespace velotrine
