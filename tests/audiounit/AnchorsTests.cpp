#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "audiounit/StateText.h"
#include "audiounit/VelotrineComponent.h"
#include "tests/support/TestInstrument.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

// What sessions, hosts and other people's programs rely on. A value that differs here is a break with all of
// them, not a test to be brought up to date.

namespace velotrine {
namespace {

using Unit = AudioUnitParameterUnit;

struct AnchoredParameter
{
    AUParameterAddress address;
    std::string_view identifier;
    std::string_view name;
    float minValue;
    float maxValue;
    Unit unit;
    std::uint32_t flags;
    float initialValue;
};

constexpr std::array<AnchoredParameter, 39> anchoredParameters{{
    {0, "activity", "Activity", 0, 1, Unit::generic, 0xC2000000, 0.5f},
    {1, "boredom", "Boredom", 0, 1, Unit::generic, 0xC2000000, 0.5f},
    {2, "calories", "Calories", 0, 1, Unit::generic, 0xC2000000, 0.5f},
    {3, "drudgery", "Drudgery", 0, 1, Unit::generic, 0xC2000000, 0.5f},
    {4, "rootNote", "Root Note", 0, 11, Unit::indexed, 0xC0000000, 0},
    {5, "scaleType", "Scale", 0, 3, Unit::indexed, 0xC0000000, 0},
    {6, "bpm", "BPM", 40, 300, Unit::bpm, 0xC0000000, 120},
    {7, "volume", "Volume", 0, 1, Unit::generic, 0xC2000000, 0.8f},
    {8, "sync", "Sync", 0, 1, Unit::boolean, 0xC0000000, 1},
    {9, "spotsR1", "Spots R1", 0, 16, Unit::indexed, 0xC0000000, 4},
    {10, "spotsR2", "Spots R2", 0, 16, Unit::indexed, 0xC0000000, 5},
    {11, "spotsR3", "Spots R3", 0, 16, Unit::indexed, 0xC0000000, 6},
    {12, "spotsR4", "Spots R4", 0, 16, Unit::indexed, 0xC0000000, 7},
    {13, "spotsR5", "Spots R5", 0, 16, Unit::indexed, 0xC0000000, 8},
    {14, "phaseR1", "Phase R1", 0, 1, Unit::generic, 0xC0000000, 0},
    {15, "phaseR2", "Phase R2", 0, 1, Unit::generic, 0xC0000000, 0},
    {16, "phaseR3", "Phase R3", 0, 1, Unit::generic, 0xC0000000, 0},
    {17, "phaseR4", "Phase R4", 0, 1, Unit::generic, 0xC0000000, 0},
    {18, "phaseR5", "Phase R5", 0, 1, Unit::generic, 0xC0000000, 0},
    {19, "probR1", "Probability R1", 0, 1, Unit::generic, 0xC0000000, 0.75f},
    {20, "probR2", "Probability R2", 0, 1, Unit::generic, 0xC0000000, 0.75f},
    {21, "probR3", "Probability R3", 0, 1, Unit::generic, 0xC0000000, 0.75f},
    {22, "probR4", "Probability R4", 0, 1, Unit::generic, 0xC0000000, 0.75f},
    {23, "probR5", "Probability R5", 0, 1, Unit::generic, 0xC0000000, 0.75f},
    {24, "octaveR1", "Octave R1", 0, 7, Unit::indexed, 0xC0000000, 1},
    {25, "octaveR2", "Octave R2", 0, 7, Unit::indexed, 0xC0000000, 2},
    {26, "octaveR3", "Octave R3", 0, 7, Unit::indexed, 0xC0000000, 3},
    {27, "octaveR4", "Octave R4", 0, 7, Unit::indexed, 0xC0000000, 4},
    {28, "octaveR5", "Octave R5", 0, 7, Unit::indexed, 0xC0000000, 5},
    {29, "ringVolR1", "Ring Volume R1", 0, 1, Unit::generic, 0xC2000000, 0.7f},
    {30, "ringVolR2", "Ring Volume R2", 0, 1, Unit::generic, 0xC2000000, 0.7f},
    {31, "ringVolR3", "Ring Volume R3", 0, 1, Unit::generic, 0xC2000000, 0.7f},
    {32, "ringVolR4", "Ring Volume R4", 0, 1, Unit::generic, 0xC2000000, 0.7f},
    {33, "ringVolR5", "Ring Volume R5", 0, 1, Unit::generic, 0xC2000000, 0.7f},
    {34, "timbreR1", "Timbre R1", 0, 1, Unit::generic, 0xC2000000, 0.5f},
    {35, "timbreR2", "Timbre R2", 0, 1, Unit::generic, 0xC2000000, 0.5f},
    {36, "timbreR3", "Timbre R3", 0, 1, Unit::generic, 0xC2000000, 0.5f},
    {37, "timbreR4", "Timbre R4", 0, 1, Unit::generic, 0xC2000000, 0.5f},
    {38, "timbreR5", "Timbre R5", 0, 1, Unit::generic, 0xC2000000, 0.5f},
}};

constexpr std::array<std::string_view, 10> anchoredPresetNames{
    "Default",     "Drum Circle", "Phase 4",     "Lobster Quadrille",  "Precession",
    "Spiral Arms", "Wobbly Bits", "Wind Chimes", "Chocolate Starfish", "Lazy 8"};

/// By address, then by preset number.
// clang-format off
constexpr std::array<std::array<float, 10>, 39> anchoredPresetValues{{
    {{0, 0, 0, 0.5f, 1, 0, 0, 0.5f, 0, 0.5f}}, // activity
    {{0, 0, 0, 0.5f, 0.5f, 0, 0.3254f, 0.6578f, 0.5f, 0.6458f}}, // boredom
    {{0, 0, 1, 1, 0, 0, 0.228f, 1, 0.5f, 0}}, // calories
    {{0, 0, 0.5f, 0, 0.2086f, 0.618f, 0.363f, 0.1102f, 0.2994f, 0}}, // drudgery
    {{4, 4, 4, 4, 4, 4, 4, 4, 4, 4}}, // rootNote
    {{0, 3, 3, 3, 0, 3, 3, 2, 1, 3}}, // scaleType
    {{120, 120, 120, 120, 120, 120, 120, 120, 120, 120}}, // bpm
    {{0.8f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f, 0.8f}}, // volume
    {{1, 1, 1, 1, 1, 1, 1, 1, 1, 1}}, // sync
    {{4, 4, 4, 4, 6, 4, 1, 2, 5, 8}}, // spotsR1
    {{4, 4, 4, 4, 6, 4, 2, 3, 5, 8}}, // spotsR2
    {{4, 4, 4, 4, 6, 4, 4, 4, 5, 8}}, // spotsR3
    {{4, 6, 4, 4, 6, 4, 8, 5, 5, 8}}, // spotsR4
    {{4, 4, 4, 4, 6, 4, 16, 6, 5, 8}}, // spotsR5
    {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0}}, // phaseR1
    {{0, 0, 0, 0, 0, 0.1718f, 0, 0, 0.5f, 0}}, // phaseR2
    {{0, 1, 0, 0, 0, 0.12f, 0, 0, 0, 0}}, // phaseR3
    {{0, 0, 0, 0, 0, 0.07f, 0, 0, 0.5f, 0}}, // phaseR4
    {{0, 0.0935f, 0, 0, 0, 0, 0, 0, 0, 0}}, // phaseR5
    {{0.5f, 1, 1, 1, 1, 1, 0.5f, 1, 0.5f, 1}}, // probR1
    {{0.5f, 0.648f, 1, 1, 1, 1, 0.5f, 1, 0.5f, 1}}, // probR2
    {{0.5f, 1, 1, 1, 1, 1, 0.5f, 1, 0.5f, 1}}, // probR3
    {{0.5f, 1, 1, 1, 1, 1, 0.5f, 1, 0.5f, 1}}, // probR4
    {{0.5f, 1, 1, 1, 1, 1, 0.5f, 1, 0.5f, 1}}, // probR5
    {{2, 2, 3, 2, 1, 3, 2, 6, 2, 1}}, // octaveR1
    {{3, 3, 4, 3, 2, 4, 3, 5, 3, 2}}, // octaveR2
    {{4, 4, 5, 2, 3, 3, 4, 6, 4, 3}}, // octaveR3
    {{5, 4, 6, 4, 4, 5, 5, 5, 5, 4}}, // octaveR4
    {{6, 4, 7, 3, 5, 5, 6, 6, 6, 5}}, // octaveR5
    {{0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 1}}, // ringVolR1
    {{0.7f, 0.6881f, 0.6881f, 0.6881f, 0.6881f, 0.6881f, 0.7f, 0.6881f, 0.7f, 1}}, // ringVolR2
    {{0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 1}}, // ringVolR3
    {{0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 0.7f, 1}}, // ringVolR4
    {{0.7f, 0.6723f, 0.8043f, 0.8043f, 0.8043f, 0.8043f, 0.7f, 0.8043f, 0.7f, 1}}, // ringVolR5
    {{0.3f, 0.5031f, 0, 0, 0, 0, 0, 0.5032f, 0, 0}}, // timbreR1
    {{0.4f, 0.4979f, 0.2536f, 0.2536f, 0.2536f, 0.2536f, 0.2531f, 0.4972f, 0.2045f, 0}}, // timbreR2
    {{0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 0.4994f, 0.3978f, 0}}, // timbreR3
    {{0.6f, 0.5037f, 0.7522f, 0.7522f, 0.7522f, 0.7522f, 0.7459f, 0.4989f, 0.6f, 0}}, // timbreR4
    {{0.7f, 0.4996f, 1, 1, 1, 1, 1, 0.4993f, 0.7987f, 0}}, // timbreR5
}};
// clang-format on

/// The state after preset 6 was chosen.
constexpr std::string_view anchoredStateText = R"json({
  "version": 1,
  "preset": {
    "number": 6,
    "name": "Wobbly Bits"
  },
  "parameters": {
    "activity": 0.0,
    "boredom": 0.3254,
    "calories": 0.228,
    "drudgery": 0.363,
    "rootNote": 4.0,
    "scaleType": 3.0,
    "bpm": 120.0,
    "volume": 0.8,
    "sync": 1.0,
    "spotsR1": 1.0,
    "spotsR2": 2.0,
    "spotsR3": 4.0,
    "spotsR4": 8.0,
    "spotsR5": 16.0,
    "phaseR1": 0.0,
    "phaseR2": 0.0,
    "phaseR3": 0.0,
    "phaseR4": 0.0,
    "phaseR5": 0.0,
    "probR1": 0.5,
    "probR2": 0.5,
    "probR3": 0.5,
    "probR4": 0.5,
    "probR5": 0.5,
    "octaveR1": 2.0,
    "octaveR2": 3.0,
    "octaveR3": 4.0,
    "octaveR4": 5.0,
    "octaveR5": 6.0,
    "ringVolR1": 0.7,
    "ringVolR2": 0.7,
    "ringVolR3": 0.7,
    "ringVolR4": 0.7,
    "ringVolR5": 0.7,
    "timbreR1": 0.0,
    "timbreR2": 0.2531,
    "timbreR3": 0.5,
    "timbreR4": 0.7459,
    "timbreR5": 1.0
  }
}
)json";

