#include "audiounit/StateText.h"

#include "tests/support/TestInstrument.h"

#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::HasSubstr;

/// As every face does it: what cannot be read changes nothing.
std::string restore(AUAudioUnit& unit, std::string_view text)
{
    const auto read = stateFromText(text);
    if (read.state)
        unit.setFullState(*read.state);
    return read.error;
}

std::string withParameters(const std::string& parameters)
{
    return R"({"version": 1, "preset": null, "parameters": )" + parameters + "}";
}

std::string withPreset(const std::string& preset)
{
    return R"({"version": 1, "preset": )" + preset + R"(, "parameters": {}})";
}

class StateTextOfAnInstrument : public testing::Test
{
protected:
    std::shared_ptr<VelotrineAudioUnit> unit = makeInstrument();
};

TEST_F(StateTextOfAnInstrument, IsTheSameAfterReadingAndWritingForEveryPreset)
{
    for (const auto& preset : unit->factoryPresets()) {
        unit->setCurrentPreset(preset);
        const auto state = unit->fullState();
        const auto text = textFromState(state);
        const auto read = stateFromText(text);
        ASSERT_TRUE(read.state.has_value()) << read.error;
        EXPECT_EQ(read.error, "");
        EXPECT_EQ(*read.state, state) << preset.name;
        EXPECT_EQ(textFromState(*read.state), text) << preset.name;
    }
}

TEST_F(StateTextOfAnInstrument, IsTheSameAfterReadingAndWritingForAnyFiniteValues)
{
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        AUFullState state = unit->fullState();
        for (auto& [identifier, value] : state.parameters) {
            do {
                value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
            } while (!std::isfinite(value));
        }
        const auto text = textFromState(state);
        const auto read = stateFromText(text);
        ASSERT_TRUE(read.state.has_value()) << read.error;
        ASSERT_EQ(*read.state, state);
        ASSERT_EQ(textFromState(*read.state), text);
    }
}

TEST_F(StateTextOfAnInstrument, IsTheSameForTheSameStateAndDiffersForAnother)
{
    const auto text = textFromState(unit->fullState());
    EXPECT_EQ(textFromState(makeInstrument()->fullState()), text);
    setValue(*unit, "timbreR5", 0.50001f);
    EXPECT_NE(textFromState(unit->fullState()), text);
}

TEST_F(StateTextOfAnInstrument, BringsAnInstrumentBack)
{
    selectPreset(*unit, 8);
    setValue(*unit, "boredom", 0.123f);
    const auto text = textFromState(unit->fullState());
    const auto other = makeInstrument();
    EXPECT_EQ(restore(*other, text), "");
    EXPECT_EQ(valuesOf(*other->dspKernel), valuesOf(*unit->dspKernel));
    EXPECT_EQ(other->currentPreset(), unit->currentPreset());
}

TEST_F(StateTextOfAnInstrument, RestoresThePresetWithoutItsValues)
{
    const auto before = valuesOf(*unit->dspKernel);
    EXPECT_EQ(restore(*unit, withPreset(R"({"number": 6, "name": "Wobbly Bits"})")), "");
    EXPECT_EQ(unit->currentPreset(), (AUAudioUnitPreset{6, "Wobbly Bits"}));
    EXPECT_EQ(valuesOf(*unit->dspKernel), before);
}

TEST_F(StateTextOfAnInstrument, WithoutAPresetClearsIt)
{
    selectPreset(*unit, 6);
    EXPECT_EQ(restore(*unit, withPreset("null")), "");
    EXPECT_EQ(unit->currentPreset(), std::nullopt);
    selectPreset(*unit, 6);
    EXPECT_EQ(restore(*unit, R"({"version": 1, "parameters": {}})"), "");
    EXPECT_EQ(unit->currentPreset(), std::nullopt);
}

