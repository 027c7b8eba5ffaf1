#include "editor/ChoiceButton.h"

#include "editor/JuceText.h"
#include "editor/KeyTurn.h"

namespace velotrine {

ChoiceButton::ChoiceButton(const juce::String& name, std::span<const std::string_view> choices)
    : EditorButton(name, Face::text), names(choices)
{}

void ChoiceButton::show(int index)
{
    shownIndex = index;
    setButtonText(juceText(names[static_cast<std::size_t>(index)]));
}

bool ChoiceButton::keyPressed(const juce::KeyPress& key)
{
    const auto turn = listTurnOf(key);
    if (!turn)
        return EditorButton::keyPressed(key);
    keyIsUsed();
    const auto index = turnedIndex(shownIndex, static_cast<int>(names.size()), *turn);
    if (index != shownIndex && onPicked)
        onPicked(index);
    return true;
}

// The menu opens at the button, not at the mouse: the keyboard opens it too.
void ChoiceButton::clicked()
{
    juce::PopupMenu menu;
    menu.setLookAndFeel(&getLookAndFeel());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto index = static_cast<int>(i);
        menu.addItem(index + 1, juceText(names[i]), true, index == shownIndex);
    }
    const auto options = juce::PopupMenu::Options()
                             .withTargetComponent(*this)
                             .withItemThatMustBeVisible(shownIndex + 1)
                             .withInitiallySelectedItem(shownIndex + 1);
    // The menu outlives neither the editor nor the button: with the button gone, nothing is picked.
    menu.showMenuAsync(options, [button = SafePointer(this)](int id) {
        if (button != nullptr && id > 0 && button->onPicked)
            button->onPicked(id - 1);
    });
}

} // namespace velotrine
