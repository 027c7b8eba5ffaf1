#pragma once

#include "editor/EditableSettings.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <vector>

namespace velotrine {

/// A key as a menu shows it beside an entry: "Ctrl+Shift+Z"; empty for none.
[[nodiscard]] juce::String keyText(const juce::KeyPress& key);

/// The context menu: what can be done with the settings as a whole. Its keys work without it, too. While a
/// text field is being edited, they belong to its text. Main thread.
class SettingsMenu
{
public:
    struct Entry
    {
        juce::String title;   ///< empty for a separator
        juce::KeyPress key{}; ///< invalid for none
        std::function<void()> perform{};
        bool isEnabled = true;
        bool isTicked = false;
        std::vector<Entry> below{}; ///< a submenu's
    };

    /// What an entry does beyond changing the settings itself.
    struct Actions
    {
        std::function<void()> copy;
        std::function<void()> paste;
        std::function<void()> open;
        std::function<void()> save;
        std::function<void()> askForSeed;
    };

    /// @param editable  outlives this
    SettingsMenu(EditableSettings& editable, Actions newActions);

    /// Further entries, of the program that the editor is in; asked for each time that the menu opens.
    std::function<std::vector<Entry>()> furtherEntries;

    /// Whether the presets are here; where there is another way to them, they are not.
    bool hasPresets = true;

    /// Whether everything is greyed out for now.
    std::function<bool()> isBlocked;

    [[nodiscard]] std::vector<Entry> entries() const;

    /// The entry that a key stands for; none if it is greyed out.
    [[nodiscard]] std::optional<Entry> entryFor(const juce::KeyPress& key) const;

    /// Performs the entry that has the key, unless it is greyed out or a text field has the keyboard.
    bool keyPressed(const juce::KeyPress& key) const;

    /// Opens it.
    /// @param owner  in whose looks
    /// @param area   beside which, on the screen
    /// @param byKey  with its first entry marked, for arrow keys
    void show(juce::Component& owner, juce::Rectangle<int> area, bool byKey) const;

private:
    [[nodiscard]] std::vector<Entry> allEntries() const;
    [[nodiscard]] Entry presets() const;

    EditableSettings& settings;
    Actions actions;
};

} // namespace velotrine
