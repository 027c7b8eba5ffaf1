#include "host/MainMenu.h"

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

/// An entry that does something with the text field that has the keyboard.
template <typename Operation>
MainMenu::Entry textEntry(const char* title, KeyPress key, Operation operation)
{
    const auto perform = [operation] {
        if (auto* field = focusedTextField())
            operation(*field);
    };
    return {title, key, perform, isInTextField};
}

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

MainMenu::Menu editMenu()
{
    using Field = juce::TextEditor;
    return {"Edit",
            {
                textEntry("Undo", KeyPress('z', command, 0), [](Field& field) { field.undo(); }),
                textEntry("Redo", KeyPress('z', commandShift, 0), [](Field& field) { field.redo(); }),
                separator(),
                textEntry("Cut", KeyPress('x', command, 0), [](Field& field) { field.cut(); }),
                textEntry("Copy", KeyPress('c', command, 0), [](Field& field) { field.copy(); }),
                textEntry("Paste", KeyPress('v', command, 0), [](Field& field) { field.paste(); }),
                textEntry("Select All", KeyPress('a', command, 0), [](Field& field) { field.selectAll(); }),
            }};
}

juce::String describe(const KeyPress& key)
{
    if (!key.isValid())
        return {};
    const auto modifiers = key.getModifiers();
    juce::String text = "Ctrl+";
    if (modifiers.isAltDown())
        text << "Alt+";
    if (modifiers.isShiftDown())
        text << "Shift+";
    return text + juce::String::charToString(static_cast<juce::juce_wchar>(key.getKeyCode())).toUpperCase();
}

} // namespace

MainMenu::MainMenu(Actions actions) : allMenus{applicationMenu(std::move(actions)), editMenu()} {}

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
        juce::PopupMenu::Item item(entry.title);
        item.itemID = shown.getNumItems() + 1;
        item.isEnabled = entry.isEnabled();
        item.shortcutKeyDescription = describe(entry.key);
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