TEST(Anchors, TheTreeListsThe39ParametersInAddressOrder)
{
    const auto unit = makeInstrument();
    const auto parameters = unit->parameterTree()->allParameters();
    ASSERT_EQ(parameters.size(), anchoredParameters.size());
    for (std::size_t i = 0; i < anchoredParameters.size(); ++i) {
        const auto& parameter = *parameters[i];
        const auto& anchored = anchoredParameters[i];
        SCOPED_TRACE(anchored.identifier);
        EXPECT_EQ(anchored.address, i);
        EXPECT_EQ(parameter.address(), anchored.address);
        EXPECT_EQ(parameter.identifier(), anchored.identifier);
        EXPECT_EQ(parameter.displayName(), anchored.name);
        EXPECT_EQ(parameter.minValue(), anchored.minValue);
        EXPECT_EQ(parameter.maxValue(), anchored.maxValue);
        EXPECT_EQ(parameter.unit(), anchored.unit);
        EXPECT_EQ(parameter.flags(), anchored.flags);
        EXPECT_EQ(parameter.unitName(), "");
        EXPECT_TRUE(parameter.valueStrings().empty());
        EXPECT_TRUE(parameter.dependentParameters().empty());
    }
}

TEST(Anchors, TheParameterTableSaysTheSameAsTheTree)
{
    const auto& table = parameterTable();
    ASSERT_EQ(table.size(), anchoredParameters.size());
    for (std::size_t i = 0; i < anchoredParameters.size(); ++i) {
        const auto& anchored = anchoredParameters[i];
        SCOPED_TRACE(anchored.identifier);
        EXPECT_EQ(table[i].address, anchored.address);
        EXPECT_EQ(table[i].identifier, anchored.identifier);
        EXPECT_EQ(table[i].name, anchored.name);
        EXPECT_EQ(table[i].minValue, anchored.minValue);
        EXPECT_EQ(table[i].maxValue, anchored.maxValue);
        EXPECT_EQ(table[i].unit, anchored.unit);
        EXPECT_EQ(table[i].flags, anchored.flags);
        EXPECT_EQ(table[i].initialValue, anchored.initialValue);
    }
}

