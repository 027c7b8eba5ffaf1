#include "host/MainMenu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace velotrine {
namespace {

using juce::KeyPress;
using juce::ModifierKeys;
using testing::ElementsAre;

class MainMenuTest : public testing::Test
{
protected:
    /// "Title | keys", "-" for a separator; in brackets when greyed out.
    std::vector<std::string> shown(int index) { return shown(index, menu); }

    static std::vector<std::string> shown(int index, MainMenu& menu)
    {
        std::vector<std::string> lines;
        const auto popup = menu.getMenuForIndex(index, {});
        for (juce::PopupMenu::MenuItemIterator items(popup); items.next();) {
            const auto& item = items.getItem();
            auto line = item.isSeparator ? juce::String("-") : item.text;
            if (item.shortcutKeyDescription.isNotEmpty())
                line << " | " << item.shortcutKeyDescription;
            lines.push_back((item.isEnabled || item.isSeparator ? line : "[" + line + "]").toStdString());
        }
        return lines;
    }

    bool press(int key, int modifiers = ModifierKeys::commandModifier)
    {
        return menu.keyPressed(KeyPress(key, modifiers, 0), nullptr);
    }

    std::vector<std::string> done;
    MainMenu menu{{.showAbout = [this] { done.emplace_back("about"); },
                   .hide = [this] { done.emplace_back("hide"); },
                   .showAll = [this] { done.emplace_back("show all"); },
                   .terminate = [this] { done.emplace_back("quit"); }}};
};

TEST_F(MainMenuTest, HasTheApplicationsMenuAndEdit)
{
    EXPECT_EQ(menu.getMenuBarNames(), juce::StringArray({"Velotrine", "Edit"}));
}

TEST_F(MainMenuTest, TheApplicationsMenu)
{
    EXPECT_THAT(shown(0),
                ElementsAre("About Velotrine", "-", "Hide Velotrine | Ctrl+H", "[Hide Others | Ctrl+Alt+H]",
                            "Show All", "-", "Quit Velotrine | Ctrl+Q"));
}

TEST_F(MainMenuTest, TheEditMenuIsGreyWithoutATextField)
{
    EXPECT_THAT(shown(1), ElementsAre("[Undo | Ctrl+Z]", "[Redo | Ctrl+Shift+Z]", "-", "[Cut | Ctrl+X]",
                                      "[Copy | Ctrl+C]", "[Paste | Ctrl+V]", "[Select All | Ctrl+A]"));
}

TEST_F(MainMenuTest, KeysPerformWhatTheMenuSays)
{
    EXPECT_TRUE(press('h'));
    EXPECT_TRUE(press('q'));
    EXPECT_THAT(done, ElementsAre("hide", "quit"));
}

TEST_F(MainMenuTest, KeysOfGreyEntriesAndOtherKeysAreLeftToOthers)
{
    EXPECT_FALSE(press('h', ModifierKeys::commandModifier | ModifierKeys::altModifier));
    EXPECT_FALSE(press('z'));
    EXPECT_FALSE(press('q', ModifierKeys::noModifiers));
    EXPECT_FALSE(press('w'));
    EXPECT_TRUE(done.empty());
}

TEST_F(MainMenuTest, ItemsPerformWhatTheySay)
{
    for (const auto& entry : menu.menus().front().entries)
        if (entry.title.isNotEmpty() && entry.isEnabled())
            entry.perform();
    EXPECT_THAT(done, ElementsAre("about", "hide", "show all", "quit"));
}

TEST_F(MainMenuTest, WithoutATextFieldEditDoesWhatTheContextMenuHasUnderItsKeys)
{
    const auto found = [this](const KeyPress& key) -> std::optional<SettingsMenu::Entry> {
        if (key == KeyPress('z', ModifierKeys::commandModifier, 0))
            return SettingsMenu::Entry{.title = "Undo Boredom",
                                       .perform = [this] { done.emplace_back("undo"); }};
        if (key == KeyPress('v', ModifierKeys::commandModifier, 0))
            return SettingsMenu::Entry{.title = "Paste Settings",
                                       .perform = [this] { done.emplace_back("paste"); }};
        return std::nullopt;
    };
    MainMenu withSettings(
        {.showAbout = {}, .hide = {}, .showAll = {}, .terminate = {}, .settingsEntry = found});
    EXPECT_THAT(shown(1, withSettings),
                ElementsAre("Undo Boredom | Ctrl+Z", "[Redo | Ctrl+Shift+Z]", "-", "[Cut | Ctrl+X]",
                            "[Copy | Ctrl+C]", "Paste | Ctrl+V", "[Select All | Ctrl+A]"));
    EXPECT_TRUE(withSettings.keyPressed(KeyPress('z', ModifierKeys::commandModifier, 0), nullptr));
    EXPECT_TRUE(withSettings.keyPressed(KeyPress('v', ModifierKeys::commandModifier, 0), nullptr));
    EXPECT_FALSE(withSettings.keyPressed(KeyPress('c', ModifierKeys::commandModifier, 0), nullptr));
    EXPECT_THAT(done, ElementsAre("undo", "paste"));
}

} // namespace
} // namespace velotrine
