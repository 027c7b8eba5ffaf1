#pragma once

#include "takes/Take.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velotrine {

/// A text larger than this, in MiB, is refused.
inline constexpr std::size_t maxTakeMebibytes = 64;

/// How the names of files with takes end.
inline constexpr std::string_view takeFileEnding = ".velotrine-take";

/// Writes a take as JSON, version 1, a change a line: the same text for the same take. What is read back is
/// the same take. Values must be finite.
[[nodiscard]] std::string textFromTake(const Take& take);

/// A take, or a sentence that says what is wrong with the text and where.
struct TakeReading
{
    std::optional<Take> take;
    std::string error;
};

/// Reads such a text, as written by this program or by a person. What a start does not say is as an
/// instrument is made. Values beyond their range are brought to its nearest end. Strict about all else: names
/// that are not known, what is missing or of another type, times that run backwards, more than
/// Take::maxChanges. Never throws for what the text says.
[[nodiscard]] TakeReading takeFromText(std::string_view text);

} // namespace velotrine
