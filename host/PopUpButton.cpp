#include "host/PopUpButton.h"

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

void PopUpButton::choose(int itemId)
{
    if (itemId == 0)
        return;
    setSelectedId(itemId, juce::dontSendNotification);
    if (onChange)
        onChange();
}

} // namespace velotrine
