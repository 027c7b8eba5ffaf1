#pragma once

#include "audiounit/Parameters.h"

#include <optional>
#include <string>
#include <string_view>

namespace velotrine {

/// A value as a musician reads it: "F#", "Minor Pentatonic", "120.0", "4 spots", "75 %", "On".
[[nodiscard]] std::string parameterText(const ParameterInfo& parameter, float value);

/// Reads such a text back, or a plain number as the value itself; upper and lower case are alike. None for a
/// text that is neither. A number outside the parameter's range is given as it stands.
[[nodiscard]] std::optional<float> parameterFromText(const ParameterInfo& parameter, std::string_view text);

/// Reads an amount that somebody typed where a percentage stood: 70, "70 %" and 0.7 are the same. None for a
/// text that is no number. A number outside 0 to 1 is given as it stands.
[[nodiscard]] std::optional<float> amountFromEntry(std::string_view text);

/// Reads a whole text as a decimal number, in the C locale whatever the user's. None if it is anything else.
[[nodiscard]] std::optional<double> numberFromText(std::string_view text);

/// A number with `digits` digits behind the decimal point, which is a point in every locale.
[[nodiscard]] std::string fixedText(double value, int digits);

/// A value in as few digits as give it back exactly.
[[nodiscard]] std::string shortestText(float value);

} // namespace velotrine
