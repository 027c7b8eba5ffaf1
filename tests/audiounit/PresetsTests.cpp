#include "audiounit/Presets.h"

#include "tests/support/TestInstrument.h"

#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr std::array ringSuffixes{"R1", "R2", "R3", "R4", "R5"};

std::array<float, ringCount> valuesPerRing(AUAudioUnit& unit, const std::string& prefix)
{
    std::array<float, ringCount> values{};
    for (std::size_t ring = 0; ring < ringCount; ++ring)
        values[ring] = valueOf(unit, prefix + ringSuffixes[ring]);
    return values;
}

/// All of a kernel that a preset must leave alone.
auto momentOf(const VelotrineDSPKernel& kernel)
{
    std::vector<std::tuple<bool, double, double, float, float>> voices;
    for (const auto& voice : kernel.voicePool->voices)
        voices.emplace_back(voice.active, voice.carrierPhase, voice.modPhase, voice.amplitude,
                            voice.currentModIndex);
    const auto& order = kernel.voicePool->triggerOrder;
    std::vector<double> positions;
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        positions.push_back(kernel.activityPhases[ring]);
        positions.push_back(kernel.lfoOffsets[ring]);
        positions.push_back(kernel.lfoPhases[ring]);
        positions.push_back(kernel.lastRingPhase[ring]);
    }
    std::vector<std::uint64_t> fireTimes(kernel.spotFireTimes.begin(), kernel.spotFireTimes.end());
    return std::tuple(voices, std::vector<int>(order.begin(), order.end()), positions, fireTimes,
                      kernel.clockPhase, kernel.clockPhaseBuf.load(), kernel.lastSpotIndex,
                      kernel.ringInitialised, kernel.lastPitchClass, kernel.rngState,
                      kernel.internalPlaying.load(), kernel.internalPlayingLast, kernel.hostTempo,
                      kernel.hostPlaying);
}

class PresetsOfAnInstrument : public testing::Test
{
protected:
    std::shared_ptr<VelotrineAudioUnit> unit = makeInstrument();
};

TEST_F(PresetsOfAnInstrument, NoneIsChosenAtFirst)
{
    EXPECT_EQ(unit->currentPreset(), std::nullopt);
}

TEST_F(PresetsOfAnInstrument, AreListedOnceForAll)
{
    const auto* const first = &unit->factoryPresets();
    EXPECT_EQ(first->size(), 10U);
    EXPECT_EQ(&unit->factoryPresets(), first);
    EXPECT_EQ(unit->factoryPresets().size(), 10U);
}

TEST_F(PresetsOfAnInstrument, LobsterQuadrilleDoesNotRaiseTheOctavesRingByRing)
{
    selectPreset(*unit, 3);
    EXPECT_EQ(valueOf(*unit, "octaveR3"), 2.0f);
    EXPECT_EQ(valueOf(*unit, "octaveR5"), 3.0f);
    EXPECT_EQ(valuesPerRing(*unit, "prob"), (std::array{1.0f, 1.0f, 1.0f, 1.0f, 1.0f}));
}

TEST_F(PresetsOfAnInstrument, WobblyBitsDoublesTheSpotsRingByRing)
{
    selectPreset(*unit, 6);
    EXPECT_EQ(valuesPerRing(*unit, "spots"), (std::array{1.0f, 2.0f, 4.0f, 8.0f, 16.0f}));
}

TEST_F(PresetsOfAnInstrument, Lazy8HasFullVolumesAndTheDarkestTimbres)
{
    selectPreset(*unit, 9);
    EXPECT_EQ(valuesPerRing(*unit, "ringVol"), (std::array{1.0f, 1.0f, 1.0f, 1.0f, 1.0f}));
    EXPECT_EQ(valuesPerRing(*unit, "timbre"), (std::array{0.0f, 0.0f, 0.0f, 0.0f, 0.0f}));
}

TEST_F(PresetsOfAnInstrument, DefaultAfterPrecessionUndoesIt)
{
    selectPreset(*unit, 4);
    EXPECT_EQ(valueOf(*unit, "activity"), 1.0f);
    EXPECT_EQ(valuesPerRing(*unit, "spots"), (std::array{6.0f, 6.0f, 6.0f, 6.0f, 6.0f}));
    selectPreset(*unit, 0);
    EXPECT_EQ(valueOf(*unit, "activity"), 0.0f);
    EXPECT_EQ(valuesPerRing(*unit, "spots"), (std::array{4.0f, 4.0f, 4.0f, 4.0f, 4.0f}));
}

TEST_F(PresetsOfAnInstrument, AreWrittenThroughTheTreeInAddressOrderForAllItsObservers)
{
    using Writes = std::vector<std::pair<AUParameterAddress, AUValue>>;
    Writes writes;
    Writes others;
    const auto tree = unit->parameterTree();
    const auto record = [&tree](Writes& into) {
        return tree->tokenByAddingParameterObserver(
            [&into](AUParameterAddress address, AUValue value) { into.emplace_back(address, value); });
    };
    EXPECT_NE(record(writes), record(others));
    selectPreset(*unit, 7);

    Writes expected;
    for (const float value : presetTable()[7].values)
        expected.emplace_back(expected.size(), value);
    EXPECT_EQ(expected.size(), 39U);
    EXPECT_EQ(writes, expected);
    EXPECT_EQ(others, expected);
}

