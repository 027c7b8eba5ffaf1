#pragma once

#include <string>

namespace velotrine {

/// What made a piece, in a line for the comment in a file: this program, its version, and the settings.
/// @param stateText  as textFromState() writes it
[[nodiscard]] std::string originText(const std::string& stateText);

/// The settings that the comment in a WAV, FLAC or MIDI file tells, as textFromState() writes them. Throws
/// UsageError for a file that cannot be read, and for one that this program has not made.
[[nodiscard]] std::string stateTextIn(const std::string& path);

} // namespace velotrine
