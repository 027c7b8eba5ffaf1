#include "host/PopUpButton.h"

#include "editor/AccessibleValue.h"
#include "editor/KeyTurn.h"

namespace velotrine {

void PopUpButton::showPopup()
{
    auto menu = *getRootMenu();
    for (juce::PopupMenu::MenuItemIterator items(menu); items.next();)
        items.getItem().isTicked = items.getItem().itemID == getSelectedId();
    menu.setLookAndFeel(&getLookAndFeel());
    const auto options = juce::PopupMenu::Options()
                             .withTargetComponent(this)
                             .withItemThatMustBeVisible(getSelectedId())
                             .withInitiallySelectedItem(getSelectedId())
                             .withMinimumWidth(getWidth())
                             .withMaximumNumColumns(1)
                             .withStandardItemHeight(getHeight());
    menu.showMenuAsync(options, [button = SafePointer(this)](int itemId) {
        if (!button)
            return;
        button->hidePopup();
        button->choose(itemId);
    });
}

bool PopUpButton::keyPressed(const juce::KeyPress& key)
{
    if (const auto turn = listTurnOf(key)) {
        keyIsUsed();
        const auto index = turnedIndex(getSelectedItemIndex(), getNumItems(), *turn);
        if (index != getSelectedItemIndex())
            choose(getItemId(index));
        return true;
    }
    if (!key.isKeyCode(juce::KeyPress::returnKey) && !(key.isKeyCode(juce::KeyPress::spaceKey) && isMarked()))
        return false;
    showPopup();
    return true;
}

/// The toolkit's own would give the choice for the name.
std::unique_ptr<juce::AccessibilityHandler> PopUpButton::createAccessibilityHandler()
{
    return makeButtonHandler(
        *this, [this] { return getText(); }, [this] { showPopup(); }, juce::AccessibilityRole::comboBox);
}

void PopUpButton::choose(int itemId)
{
    if (itemId == 0)
        return;
    setSelectedId(itemId, juce::dontSendNotification);
    if (onChange)
        onChange();
}

} // namespace velotrine
