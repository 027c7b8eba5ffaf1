#include "editor/EditableSettings.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "audiounit/StateText.h"
#include "takes/SettingsFile.h"

#include <random>
#include <utility>

namespace velotrine {

std::string presetStepName(const std::string& preset)
{
    return "Preset " + preset;
}

SettingsAccess SettingsAccess::of(const std::function<std::shared_ptr<AUAudioUnit>()>& unit)
{
    const auto read = [unit] {
        const auto present = unit();
        return present ? settingsFromState(present->fullState(), {}) : Settings();
    };
    const auto write = [unit](const Settings& from, const Settings& to) {
        if (const auto present = unit())
            present->setFullState(stateThatChanges(from, to));
    };
    return {.read = read, .write = write};
}

EditableSettings::EditableSettings(SettingsAccess settingsAccess, std::shared_ptr<UndoHistory> undoHistory)
    : access(std::move(settingsAccess)), history(std::move(undoHistory))
{}

void EditableSettings::noteEdit(ParameterAddress address, float before, float after)
{
    auto old = now();
    auto edited = old;
    old.values.at(address) = before;
    edited.values.at(address) = after;
    history->add(parameterTable().at(address).name, old, edited);
}

void EditableSettings::change(const std::string& name, const Settings& wanted)
{
    const auto before = now();
    replace(before, wanted);
    // The instrument rounds what counts something, and others may write at the same time.
    const auto written = now();
    auto after = wanted;
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        after.values[address] = wanted.values[address] != before.values[address] ? written.values[address]
                                                                                 : before.values[address];
    history->add(name, before, after);
}

void EditableSettings::changeBy(const std::string& name, const std::function<void()>& action)
{
    const auto before = now();
    action();
    history->add(name, before, now());
}

void EditableSettings::undo()
{
    const auto before = now();
    replace(before, history->undo(before));
}

void EditableSettings::redo()
{
    const auto before = now();
    replace(before, history->redo(before));
}

void EditableSettings::replace(const Settings& before, const Settings& wanted) const
{
    access.write(before, wanted);
    if (onReplaced)
        onReplaced();
}

void EditableSettings::choosePreset(std::size_t number)
{
    const auto& preset = presetTable().at(number);
    const std::string name(preset.name);
    auto wanted = now();
    wanted.values = preset.values;
    wanted.preset = {static_cast<std::int64_t>(number), name};
    change(presetStepName(name), wanted);
}

void EditableSettings::setSeed(std::uint32_t seed)
{
    auto wanted = now();
    wanted.seed = seed;
    change("Seed", wanted);
}

void EditableSettings::throwDice()
{
    auto wanted = now();
    wanted.seed = std::random_device{}();
    change("Throw the Dice", wanted);
}

void EditableSettings::setSameMusicAtEveryStart(bool isOn)
{
    auto wanted = now();
    wanted.sameMusicAtEveryStart = isOn;
    change("Same Music at Every Start", wanted);
}

std::string EditableSettings::text() const
{
    return textFromState(stateFromSettings(now()));
}

std::string EditableSettings::paste(std::string_view text)
{
    const auto read = settingsFromText(text, now());
    if (!read.settings)
        return "The clipboard holds no settings: " + read.error + ".";
    change("Paste", *read.settings);
    return {};
}

} // namespace velotrine
