#pragma once

#include "editor/Control.h"

namespace velotrine {

/// A combo box that calls onChange for every choice, even for the item that is already chosen: whoever
/// chooses a preset again wants its values back. Return opens it, and the space bar while it is marked.
class PopUpButton final : public Control<juce::ComboBox>
{
public:
    void showPopup() override;
    bool keyPressed(const juce::KeyPress& key) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

    /// What the user picked from the menu.
    /// @param itemId  0 for nothing
    void choose(int itemId);
};

} // namespace velotrine
