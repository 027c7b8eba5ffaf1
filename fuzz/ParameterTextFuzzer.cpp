// Texts that somebody types for a parameter's value, in whatever face of the instrument: the first byte says
// for which parameter.

#include "audiounit/ParameterText.h"
#include "fuzz/Demand.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velotrine {
namespace {

void checkAmount(std::string_view text)
{
    const auto amount = amountFromEntry(text);
    demand(!amount || std::isfinite(*amount), "an amount is finite");
}

void check(const ParameterInfo& parameter, std::string_view text)
{
    const auto read = parameterFromText(parameter, text);
    if (!read)
        return;
    demand(std::isfinite(*read), "a value is finite");
    const auto bounded = std::clamp(*read, parameter.minValue, parameter.maxValue);
    const auto shown = parameterText(parameter, bounded);
    const auto again = parameterFromText(parameter, shown);
    demand(again.has_value(), "what is shown can be typed");
    // As many digits as are shown.
    demand(parameterText(parameter, *again) == shown, "what is typed as it is shown is shown alike");
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    velotrine::checkAmount(text);
    velotrine::check(velotrine::parameterTable()[data[0] % velotrine::parameterCount], text);
    return 0;
}
