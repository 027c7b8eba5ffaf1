#include "host/MainMenu.h"

#include <utility>

namespace velotrine {

namespace {

using juce::KeyPress;
using juce::ModifierKeys;

constexpr int command = ModifierKeys::commandModifier;
constexpr int commandAlt = ModifierKeys::commandModifier | ModifierKeys::altModifier;
constexpr int commandShift = ModifierKeys::commandModifier | ModifierKeys::shiftModifier;

bool always()
{
    return true;
}

bool never()
{
    return false;
}

juce::TextEditor* focusedTextField()
{
    return dynamic_cast<juce::TextEditor*>(juce::Component::getCurrentlyFocusedComponent());
}

bool isInTextField()
{
    return focusedTextField() != nullptr;
}

/// An entry that does something with the text field that has the keyboard, or else with the settings.
class EditEntries
{
public:
    explicit EditEntries(decltype(MainMenu::Actions::settingsEntry) entryForSettings)
        : settingsEntry(std::move(entryForSettings))
    {}

    template <typename Operation>
    [[nodiscard]] MainMenu::Entry entry(const char* title, KeyPress key, Operation operation) const
    {
        const auto ofSettings = [settingsEntry = settingsEntry, key] {
            return settingsEntry ? settingsEntry(key) : std::nullopt;
        };
        const auto perform = [ofSettings, operation] {
            if (auto* field = focusedTextField())
                operation(*field);
            else if (const auto found = ofSettings())
                found->perform();
        };
        return {title, key, perform, [ofSettings] { return isInTextField() || ofSettings().has_value(); }};
    }

    /// The same, which shows what it is about: "Undo Boredom".
    template <typename Operation>
    [[nodiscard]] MainMenu::Entry namedEntry(const char* title, KeyPress key, Operation operation) const
    {
        auto made = entry(title, key, operation);
        made.shownTitle = [settingsEntry = settingsEntry, key, title] {
            const auto found = settingsEntry && !isInTextField() ? settingsEntry(key) : std::nullopt;
            return found ? found->title : juce::String(title);
        };
        return made;
    }

private:
    decltype(MainMenu::Actions::settingsEntry) settingsEntry;
};

MainMenu::Entry separator()
{
    return {{}, {}, {}, never};
}

MainMenu::Menu applicationMenu(MainMenu::Actions actions)
{
    return {"Velotrine",
            {
                {"About Velotrine", {}, std::move(actions.showAbout), always},
                separator(),
                {"Hide Velotrine", KeyPress('h', command, 0), std::move(actions.hide), always},
                // X11 and Wayland know no way to hide what belongs to others.
                {"Hide Others", KeyPress('h', commandAlt, 0), [] {}, never},
                {"Show All", {}, std::move(actions.showAll), always},
                separator(),
                {"Quit Velotrine", KeyPress('q', command, 0), std::move(actions.terminate), always},
            }};
}

MainMenu::Menu editMenu(const EditEntries& edit)
{
    using Field = juce::TextEditor;
    return {"Edit",
            {
                edit.namedEntry("Undo", KeyPress('z', command, 0), [](Field& field) { field.undo(); }),
                edit.namedEntry("Redo", KeyPress('z', commandShift, 0), [](Field& field) { field.redo(); }),
                separator(),
                edit.entry("Cut", KeyPress('x', command, 0), [](Field& field) { field.cut(); }),
                edit.entry("Copy", KeyPress('c', command, 0), [](Field& field) { field.copy(); }),
                edit.entry("Paste", KeyPress('v', command, 0), [](Field& field) { field.paste(); }),
                edit.entry("Select All", KeyPress('a', command, 0), [](Field& field) { field.selectAll(); }),
            }};
}

} // namespace

MainMenu::MainMenu(const Actions& actions)
    : allMenus{applicationMenu(actions), editMenu(EditEntries(actions.settingsEntry))}
{}

juce::StringArray MainMenu::getMenuBarNames()
{
    juce::StringArray names;
    for (const auto& menu : allMenus)
        names.add(menu.title);
    return names;
}

juce::PopupMenu MainMenu::getMenuForIndex(int index, const juce::String&)
{
    juce::PopupMenu shown;
    for (const auto& entry : allMenus.at(static_cast<std::size_t>(index)).entries) {
        if (entry.title.isEmpty()) {
            shown.addSeparator();
            continue;
        }
        juce::PopupMenu::Item item(entry.shownTitle ? entry.shownTitle() : entry.title);
        item.itemID = shown.getNumItems() + 1;
        item.isEnabled = entry.isEnabled();
        item.shortcutKeyDescription = keyText(entry.key);
        item.action = entry.perform;
        shown.addItem(std::move(item));
    }
    return shown;
}

bool MainMenu::keyPressed(const juce::KeyPress& key, juce::Component*)
{
    for (const auto& menu : allMenus)
        for (const auto& entry : menu.entries)
            if (entry.key.isValid() && entry.key == key && entry.isEnabled()) {
                entry.perform();
                return true;
            }
    return false;
}

} // namespace velotrine
