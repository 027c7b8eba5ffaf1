#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace velotrine {

/// The files with an ending (".wav") that a user's application has kept.
[[nodiscard]] std::vector<std::filesystem::path> keptTakes(const std::filesystem::path& home,
                                                           const std::string& ending);

/// The left channel of a sound file; empty if it cannot be read.
/// @param sampleRate  is told the file's, in Hz
[[nodiscard]] std::vector<float> leftOf(const std::filesystem::path& path, int* sampleRate);

} // namespace velotrine
