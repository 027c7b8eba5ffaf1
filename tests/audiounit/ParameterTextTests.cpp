#include "audiounit/ParameterText.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

const ParameterInfo& named(const char* identifier)
{
    return *parameterWithIdentifier(identifier);
}

/// Evenly over the range and a little beyond it.
std::vector<float> manyValuesOf(const ParameterInfo& info)
{
    constexpr int steps = 2000;
    const float range = info.maxValue - info.minValue;
    std::vector<float> values{info.initialValue};
    for (int i = -100; i <= steps + 100; ++i)
        values.push_back(info.minValue + range * static_cast<float>(i) / steps);
    return values;
}

/// Half of the last digit that is shown.
float resolutionOf(const ParameterInfo& info)
{
    switch (info.kind) {
    case ParameterKind::amount:
    case ParameterKind::turns:
        return 0.00005001f;
    case ParameterKind::tempo:
        return 0.05001f;
    default:
        return 0.0f;
    }
}

TEST(ParameterText, ReadsBackWhatItWroteForEveryParameter)
{
    for (const auto& info : parameterTable()) {
        for (const float value : manyValuesOf(info)) {
            const auto text = parameterText(info, value);
            const auto back = parameterFromText(info, text);
            ASSERT_TRUE(back.has_value()) << info.identifier << ": " << text;
            ASSERT_EQ(parameterText(info, *back), text) << info.identifier << ": " << value;
            ASSERT_GE(*back, info.minValue) << info.identifier;
            ASSERT_LE(*back, info.maxValue) << info.identifier;
        }
    }
}

TEST(ParameterText, LosesNoMoreThanItsLastDigit)
{
    for (const auto& info : parameterTable()) {
        for (const float value : manyValuesOf(info)) {
            float expected = std::clamp(value, info.minValue, info.maxValue);
            if (info.kind == ParameterKind::toggle)
                expected = expected > 0.5f ? 1.0f : 0.0f;
            else if (info.isDiscrete())
                expected = std::trunc(expected);
            const auto back = parameterFromText(info, parameterText(info, value));
            ASSERT_NEAR(back.value_or(notANumber), expected, resolutionOf(info))
                << info.identifier << ": " << value;
        }
    }
}

TEST(ParameterText, ReadsAsAMusicianWouldSayIt)
{
    const std::vector<std::tuple<const char*, float, const char*>> examples{
        {"activity", 0.75f, "75 %"},
        {"volume", 1.0f, "100 %"},
        {"boredom", 0.3254f, "32.54 %"},
        {"calories", 0.001f, "0.1 %"},
        {"phaseR2", 0.1718f, "0.1718"},
        {"phaseR1", 0.25f, "0.25"},
        {"phaseR1", 1.0f, "1"},
        {"rootNote", 6.0f, "F#"},
        {"rootNote", 0.0f, "C"},
        {"rootNote", 11.0f, "B"},
        {"scaleType", 0.0f, "Major"},
        {"scaleType", 3.0f, "Minor Pentatonic"},
        {"bpm", 120.0f, "120.0"},
        {"bpm", 97.25f, "97.2"},
        {"sync", 1.0f, "On"},
        {"sync", 0.5f, "Off"},
        {"spotsR1", 4.0f, "4 spots"},
        {"spotsR1", 1.0f, "1 spot"},
        {"spotsR1", 1.9f, "1 spot"},
        {"spotsR5", 0.0f, "0 spots"},
        {"octaveR3", 3.0f, "3"},
        {"probR1", 0.648f, "64.8 %"},
    };
    for (const auto& [identifier, value, text] : examples)
        EXPECT_EQ(parameterText(named(identifier), value), text) << identifier;
}

TEST(ParameterText, ShowsAValueOutsideTheRangeAsTheNearestInside)
{
    EXPECT_EQ(parameterText(named("volume"), 1.5f), "100 %");
    EXPECT_EQ(parameterText(named("volume"), -1.0f), "0 %");
    EXPECT_EQ(parameterText(named("bpm"), 20.0f), "40.0");
    EXPECT_EQ(parameterText(named("rootNote"), 1e30f), "B");
    EXPECT_EQ(parameterText(named("scaleType"), -7.0f), "Major");
    EXPECT_EQ(parameterText(named("spotsR1"), 17.0f), "16 spots");
}