TEST_F(StateTextOfAnInstrument, TakesAnyPresetNumberOf64Bits)
{
    for (const auto number : {INT64_MIN, std::int64_t{-1}, std::int64_t{12}, INT64_MAX}) {
        const AUFullState state{{}, AUAudioUnitPreset{number, "Mine"}};
        EXPECT_EQ(stateFromText(textFromState(state)).state, state) << number;
    }
}

TEST_F(StateTextOfAnInstrument, IgnoresUnknownIdentifiersAndKeepsWhatIsMissing)
{
    setValue(*unit, "boredom", 0.125f);
    EXPECT_EQ(restore(*unit, withParameters(R"({"volume": 0.25, "swing": 0.5, "Activity": 0.75, "": 1})")),
              "");
    auto expected = valuesOf(*makeInstrument()->dspKernel);
    expected[1] = 0.125f;
    expected[7] = 0.25f;
    EXPECT_EQ(valuesOf(*unit->dspKernel), expected);
}

TEST_F(StateTextOfAnInstrument, IgnoresMembersItDoesNotKnow)
{
    EXPECT_EQ(restore(*unit, R"({"author": ["me", {"a": null}], "version": 1, "preset": {"number": 1,
                                "name": "Drum Circle", "colour": "red"}, "parameters": {"volume": 0.25}})"),
              "");
    EXPECT_EQ(valueOf(*unit, "volume"), 0.25f);
    EXPECT_EQ(unit->currentPreset(), (AUAudioUnitPreset{1, "Drum Circle"}));
}

TEST_F(StateTextOfAnInstrument, BoundsValuesOutOfRange)
{
    EXPECT_EQ(
        restore(*unit, withParameters(R"({"volume": 1e39, "bpm": -5, "spotsR1": 1e300, "octaveR1": -1e39,
                                               "rootNote": 99999999999999999999999, "activity": -0.001})")),
        "");
    EXPECT_EQ(valueOf(*unit, "volume"), 1.0f);
    EXPECT_EQ(valueOf(*unit, "bpm"), 40.0f);
    EXPECT_EQ(valueOf(*unit, "spotsR1"), 16.0f);
    EXPECT_EQ(valueOf(*unit, "octaveR1"), 0.0f);
    EXPECT_EQ(valueOf(*unit, "rootNote"), 11.0f);
    EXPECT_EQ(valueOf(*unit, "activity"), 0.0f);
}

TEST_F(StateTextOfAnInstrument, TakesWholeNumbersAsValues)
{
    EXPECT_EQ(restore(*unit, withParameters(R"({"volume": 1, "bpm": 90, "sync": 0})")), "");
    EXPECT_EQ(valueOf(*unit, "volume"), 1.0f);
    EXPECT_EQ(valueOf(*unit, "bpm"), 90.0f);
    EXPECT_EQ(valueOf(*unit, "sync"), 0.0f);
}

TEST_F(StateTextOfAnInstrument, OfARepeatedIdentifierTakesTheLastValue)
{
    EXPECT_EQ(restore(*unit, withParameters(R"({"volume": 0.25, "volume": 0.75})")), "");
    EXPECT_EQ(valueOf(*unit, "volume"), 0.75f);
}

struct Refused
{
    std::string text;
    std::vector<std::string> saying;
};

class RefusedStateText : public StateTextOfAnInstrument
{
protected:
    /// Each is refused with a sentence that has all the words, and nothing changes.
    void expectRefused(const std::vector<Refused>& all)
    {
        selectPreset(*unit, 4);
        int changes = 0;
        const auto token = unit->parameterTree()->tokenByAddingParameterObserver(
            [&changes](AUParameterAddress, AUValue) { ++changes; });
        const auto before = unit->fullState();
        for (const auto& refused : all) {
            SCOPED_TRACE(refused.text.substr(0, 200));
            EXPECT_FALSE(stateFromText(refused.text).state.has_value());
            const auto error = restore(*unit, refused.text);
            EXPECT_NE(error, "");
            for (const auto& words : refused.saying)
                EXPECT_THAT(error, HasSubstr(words));
        }
        EXPECT_EQ(unit->fullState(), before);
        EXPECT_EQ(changes, 0);
        unit->parameterTree()->removeParameterObserver(token);
    }
};