TEST_F(PresetsOfAnInstrument, AreInPlaceWhenTheFirstValueIsWritten)
{
    std::optional<AUAudioUnitPreset> seen;
    const auto token =
        unit->parameterTree()->tokenByAddingParameterObserver([&](AUParameterAddress address, AUValue) {
            if (address == 0)
                seen = unit->currentPreset();
        });
    selectPreset(*unit, 2);
    EXPECT_EQ(seen, (AUAudioUnitPreset{2, "Phase 4"}));
    EXPECT_NE(token, 0U);
}

TEST_F(PresetsOfAnInstrument, ChangeNothingButTheParameters)
{
    unit = makePlayingInstrument();
    const auto block = unit->renderBlock();
    OutputBuffers output(2, 512);
    for (int cycle = 0; cycle < 40; ++cycle)
        ASSERT_EQ(renderInto(output, block, 512), noErr);
    const auto& kernel = *unit->dspKernel;
    ASSERT_FALSE(kernel.voicePool->triggerOrder.empty());

    const auto before = momentOf(kernel);
    for (std::size_t number = 0; number < presetCount; ++number) {
        const auto valuesBefore = valuesOf(kernel);
        selectPreset(*unit, number);
        EXPECT_NE(valuesOf(kernel), valuesBefore);
        EXPECT_EQ(momentOf(kernel), before) << number;
    }
}

TEST_F(PresetsOfAnInstrument, OfNumbersThatTheTableDoesNotHaveAreNotedWithoutEffect)
{
    selectPreset(*unit, 5);
    const auto before = valuesOf(*unit->dspKernel);
    for (const std::int64_t number :
         {std::int64_t{12}, std::int64_t{10}, std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
        const AUAudioUnitPreset preset{number, "Mine"};
        unit->setCurrentPreset(preset);
        EXPECT_EQ(unit->currentPreset(), preset);
        EXPECT_EQ(valuesOf(*unit->dspKernel), before) << number;
    }
}

TEST_F(PresetsOfAnInstrument, AreWrittenWithoutTellingTheirOriginatorOfTheValues)
{
    const auto tree = unit->parameterTree();
    std::size_t toldOriginator = 0;
    std::size_t toldOther = 0;
    const auto originator = tree->tokenByAddingParameterObserver(
        [&toldOriginator](AUParameterAddress, AUValue) { ++toldOriginator; });
    const auto other =
        tree->tokenByAddingParameterObserver([&toldOther](AUParameterAddress, AUValue) { ++toldOther; });
    unit->setCurrentPreset(unit->factoryPresets()[3], originator);
    EXPECT_EQ(toldOriginator, 0U);
    EXPECT_EQ(toldOther, parameterCount);
    unit->setCurrentPreset(unit->factoryPresets()[3], other);
    EXPECT_EQ(toldOriginator, parameterCount);
}

TEST_F(PresetsOfAnInstrument, NilClearsTheChoiceAndNothingElse)
{
    selectPreset(*unit, 5);
    const auto before = valuesOf(*unit->dspKernel);
    unit->setCurrentPreset(std::nullopt);
    EXPECT_EQ(unit->currentPreset(), std::nullopt);
    EXPECT_EQ(valuesOf(*unit->dspKernel), before);
}

TEST_F(PresetsOfAnInstrument, AreChosenByNumberWhateverTheNameSays)
{
    unit->setCurrentPreset(AUAudioUnitPreset{6, "Renamed"});
    EXPECT_EQ(unit->currentPreset(), (AUAudioUnitPreset{6, "Renamed"}));
    EXPECT_EQ(valueOf(*unit, "spotsR5"), 16.0f);
}

TEST_F(PresetsOfAnInstrument, AreWrittenToAReplacedTreeAsFarAsItHasTheParameters)
{
    const auto before = valuesOf(*unit->dspKernel);
    AUParameterDefinition lone;
    lone.identifier = "bpm";
    lone.address = 6;
    const auto parameter = AUParameterTree::createParameter(lone);
    unit->setParameterTree(AUParameterTree::createTree({parameter}));
    selectPreset(*unit, 1);
    EXPECT_EQ(parameter->value(), 120.0f);
    EXPECT_EQ(valuesOf(*unit->dspKernel), before);
}

TEST_F(PresetsOfAnInstrument, AreNotedByAUnitWithoutATree)
{
    const auto before = valuesOf(*unit->dspKernel);
    unit->setParameterTree(nullptr);
    selectPreset(*unit, 1);
    EXPECT_EQ(unit->currentPreset(), (AUAudioUnitPreset{1, "Drum Circle"}));
    EXPECT_EQ(valuesOf(*unit->dspKernel), before);
}

} // namespace
} // namespace velotrine
