#pragma once

#include "audiounit/UndoHistory.h"
#include "platform/AUAudioUnit.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace velotrine {

/// How the settings of an instrument are read, and written as an edit of the user's.
struct SettingsAccess
{
    std::function<Settings()> read;

    /// Writes what differs between the two.
    std::function<void(const Settings& from, const Settings& to)> write;

    /// For a unit of whose edits nobody else is told.
    /// @param unit  the present one, or none
    [[nodiscard]] static SettingsAccess of(const std::function<std::shared_ptr<AUAudioUnit>()>& unit);
};

/// What the choice of a preset is called where it can be undone.
[[nodiscard]] std::string presetStepName(const std::string& preset);

/// An instrument's settings as a person edits them: each edit is a step that can be taken back, and all of
/// them together come and go as text. Main thread.
class EditableSettings
{
public:
    /// @param undoHistory  may outlive this, and be shared with the next
    EditableSettings(SettingsAccess settingsAccess, std::shared_ptr<UndoHistory> undoHistory);

    /// Told when a whole has come in place of another, rather than one control's value.
    std::function<void()> onReplaced;

    [[nodiscard]] Settings now() const { return access.read(); }

    /// Notes an edit that a control has made.
    void noteEdit(ParameterAddress address, float before, float after);

    /// Sets all that differs, and makes one step of it.
    /// @param name  for "Undo ..."
    void change(const std::string& name, const Settings& wanted);

    /// Makes one step of whatever the action does, where nobody else writes at the same time.
    void changeBy(const std::string& name, const std::function<void()>& action);

    /// What undo() and redo() would do; empty for nothing.
    [[nodiscard]] std::string undoName() const { return history->undoName(now()); }

    [[nodiscard]] std::string redoName() const { return history->redoName(now()); }

    void undo();
    void redo();

    // Edits of what has no control.

    void choosePreset(std::size_t number);
    void setSeed(std::uint32_t seed);

    /// Another seed, by chance.
    void throwDice();

    void setSameMusicAtEveryStart(bool isOn);

    // As text.

    /// All of them as a state.
    [[nodiscard]] std::string text() const;

    /// Takes a state's text. Where it is none, nothing changes, and the result says in a sentence why.
    [[nodiscard]] std::string paste(std::string_view text);

private:
    void replace(const Settings& before, const Settings& wanted) const;

    SettingsAccess access;
    std::shared_ptr<UndoHistory> history;
};

} // namespace velotrine