TEST_F(RefusedStateText, ThatIsNotJsonSaysWhereItGoesWrong)
{
    expectRefused({
        {"", {"JSON", "line 1"}},
        {"   \n", {"JSON", "line 2"}},
        {"velotrine", {"JSON", "line 1", "column 1"}},
        {"{\n  \"version\": 1,\n  \"preset\": nil\n}", {"JSON", "line 3", "column 14"}},
        {"{\"version\": 1", {"JSON", "line 1"}},
        {"{\"version\": 1,}", {"JSON", "line 1", "column 15"}},
        {"{'version': 1}", {"JSON", "line 1", "column 2"}},
        {"{\"version\": 1} // mine", {"JSON", "line 1", "column 16"}},
        {"\"\xFF\"", {"JSON", "line 1", "column 2"}},
        {std::string(1, '\0'), {"JSON", "line 1"}},
    });
}

TEST_F(RefusedStateText, WithSomethingBehindItSaysWhere)
{
    const auto good = textFromState(unit->fullState());
    expectRefused({
        {good + "x", {"JSON", "line 46", "column 1"}},
        {good + good, {"JSON", "line 46", "column 1"}},
        {good + std::string(1, '\0') + "x", {"JSON", "line 46", "column 1"}},
        {std::string("{}") + '\0', {"JSON", "line 1", "column 3"}},
    });
}

TEST_F(RefusedStateText, WithAValueThatIsNoNumberSaysWhich)
{
    expectRefused({
        {withParameters(R"({"volume": NaN})"), {"JSON", "line 1", "column 57"}},
        {withParameters(R"({"volume": Infinity})"), {"JSON", "line 1", "column 57"}},
        {withParameters(R"({"volume": -Infinity})"), {"JSON", "line 1", "column 58"}},
        {withParameters(R"({"volume": 0x1})"), {"JSON", "line 1"}},
        {withParameters(R"({"volume": .5})"), {"JSON", "line 1"}},
        {withParameters(R"({"volume": 1e999})"), {"1e999"}},
        {withParameters(R"({"volume": -1e999})"), {"-1e999"}},
    });
}

TEST_F(RefusedStateText, OfTheWrongTypeSaysWhatIsWantedWhere)
{
    expectRefused({
        {"[]", {"JSON object"}},
        {"null", {"JSON object"}},
        {"1", {"JSON object"}},
        {"\"version\"", {"JSON object"}},
        {R"({"version": 1})", {"\"parameters\"", "missing"}},
        {withParameters("null"), {"\"parameters\"", "object"}},
        {withParameters("[0.5]"), {"\"parameters\"", "object"}},
        {withParameters("0.5"), {"\"parameters\"", "object"}},
        {withParameters(R"({"volume": "0.5"})"), {"\"volume\"", "\"parameters\"", "number"}},
        {withParameters(R"({"volume": null})"), {"\"volume\"", "number"}},
        {withParameters(R"({"volume": true})"), {"\"volume\"", "number"}},
        {withParameters(R"({"volume": 0.5, "timbreR3": [0.5]})"), {"\"timbreR3\"", "number"}},
        {withParameters(R"({"volume": {"value": 0.5}})"), {"\"volume\"", "number"}},
        {withPreset("6"), {"\"preset\"", "object or null"}},
        {withPreset("\"Default\""), {"\"preset\"", "object or null"}},
        {withPreset("[]"), {"\"preset\"", "object or null"}},
        {withPreset(R"({"name": "Default"})"), {"\"number\"", "missing", "\"preset\""}},
        {withPreset(R"({"number": 0})"), {"\"name\"", "missing"}},
        {withPreset(R"({"number": "0", "name": "Default"})"), {"\"number\"", "\"preset\"", "whole number"}},
        {withPreset(R"({"number": 0.5, "name": "Default"})"), {"\"number\"", "\"preset\"", "whole number"}},
        {withPreset(R"({"number": null, "name": "Default"})"), {"\"number\"", "\"preset\"", "whole number"}},
        {withPreset(R"({"number": 9223372036854775808, "name": "Default"})"), {"\"number\"", "whole number"}},
        {withPreset(R"({"number": 0, "name": 5})"), {"\"name\"", "text"}},
        {withPreset(R"({"number": 0, "name": null})"), {"\"name\"", "text"}},
    });
}

