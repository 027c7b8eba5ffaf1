#pragma once

#include "audiounit/Settings.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velotrine {

/// Settings from outside, or a sentence that says why there are none.
struct SettingsReading
{
    std::optional<Settings> settings;
    bool areOfATake = false; ///< they are how a take begins
    std::string error;
};

/// Reads a state's text. What it does not name of the parameters stays as in the base. Never throws for what
/// the text says.
[[nodiscard]] SettingsReading settingsFromText(std::string_view text, const Settings& base);

/// Reads a file with a state, or with a take, of which it takes the beginning.
[[nodiscard]] SettingsReading settingsFromFile(const std::filesystem::path& path, const Settings& base);

/// Writes them as a state, to a file that is whole or as it was before. Throws WorkError.
void writeSettings(const Settings& settings, const std::string& path);

} // namespace velotrine
