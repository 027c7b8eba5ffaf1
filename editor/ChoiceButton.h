#pragma once

#include "editor/EditorButton.h"

#include <functional>
#include <span>
#include <string_view>

namespace velotrine {

/// A button that shows one of several names and opens a menu of all. Arrow keys go to the next name, or the
/// one before, and Home and End to the ends. Main thread.
class ChoiceButton final : public EditorButton
{
public:
    /// @param name     what is chosen, for those who hear the screen
    /// @param choices  live as long as the program
    ChoiceButton(const juce::String& name, std::span<const std::string_view> choices);

    /// Told of what the user picks, though it be what was there before.
    std::function<void(int index)> onPicked;

    /// Shows a choice and tells nobody.
    void show(int index);

    bool keyPressed(const juce::KeyPress& key) override;

private:
    void clicked() override;

    std::span<const std::string_view> names;
    int shownIndex = 0;
};

} // namespace velotrine
