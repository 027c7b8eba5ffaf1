#include "editor/ValueField.h"

#include "editor/FontLoader.h"

namespace velotrine {

namespace {

/// A menu acts on the field that has the keyboard, so a click in it does not count as a click elsewhere.
bool isInMenu(const juce::Component& component)
{
    const auto* const open = juce::Component::getCurrentlyModalComponent();
    return dynamic_cast<const juce::MenuBarComponent*>(&component) != nullptr ||
           (open != nullptr && (open == &component || open->isParentOf(&component)));
}

} // namespace

/// Hears every click in the program while the field has the keyboard, to leave it at one outside. A control
/// takes the keyboard itself when it is pressed, before it acts; what is left is the bare background.
class ValueField::ClickElsewhere final : public juce::MouseListener
{
public:
    explicit ClickElsewhere(ValueField& fieldInUse) : field(fieldInUse) {}

    ~ClickElsewhere() override { stop(); }

    ClickElsewhere(const ClickElsewhere&) = delete;
    ClickElsewhere& operator=(const ClickElsewhere&) = delete;

    void start() { juce::Desktop::getInstance().addGlobalMouseListener(this); }

    void stop() { juce::Desktop::getInstance().removeGlobalMouseListener(this); }

    void mouseDown(const juce::MouseEvent& event) override
    {
        // A menu may be a window of its own.
        const auto& clicked = *event.eventComponent;
        const auto isInWindow = clicked.getTopLevelComponent() == field.getTopLevelComponent();
        if (isInWindow && !isInMenu(clicked) && &clicked != &field && !field.isParentOf(&clicked))
            field.leave();
    }

private:
    ValueField& field;
};

ValueField::ValueField() : clickElsewhere(std::make_unique<ClickElsewhere>(*this))
{
    setJustification(juce::Justification::centredRight);
    setSelectAllWhenFocused(true);
    setIndents(6, 0);
    setScrollToShowCursor(true);
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

bool ValueField::isFirstKeyOfNumber(const juce::KeyPress& key)
{
    const auto modifiers = key.getModifiers();
    const auto character = key.getTextCharacter();
    return !modifiers.isCtrlDown() && !modifiers.isAltDown() && !modifiers.isCommandDown() &&
           juce::String("0123456789.-").containsChar(character) && character != 0;
}

void ValueField::beginEntry(const juce::String& text, juce::Component& control)
{
    grabKeyboardFocus();
    begunOn = &control;
    setText(text, false);
    moveCaretToEnd();
}

void ValueField::endEntry()
{
    const auto text = getText();
    // What nobody has changed is no edit: a host would record it.
    if (text == shown)
        return;
    shown = text;
    if (onEntryEnded)
        onEntryEnded(text);
}

// Where there is a window that takes the keyboard, it must: with the keyboard nowhere, the toolkit would give
// it back to this field when the window is next activated.
void ValueField::leave()
{
    auto* const window = getTopLevelComponent();
    if (begunOn != nullptr)
        begunOn->grabKeyboardFocus();
    else if (window != this && window->getWantsKeyboardFocus())
        window->grabKeyboardFocus();
    else
        giveAwayKeyboardFocus();
}

void ValueField::focusGained(FocusChangeType cause)
{
    TextEditor::focusGained(cause);
    clickElsewhere->start();
}

void ValueField::focusLost(FocusChangeType cause)
{
    clickElsewhere->stop();
    endEntry();
    begunOn = nullptr;
    setHighlightedRegion({});
    TextEditor::focusLost(cause);
    if (onLeft)
        onLeft();
}

bool ValueField::keyPressed(const juce::KeyPress& key)
{
    // A field of one line has no use for Tab but to go on.
    if (key.isKeyCode(juce::KeyPress::tabKey))
        return false;
    if (key.isKeyCode(juce::KeyPress::returnKey)) {
        endEntry();
        leave();
        return true;
    }
    if (key.isKeyCode(juce::KeyPress::escapeKey)) {
        // With nothing to take back, the key may mean what the field lies in.
        const auto isUsed = getText() != shown || begunOn != nullptr;
        setText(shown, false);
        leave();
        return isUsed;
    }
    return TextEditor::keyPressed(key);
}

} // namespace velotrine
