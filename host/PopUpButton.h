#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// A combo box that calls onChange for every choice, also when it is the one that was there before: who
/// chooses a preset again wants its values back.
class PopUpButton final : public juce::ComboBox
{
public:
    void showPopup() override;

    /// What the user picked from the menu.
    /// @param itemId  0 for nothing
    void choose(int itemId);
};

} // namespace velotrine