TEST(ParameterText, ShowsWhatIsNoNumberAsAQuestionMark)
{
    for (const auto& info : parameterTable())
        for (const float value : {notANumber, infinity, -infinity})
            EXPECT_EQ(parameterText(info, value), "?") << info.identifier;
}

TEST(ParameterText, ShowsNegativeZeroAsZero)
{
    EXPECT_EQ(parameterText(named("volume"), -0.0f), "0 %");
    EXPECT_EQ(parameterText(named("phaseR1"), -0.0f), "0");
    EXPECT_EQ(parameterText(named("spotsR1"), -0.0f), "0 spots");
    EXPECT_EQ(parameterText(named("octaveR1"), -0.0f), "0");
}

TEST(ParameterText, IsReadInUpperAndLowerCase)
{
    EXPECT_EQ(parameterFromText(named("rootNote"), "f#"), 6.0f);
    EXPECT_EQ(parameterFromText(named("scaleType"), "MINOR pentatonic"), 3.0f);
    EXPECT_EQ(parameterFromText(named("sync"), "on"), 1.0f);
    EXPECT_EQ(parameterFromText(named("sync"), "OFF"), 0.0f);
    EXPECT_EQ(parameterFromText(named("spotsR1"), "4 SPOTS"), 4.0f);
    EXPECT_EQ(parameterFromText(named("spotsR1"), "1 Spot"), 1.0f);
}

TEST(ParameterText, IsReadWithBlanksAroundItAndNoneBeforeTheUnit)
{
    EXPECT_EQ(parameterFromText(named("volume"), " \t75 % "), 0.75f);
    EXPECT_EQ(parameterFromText(named("volume"), "75%"), 0.75f);
    EXPECT_EQ(parameterFromText(named("spotsR1"), "4spots"), 4.0f);
    EXPECT_EQ(parameterFromText(named("scaleType"), "  Minor "), 1.0f);
}

TEST(ParameterText, APlainNumberIsTheValueItself)
{
    EXPECT_EQ(parameterFromText(named("volume"), "0.75"), 0.75f);
    EXPECT_EQ(parameterFromText(named("volume"), "+0.75"), 0.75f);
    EXPECT_EQ(parameterFromText(named("volume"), ".5"), 0.5f);
    EXPECT_EQ(parameterFromText(named("rootNote"), "6"), 6.0f);
    EXPECT_EQ(parameterFromText(named("scaleType"), "2"), 2.0f);
    EXPECT_EQ(parameterFromText(named("sync"), "1"), 1.0f);
    EXPECT_EQ(parameterFromText(named("spotsR1"), "1.6e1"), 16.0f);
}

TEST(ParameterText, ANumberOutsideTheRangeIsGivenAsItStands)
{
    EXPECT_EQ(parameterFromText(named("volume"), "1.5"), 1.5f);
    EXPECT_EQ(parameterFromText(named("volume"), "150 %"), 1.5f);
    EXPECT_EQ(parameterFromText(named("bpm"), "-20"), -20.0f);
    EXPECT_EQ(parameterFromText(named("spotsR1"), "17 spots"), 17.0f);
}

TEST(ParameterText, GarbageIsRefusedForEveryParameter)
{
    for (const auto& info : parameterTable())
        for (const auto* const text : {"",
                                       " ",
                                       "?",
                                       "+",
                                       "-",
                                       "--1",
                                       "++1",
                                       "+-1",
                                       "-+1",
                                       "%",
                                       " %",
                                       "% 5",
                                       "spots",
                                       "four spots",
                                       "1,5",
                                       "1 2",
                                       "0x10",
                                       "1e",
                                       "1.2.3",
                                       "5 % %",
                                       "5 spots %",
                                       "5 spot spots",
                                       "5 quarters",
                                       "H",
                                       "Hb",
                                       "C##",
                                       "b#b",
                                       "Minor Pentatonics",
                                       "Minor  Pentatonic",
                                       "Onn",
                                       "true",
                                       "\n",
                                       "1\n"})
            EXPECT_EQ(parameterFromText(info, text), std::nullopt) << info.identifier << ": " << text;
}

TEST(ParameterText, AnotherParametersWordsAreRefused)
{
    EXPECT_EQ(parameterFromText(named("bpm"), "75 %"), std::nullopt);
    EXPECT_EQ(parameterFromText(named("volume"), "4 spots"), std::nullopt);
    EXPECT_EQ(parameterFromText(named("octaveR1"), "4 spots"), std::nullopt);
    EXPECT_EQ(parameterFromText(named("rootNote"), "Major"), std::nullopt);
    EXPECT_EQ(parameterFromText(named("scaleType"), "On"), std::nullopt);
    EXPECT_EQ(parameterFromText(named("spotsR1"), "On"), std::nullopt);
}