TEST_F(RefusedStateText, OfAnotherVersionSaysWhich)
{
    expectRefused({
        {R"({"parameters": {}})", {"\"version\"", "missing"}},
        {"{}", {"\"version\"", "missing"}},
        {R"({"version": 2, "parameters": {}})", {"\"version\"", "2", "1"}},
        {R"({"version": 0, "parameters": {}})", {"\"version\"", "0", "1"}},
        {R"({"version": -1, "parameters": {}})", {"\"version\"", "-1"}},
        {R"({"version": 18446744073709551615, "parameters": {}})", {"\"version\"", "18446744073709551615"}},
        {R"({"version": 18446744073709551617, "parameters": {}})", {"\"version\"", "whole number"}},
        {R"({"version": 1.5, "parameters": {}})", {"\"version\"", "whole number"}},
        {R"({"version": "1", "parameters": {}})", {"\"version\"", "whole number"}},
        {R"({"version": true, "parameters": {}})", {"\"version\"", "whole number"}},
        {R"({"version": null, "parameters": {}})", {"\"version\"", "whole number"}},
    });
}

TEST_F(RefusedStateText, OverOneMebibyteSaysSo)
{
    const auto good = textFromState(unit->fullState());
    EXPECT_EQ(restore(*unit, good + std::string(maxStateBytes - good.size(), ' ')), "");
    expectRefused({{good + std::string(maxStateBytes - good.size() + 1, ' '), {"1 MiB"}}});
}

TEST_F(RefusedStateText, SaysSoInASentenceHoweverLongTheTextIs)
{
    const std::string longText(maxStateBytes / 2, 'x');
    for (const auto& text : {"\"" + longText, "{\"version\": " + std::string(maxStateBytes / 2, '1') + "e9}",
                             withParameters("{\"" + longText + "\": null}"),
                             withParameters("{\"\xC3\xA4" + longText + "\": null}")}) {
        const auto error = stateFromText(text).error;
        EXPECT_NE(error, "");
        EXPECT_LT(error.size(), 400U);
    }
}

TEST_F(RefusedStateText, IsQuotedInValidUtf8)
{
    std::string manyUmlauts = "x";
    for (int i = 0; i < 100; ++i)
        manyUmlauts += "\xC3\xA4";
    const auto quoted = stateFromText(withParameters("{\"" + manyUmlauts + "\": null}")).error;
    const auto invalid = stateFromText("\"\xC3").error;
    for (const auto& error : {quoted, invalid}) {
        const AUFullState asName{{}, AUAudioUnitPreset{0, error}};
        EXPECT_EQ(stateFromText(textFromState(asName)).state, asName) << error;
    }
}

TEST_F(RefusedStateText, NestedAsDeepAsFitsDoesNotBringTheProgramDown)
{
    const std::string opened(maxStateBytes / 2, '[');
    const std::string closed(maxStateBytes / 2, ']');
    expectRefused({{opened, {"JSON"}}, {opened + closed, {"JSON object"}}});
}

TEST(StateText, WritesAPresetNameOfInvalidUtf8WithReplacements)
{
    const AUFullState state{{{"volume", 0.5f}}, AUAudioUnitPreset{-1, "M\xFFy \xC3"}};
    std::string text;
    ASSERT_NO_THROW(text = textFromState(state));
    const auto read = stateFromText(text);
    ASSERT_TRUE(read.state.has_value()) << read.error;
    EXPECT_EQ(read.state->currentPreset, (AUAudioUnitPreset{-1, "M\xEF\xBF\xBDy \xEF\xBF\xBD"}));
    EXPECT_EQ(textFromState(*read.state), text);
}

