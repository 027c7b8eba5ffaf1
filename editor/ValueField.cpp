#include "editor/ValueField.h"

#include "editor/FontLoader.h"

namespace velotrine {

/// Hears every click in the program, to end the entry at one outside the field.
class ValueField::ClickElsewhere final : public juce::MouseListener
{
public:
    explicit ClickElsewhere(ValueField& fieldInUse) : field(fieldInUse)
    {
        juce::Desktop::getInstance().addGlobalMouseListener(this);
    }

    ~ClickElsewhere() override { juce::Desktop::getInstance().removeGlobalMouseListener(this); }

    ClickElsewhere(const ClickElsewhere&) = delete;
    ClickElsewhere& operator=(const ClickElsewhere&) = delete;

    void mouseDown(const juce::MouseEvent& event) override
    {
        if (event.eventComponent == &field || field.isParentOf(event.eventComponent))
            return;
        // Later: giving the focus away here would delete this listener in its own callback.
        juce::MessageManager::callAsync([safe = juce::Component::SafePointer<ValueField>(&field)] {
            if (safe != nullptr && safe->hasKeyboardFocus(true))
                safe->giveAwayKeyboardFocus();
        });
    }

private:
    ValueField& field;
};

ValueField::ValueField()
{
    setJustification(juce::Justification::centredRight);
    setSelectAllWhenFocused(true);
    setIndents(6, 0);
    setScrollToShowCursor(true);
    onReturnKey = [this] {
        endEntry();
        selectAll();
    };
    onEscapeKey = [this] {
        setText(shown, false);
        giveAwayKeyboardFocus();
    };
}

ValueField::~ValueField() = default;

void ValueField::show(const juce::String& text)
{
    const auto isBeingTyped = hasKeyboardFocus(true) && getText() != shown;
    shown = text;
    if (!isBeingTyped && getText() != text)
        setText(text, false);
}

void ValueField::setFontSize(float points)
{
    applyFontToAllText(displayFont(points));
}

void ValueField::endEntry()
{
    const auto text = getText();
    if (text == shown)
        return;
    shown = text;
    if (onEntryEnded)
        onEntryEnded(text);
}

void ValueField::focusGained(FocusChangeType cause)
{
    TextEditor::focusGained(cause);
    clickElsewhere = std::make_unique<ClickElsewhere>(*this);
}

void ValueField::focusLost(FocusChangeType cause)
{
    clickElsewhere.reset();
    endEntry();
    setHighlightedRegion({});
    TextEditor::focusLost(cause);
}

bool ValueField::keyPressed(const juce::KeyPress& key)
{
    // A field of one line has no use for Tab but to go on.
    if (key.getKeyCode() == juce::KeyPress::tabKey)
        return false;
    return TextEditor::keyPressed(key);
}

} // namespace velotrine