TEST(Anchors, TheKernelStartsWithTheInitialValues)
{
    const VelotrineDSPKernel kernel;
    const auto unit = makeInstrument();
    for (const auto& anchored : anchoredParameters) {
        SCOPED_TRACE(anchored.identifier);
        EXPECT_EQ(kernel.parameter(anchored.address), anchored.initialValue);
        EXPECT_EQ(unit->parameterTree()->parameterWithAddress(anchored.address)->value(),
                  anchored.initialValue);
    }
}

TEST(Anchors, TheTreesOwnParametersStartWithTheInitialValues)
{
    const auto unit = makeInstrument();
    unit->parameterTree()->setImplementorValueProvider({});
    for (const auto& anchored : anchoredParameters)
        EXPECT_EQ(unit->parameterTree()->parameterWithAddress(anchored.address)->value(),
                  anchored.initialValue)
            << anchored.identifier;
}

TEST(Anchors, UnitsHaveTheNumbersThatHostsKnow)
{
    EXPECT_EQ(static_cast<std::uint32_t>(Unit::generic), 0U);
    EXPECT_EQ(static_cast<std::uint32_t>(Unit::indexed), 1U);
    EXPECT_EQ(static_cast<std::uint32_t>(Unit::boolean), 2U);
    EXPECT_EQ(static_cast<std::uint32_t>(Unit::bpm), 22U);
}

