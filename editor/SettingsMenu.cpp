#include "editor/SettingsMenu.h"

#include "audiounit/Presets.h"
#include "editor/JuceText.h"

#include <algorithm>
#include <utility>

namespace velotrine {

namespace {

using juce::KeyPress;
using juce::ModifierKeys;
using Entry = SettingsMenu::Entry;

constexpr int command = ModifierKeys::commandModifier;
constexpr int commandShift = ModifierKeys::commandModifier | ModifierKeys::shiftModifier;

const juce::String ellipsis = juce::String::charToString(0x2026);

/// "Undo", or "Undo Boredom".
juce::String withName(const char* verb, const std::string& name)
{
    return name.empty() ? juce::String(verb) : verb + juce::String(" ") + juceText(name);
}

juce::PopupMenu popupOf(const std::vector<Entry>& entries)
{
    juce::PopupMenu menu;
    for (const auto& entry : entries) {
        if (entry.title.isEmpty()) {
            menu.addSeparator();
            continue;
        }
        juce::PopupMenu::Item item(entry.title);
        item.itemID = menu.getNumItems() + 1;
        item.isEnabled = entry.isEnabled;
        item.isTicked = entry.isTicked;
        item.shortcutKeyDescription = keyText(entry.key);
        item.action = entry.perform;
        if (!entry.below.empty())
            item.subMenu = std::make_unique<juce::PopupMenu>(popupOf(entry.below));
        menu.addItem(std::move(item));
    }
    return menu;
}

} // namespace

juce::String keyText(const KeyPress& key)
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

SettingsMenu::SettingsMenu(EditableSettings& editable, Actions newActions)
    : settings(editable), actions(std::move(newActions))
{}

std::vector<Entry> SettingsMenu::entries() const
{
    auto entries = allEntries();
    if (isBlocked && isBlocked())
        for (auto& entry : entries)
            entry.isEnabled = false;
    return entries;
}

std::vector<Entry> SettingsMenu::allEntries() const
{
    const auto undoName = settings.undoName();
    const auto redoName = settings.redoName();
    const auto now = settings.now();
    const Entry separator;
    auto* const edited = &settings;
    std::vector<Entry> entries{
        {.title = withName("Undo", undoName),
         .key = KeyPress('z', command, 0),
         .perform = [edited] { edited->undo(); },
         .isEnabled = !undoName.empty()},
        {.title = withName("Redo", redoName),
         .key = KeyPress('z', commandShift, 0),
         .perform = [edited] { edited->redo(); },
         .isEnabled = !redoName.empty()},
        separator,
        {.title = "Copy Settings", .key = KeyPress('c', command, 0), .perform = actions.copy},
        {.title = "Paste Settings", .key = KeyPress('v', command, 0), .perform = actions.paste},
        {.title = "Open" + ellipsis, .perform = actions.open},
        {.title = "Save" + ellipsis, .perform = actions.save},
        separator,
        {.title = "Seed " + juce::String(now.seed) + ellipsis, .perform = actions.askForSeed},
        {.title = "Throw the Dice", .perform = [edited] { edited->throwDice(); }},
        {.title = "Same Music at Every Start",
         .perform = [edited, isOn = !now.sameMusicAtEveryStart] { edited->setSameMusicAtEveryStart(isOn); },
         .isTicked = now.sameMusicAtEveryStart},
    };
    auto further = furtherEntries ? furtherEntries() : std::vector<Entry>{};
    if (hasPresets)
        further.push_back(presets());
    if (!further.empty())
        entries.push_back(separator);
    entries.insert(entries.end(), further.begin(), further.end());
    return entries;
}

Entry SettingsMenu::presets() const
{
    Entry submenu{.title = "Presets"};
    const auto chosen = settings.now().preset;
    for (std::size_t number = 0; number < presetCount; ++number)
        submenu.below.push_back({.title = juceText(presetTable()[number].name),
                                 .perform = [edited = &settings, number] { edited->choosePreset(number); },
                                 .isTicked = chosen && chosen->number == static_cast<std::int64_t>(number)});
    return submenu;
}

std::optional<Entry> SettingsMenu::entryFor(const KeyPress& key) const
{
    // Two keys for one entry: programs differ.
    const auto isSecondRedo = key == KeyPress('y', command, 0);
    const auto wanted = isSecondRedo ? KeyPress('z', commandShift, 0) : key;
    for (auto& entry : entries())
        if (entry.key.isValid() && entry.key == wanted && entry.isEnabled)
            return entry;
    return std::nullopt;
}

bool SettingsMenu::keyPressed(const KeyPress& key) const
{
    if (!key.getModifiers().isCommandDown() ||
        dynamic_cast<juce::TextEditor*>(juce::Component::getCurrentlyFocusedComponent()) != nullptr)
        return false;
    const auto entry = entryFor(key);
    if (entry)
        entry->perform();
    return entry.has_value();
}

void SettingsMenu::show(juce::Component& owner, juce::Rectangle<int> area, bool byKey) const
{
    const auto shown = entries();
    auto menu = popupOf(shown);
    menu.setLookAndFeel(&owner.getLookAndFeel());
    auto options = juce::PopupMenu::Options().withTargetComponent(owner).withTargetScreenArea(area);
    if (byKey)
        for (juce::PopupMenu::MenuItemIterator items(menu); items.next();)
            if (items.getItem().isEnabled && items.getItem().itemID != 0) {
                options = options.withInitiallySelectedItem(items.getItem().itemID);
                break;
            }
    menu.showMenuAsync(options);
}

} // namespace velotrine
