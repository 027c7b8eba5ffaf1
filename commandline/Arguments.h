#pragma once

#include <string>
#include <string_view>

namespace velotrine {

[[nodiscard]] std::string inQuotes(std::string_view text);

/// What an option's number may be, and how to say it.
struct NumberRule
{
    const char* option;
    double min;
    double max;
    bool wholeOnly;
    const char* expected; ///< what to give instead
};

/// Throws UsageError for a text that is not such a number.
[[nodiscard]] double numberArgument(const NumberRule& rule, const std::string& text);

/// A whole number of frames from 1 to 8192, or UsageError.
[[nodiscard]] int framesArgument(const char* option, const std::string& text);

/// A whole number of Hz from 8000 to 768000, or UsageError.
[[nodiscard]] int sampleRateArgument(const char* option, const std::string& text);

/// A message can quote what was typed, or what is in a file: whatever that is, it stays one line of bearable
/// length, and does nothing to the terminal.
[[nodiscard]] std::string asOneLine(std::string message);

} // namespace velotrine