TEST(Anchors, RootsAndScalesHaveTheirNamesInOrder)
{
    EXPECT_EQ(rootNames, (std::array<std::string_view, 12>{"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#",
                                                           "A", "A#", "B"}));
    EXPECT_EQ(scaleNames,
              (std::array<std::string_view, 4>{"Major", "Minor", "Major Pentatonic", "Minor Pentatonic"}));
}

TEST(Anchors, TenFactoryPresetsHaveTheirNumbersAndNames)
{
    const auto unit = makeInstrument();
    const auto& presets = unit->factoryPresets();
    ASSERT_EQ(presets.size(), anchoredPresetNames.size());
    for (std::size_t i = 0; i < presets.size(); ++i) {
        EXPECT_EQ(presets[i].number, static_cast<std::int64_t>(i));
        EXPECT_EQ(presets[i].name, anchoredPresetNames[i]);
        EXPECT_EQ(presetTable()[i].name, anchoredPresetNames[i]);
    }
}

TEST(Anchors, All390PresetValuesArriveInTheKernel)
{
    const auto unit = makeInstrument();
    for (std::size_t number = 0; number < anchoredPresetNames.size(); ++number) {
        unit->setCurrentPreset(unit->factoryPresets()[number]);
        for (std::size_t address = 0; address < anchoredPresetValues.size(); ++address) {
            SCOPED_TRACE(std::string(anchoredPresetNames[number]) + ", " +
                         std::string(anchoredParameters[address].identifier));
            EXPECT_EQ(presetTable()[number].values[address], anchoredPresetValues[address][number]);
            EXPECT_EQ(unit->dspKernel->parameter(address), anchoredPresetValues[address][number]);
        }
    }
}

TEST(Anchors, AStateIsWrittenAsThisText)
{
    const auto unit = makeInstrument();
    unit->setCurrentPreset(unit->factoryPresets()[6]);
    EXPECT_EQ(textFromState(unit->fullState()), anchoredStateText);
}

TEST(Anchors, ThisTextIsReadAsAState)
{
    const auto read = stateFromText(anchoredStateText);
    ASSERT_TRUE(read.state.has_value()) << read.error;
    const auto unit = makeInstrument();
    unit->setFullState(*read.state);
    EXPECT_EQ(unit->currentPreset(), (AUAudioUnitPreset{6, "Wobbly Bits"}));
    for (std::size_t address = 0; address < anchoredPresetValues.size(); ++address)
        EXPECT_EQ(unit->dspKernel->parameter(address), anchoredPresetValues[address][6]);
}

TEST(Anchors, AStateWithoutAPresetSaysNull)
{
    EXPECT_EQ(textFromState({{{"volume", 0.8f}}, {}}), R"json({
  "version": 1,
  "preset": null,
  "parameters": {
    "volume": 0.8
  }
}
)json");
}

TEST(Anchors, TheComponentHasItsCodesItsNameAndItsVersion)
{
    const auto description = velotrineComponentDescription();
    EXPECT_EQ(description.componentType, 0x6175676EU);
    EXPECT_EQ(description.componentSubType, 0x56656C49U);
    EXPECT_EQ(description.componentManufacturer, 0x6D622A6BU);
    EXPECT_EQ(description.componentFlags, 0U);
    EXPECT_EQ(description.componentFlagsMask, 0U);
    EXPECT_STREQ(velotrineComponentName, "Marrowbeck: Velotrine (In-Process)");
    EXPECT_EQ(velotrineComponentVersion, 0x00010000U);
}

} // namespace
} // namespace velotrine
