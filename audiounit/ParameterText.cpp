#include "audiounit/ParameterText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <span>
#include <system_error>

namespace velotrine {

namespace {

constexpr double percent = 100.0;

std::string_view trimmed(std::string_view text)
{
    constexpr auto blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The text without the unit at its end, if it ends so.
std::optional<std::string_view> withoutSuffix(std::string_view text, std::string_view suffix)
{
    if (text.size() <= suffix.size() || !equalIgnoringCase(text.substr(text.size() - suffix.size()), suffix))
        return std::nullopt;
    return trimmed(text.substr(0, text.size() - suffix.size()));
}

std::optional<float> indexOf(std::span<const std::string_view> names, std::string_view text)
{
    const auto found =
        std::ranges::find_if(names, [text](auto name) { return equalIgnoringCase(name, text); });
    if (found == names.end())
        return std::nullopt;
    return static_cast<float>(found - names.begin());
}

/// A pitch class by any of its names: a letter, and a sharp or a flat behind it.
std::optional<float> rootFromText(std::string_view text)
{
    const auto natural = indexOf(rootNames, text.substr(0, 1));
    const auto accidental = text.substr(std::min<std::size_t>(1, text.size()));
    if (!natural)
        return std::nullopt;
    if (accidental.empty())
        return natural;
    const auto octave = static_cast<float>(rootNames.size());
    if (accidental == "#" || accidental == "\u266F")
        return std::fmod(*natural + 1.0f, octave);
    if (accidental == "b" || accidental == "\u266D")
        return std::fmod(*natural + octave - 1.0f, octave);
    return std::nullopt;
}

std::string nameAt(std::span<const std::string_view> names, float value)
{
    const auto last = static_cast<float>(names.size() - 1);
    return std::string(names[static_cast<std::size_t>(std::clamp(value, 0.0f, last))]);
}

/// With at most `digits` digits behind the point, and no zeros at the end.
std::string upTo(double value, int digits)
{
    auto text = fixedText(value, digits);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.'))
        text.pop_back();
    return text;
}

/// None for a number too large for a float.
std::optional<float> floatFrom(double number)
{
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
        return std::nullopt;
    return static_cast<float>(number);
}

template <typename Number>
std::string shortestDigits(Number value)
{
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

constexpr std::array<std::string_view, 2> toggleNames{"Off", "On"};

} // namespace

std::string parameterText(const ParameterInfo& parameter, float value)
{
    if (!std::isfinite(value))
        return "?";
    // Adding zero makes -0 a plain 0.
    const auto number = static_cast<double>(std::clamp(value, parameter.minValue, parameter.maxValue)) + 0.0;
    const auto bounded = static_cast<float>(number);
    switch (parameter.kind) {
    case ParameterKind::amount:
        return upTo(number * percent, 2) + " %";
    case ParameterKind::turns:
        return upTo(number, 4);
    case ParameterKind::root:
        return nameAt(rootNames, bounded);
    case ParameterKind::scale:
        return nameAt(scaleNames, bounded);
    case ParameterKind::tempo:
        return fixedText(number, 1);
    case ParameterKind::toggle:
        return std::string(toggleNames[bounded > 0.5f ? 1 : 0]);
    case ParameterKind::spots:
        return fixedText(std::trunc(number), 0) + (std::trunc(number) == 1.0 ? " spot" : " spots");
    case ParameterKind::octave:
        return fixedText(std::trunc(number), 0);
    }
    return {};
}

std::optional<float> parameterFromText(const ParameterInfo& parameter, std::string_view text)
{
    text = trimmed(text);
    if (const auto number = numberFromText(text))
        return floatFrom(*number);

    switch (parameter.kind) {
    case ParameterKind::amount:
        if (const auto amount = withoutSuffix(text, "%"))
            if (const auto number = numberFromText(*amount))
                return floatFrom(*number / percent);
        return std::nullopt;
    case ParameterKind::root:
        return rootFromText(text);
    case ParameterKind::scale:
        return indexOf(scaleNames, text);
    case ParameterKind::toggle:
        return indexOf(toggleNames, text);
    case ParameterKind::spots:
        for (const auto* const unit : {"spots", "spot"})
            if (const auto count = withoutSuffix(text, unit))
                if (const auto number = numberFromText(*count))
                    return floatFrom(*number);
        return std::nullopt;
    case ParameterKind::turns:
    case ParameterKind::tempo:
    case ParameterKind::octave:
        return std::nullopt;
    }
    return std::nullopt;
}

std::optional<float> amountFromEntry(std::string_view text)
{
    const auto inPercent = withoutSuffix(trimmed(text), "%");
    const auto number = numberFromText(inPercent.value_or(trimmed(text)));
    if (!number)
        return std::nullopt;
    return floatFrom(inPercent || *number > 1.0 ? *number / percent : *number);
}

std::optional<double> numberFromText(std::string_view text)
{
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

std::string fixedText(double value, int digits)
{
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, digits).ptr;
    return {text.data(), end};
}

std::string shortestText(float value)
{
    return shortestDigits(value);
}

std::string shortestText(double value)
{
    return shortestDigits(value);
}

} // namespace velotrine
