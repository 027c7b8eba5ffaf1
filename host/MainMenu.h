#pragma once

#include "editor/SettingsMenu.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <optional>
#include <vector>

namespace velotrine {

/// The application's menus and their keys. Add it as key listener to every window. Main thread.
class MainMenu final : public juce::MenuBarModel, public juce::KeyListener
{
public:
    /// What the application menu does.
    struct Actions
    {
        std::function<void()> showAbout;
        std::function<void()> hide;
        std::function<void()> showAll;
        std::function<void()> terminate;

        /// What the context menu has under a key at this moment: what Edit does, too, while no text field is
        /// being edited. May be empty.
        std::function<std::optional<SettingsMenu::Entry>(const juce::KeyPress&)> settingsEntry{};
    };

    struct Entry
    {
        juce::String title; ///< empty for a separator
        juce::KeyPress key; ///< invalid for none
        std::function<void()> perform;
        std::function<bool()> isEnabled;
        std::function<juce::String()> shownTitle{}; ///< where it says more than the title
    };

    struct Menu
    {
        juce::String title;
        std::vector<Entry> entries;
    };

    explicit MainMenu(const Actions& actions);

    [[nodiscard]] const std::vector<Menu>& menus() const noexcept { return allMenus; }

    juce::StringArray getMenuBarNames() override;
    juce::PopupMenu getMenuForIndex(int index, const juce::String& name) override;

    void menuItemSelected(int, int) override {}

    /// Performs the entry that has the key, unless it is greyed out.
    bool keyPressed(const juce::KeyPress& key, juce::Component* origin) override;
    using KeyListener::keyPressed;

private:
    std::vector<Menu> allMenus;
};

} // namespace velotrine