TEST(StateText, KeepsAPresetNameOfAnyCharacters)
{
    const AUFullState state{{}, AUAudioUnitPreset{-1, "\"Trillers\\\" \n\t\x01 \xC3\xA4 \xF0\x9F\x8E\xB5"}};
    const auto read = stateFromText(textFromState(state));
    ASSERT_TRUE(read.state.has_value()) << read.error;
    EXPECT_EQ(*read.state, state);
}

TEST(StateText, ListsKnownParametersInTheTreesOrderWhateverTheOrderOfTheText)
{
    const auto read =
        stateFromText(withParameters(R"({"zebra": 3, "timbreR5": 1, "activity": 0.5, "ant": 2, "bpm": 90})"));
    ASSERT_TRUE(read.state.has_value()) << read.error;
    const std::vector<std::pair<std::string, float>> expected{
        {"activity", 0.5f}, {"bpm", 90.0f}, {"timbreR5", 1.0f}, {"ant", 2.0f}, {"zebra", 3.0f}};
    EXPECT_EQ(read.state->parameters, expected);
}

TEST(StateText, LeavesOutAValueThatItCouldNotReadBack)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const auto text = textFromState(
        {{{"activity", std::numeric_limits<float>::quiet_NaN()}, {"bpm", infinity}, {"volume", 0.5f}}, {}});
    const auto read = stateFromText(text);
    ASSERT_TRUE(read.state.has_value()) << read.error;
    EXPECT_EQ(*read.state, (AUFullState{{{"volume", 0.5f}}, {}}));
}

/// Overwrites, inserts, deletes and repeats bytes at random places.
std::string damaged(std::string text, std::mt19937& random)
{
    constexpr std::string_view telling = "{}[]\",:\\0123456789.eE+-nul \n";
    const auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
    const auto anyByte = [&] {
        return below(2) == 0 ? static_cast<char>(below(256)) : telling[below(telling.size())];
    };
    for (auto edits = 1 + below(4); edits > 0 && !text.empty(); --edits) {
        const auto at = below(text.size());
        switch (below(5)) {
        case 0:
            text[at] = anyByte();
            break;
        case 1:
            text[at] = static_cast<char>(static_cast<unsigned char>(text[at]) ^ (1U << below(8)));
            break;
        case 2:
            text.insert(at, 1, anyByte());
            break;
        case 3:
            text.erase(at, 1 + below(20));
            break;
        default:
            text.insert(at, text.substr(below(text.size()), 1 + below(40)));
        }
    }
    return text;
}

TEST(StateText, DamagedAnywhereIsEitherReadOrRefusedWithAReason)
{
    const auto unit = makeInstrument();
    selectPreset(*unit, 6);
    const auto text = textFromState(unit->fullState());
    std::mt19937 random(3);
    int read = 0;
    int refused = 0;
    for (int round = 0; round < 5000; ++round) {
        const auto broken = damaged(text, random);
        const auto result = stateFromText(broken);
        ASSERT_NE(result.state.has_value(), !result.error.empty()) << broken;
        if (!result.state) {
            ++refused;
            continue;
        }
        ++read;
        unit->setFullState(*result.state);
        for (const auto& parameter : unit->parameterTree()->allParameters()) {
            ASSERT_GE(parameter->value(), parameter->minValue()) << broken;
            ASSERT_LE(parameter->value(), parameter->maxValue()) << broken;
        }
        ASSERT_TRUE(stateFromText(textFromState(unit->fullState())).state.has_value()) << broken;
    }
    EXPECT_GT(read, 100);
    EXPECT_GT(refused, 1000);
}

} // namespace
} // namespace velotrine