TEST(ParameterText, WhatNoFiniteValueHoldsIsRefusedForEveryParameter)
{
    for (const auto& info : parameterTable())
        for (const auto* const text : {"1e39", "-1e39", "1e41 %", "1e39 spots", "nan", "NaN", "inf", "-inf",
                                       "infinity", "INF", "nan(1)", "1e999", "-1e999", "nan %", "inf %",
                                       "1e999 %", "nan spots", "inf spots", "1e999 spots"})
            EXPECT_EQ(parameterFromText(info, text), std::nullopt) << info.identifier << ": " << text;
}

TEST(NumberFromText, ReadsAWholeTextAsADecimalNumber)
{
    EXPECT_EQ(numberFromText("0"), 0.0);
    EXPECT_EQ(numberFromText("-12.5"), -12.5);
    EXPECT_EQ(numberFromText("+12.5"), 12.5);
    EXPECT_EQ(numberFromText("1e-3"), 0.001);
    EXPECT_EQ(numberFromText("0.1"), 0.1);
}

TEST(NumberFromText, ReadsNothingElse)
{
    for (const auto* const text :
         {"", " 1", "1 ", "+", "+-1", "+ 1", "1,5", "0x1p3", "inf", "nan", "1e999", "abc"})
        EXPECT_EQ(numberFromText(text), std::nullopt) << text;
    EXPECT_EQ(numberFromText(std::string_view("1\0", 2)), std::nullopt);
    EXPECT_EQ(numberFromText({}), std::nullopt);
}

TEST(ShortestText, GivesEveryFiniteValueBackExactly)
{
    std::mt19937 random(1);
    for (int i = 0; i < 100000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (!std::isfinite(value))
            continue;
        const auto text = shortestText(value);
        float back = notANumber;
        std::from_chars(text.data(), text.data() + text.size(), back);
        ASSERT_EQ(std::bit_cast<std::uint32_t>(back), std::bit_cast<std::uint32_t>(value)) << text;
    }
}

TEST(ShortestText, WritesNoMoreDigitsThanItTakes)
{
    EXPECT_EQ(shortestText(0.7f), "0.7");
    EXPECT_EQ(shortestText(0.1718f), "0.1718");
    EXPECT_EQ(shortestText(120.0f), "120");
    EXPECT_EQ(shortestText(0.0f), "0");
    EXPECT_EQ(shortestText(0.1f + 0.2f), "0.3");
}

TEST(ParameterText, ARootMayBeSpelledWithASharpOrAFlat)
{
    const auto& root = named("rootNote");
    for (const auto& [text, value] : {std::pair{"Db", 1.0f},
                                      {"Eb", 3.0f},
                                      {"Gb", 6.0f},
                                      {"Ab", 8.0f},
                                      {"Bb", 10.0f},
                                      {"Cb", 11.0f},
                                      {"Fb", 4.0f},
                                      {"E#", 5.0f},
                                      {"B#", 0.0f},
                                      {"bb", 10.0f},
                                      {"B\u266D", 10.0f},
                                      {"f\u266F", 6.0f}})
        EXPECT_EQ(parameterFromText(root, text), value) << text;
    EXPECT_EQ(parameterFromText(root, ""), std::nullopt);
    EXPECT_EQ(parameterText(root, 10.0f), "A#") << "and is shown with a sharp";
}

TEST(ParameterText, AnAmountIsTypedInPercentOrFromZeroToOne)
{
    EXPECT_EQ(amountFromEntry("70"), 0.7f);
    EXPECT_EQ(amountFromEntry("70%"), 0.7f);
    EXPECT_EQ(amountFromEntry(" 0.5 % "), 0.005f);
    EXPECT_EQ(amountFromEntry("0.7"), 0.7f);
    EXPECT_EQ(amountFromEntry("1"), 1.0f);
    EXPECT_EQ(amountFromEntry("-2"), -2.0f);
    for (const auto* text : {"", "%", "loud", "7 spots", "nan", "1e999"})
        EXPECT_EQ(amountFromEntry(text), std::nullopt) << text;
}

} // namespace
} // namespace velotrine
