#include "commandline/Arguments.h"

#include "audiounit/ParameterText.h"
#include "audiounit/SampleRateRange.h"
#include "commandline/Errors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace velotrine {

std::string inQuotes(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

double numberArgument(const NumberRule& rule, const std::string& text)
{
    const auto value = numberFromText(text);
    const bool right = value && *value >= rule.min && *value <= rule.max &&
                       (!rule.wholeOnly || *value == std::floor(*value));
    if (!right)
        throw UsageError(rule.option, inQuotes(text) + " will not do; give " + rule.expected);
    return *value;
}

int framesArgument(const char* option, const std::string& text)
{
    constexpr double maxFrames = 8192.0;
    return static_cast<int>(
        numberArgument({option, 1.0, maxFrames, true, "a whole number of frames from 1 to 8192"}, text));
}

int sampleRateArgument(const char* option, const std::string& text)
{
    return static_cast<int>(numberArgument(
        {option, lowestSampleRate, highestSampleRate, true, "a whole number of Hz from 8000 to 768000"},
        text));
}

std::string asOneLine(std::string message)
{
    constexpr std::size_t longest = 1000;
    constexpr std::size_t keptEnd = 200;
    constexpr std::string_view gap = " ... ";
    if (message.size() > longest)
        message.replace(longest - gap.size() - keptEnd, message.size() - longest + gap.size(), gap);
    std::ranges::replace_if(
        message, [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    return message;
}

} // namespace velotrine
