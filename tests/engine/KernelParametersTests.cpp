#include "engine/VelotrineDSPKernel.h"

#include "tests/engine/PlayingKernel.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

TEST(KernelParameters, AFreshKernelReadsBackTheInstrumentsInitialValues)
{
    const VelotrineDSPKernel kernel;
    EXPECT_EQ(kernel.activity, 0.5f);
    EXPECT_EQ(kernel.boredom, 0.5f);
    EXPECT_EQ(kernel.calories, 0.5f);
    EXPECT_EQ(kernel.drudgery, 0.5f);
    EXPECT_EQ(kernel.rootNote, 0.0f);
    EXPECT_EQ(kernel.scaleType, 0.0f);
    EXPECT_EQ(kernel.bpm, 120.0f);
    EXPECT_EQ(kernel.volume, 0.8f);
    EXPECT_TRUE(kernel.sync);
    for (std::size_t ring = 0; ring < 5; ++ring) {
        const auto fromInside = static_cast<std::int64_t>(ring);
        EXPECT_EQ(kernel.spotCounts[ring], 4 + fromInside);
        EXPECT_EQ(kernel.ringOctaves[ring], 1 + fromInside);
        EXPECT_EQ(kernel.phaseOffsets[ring], 0.0f);
        EXPECT_EQ(kernel.probabilities[ring], 0.75f);
        EXPECT_EQ(kernel.ringVolumes[ring], 0.7f);
        EXPECT_EQ(kernel.ringTimbres[ring], 0.5f);
    }
}

TEST(KernelParameters, AFreshKernelStandsStillAndHasNoVoices)
{
    const VelotrineDSPKernel kernel;
    EXPECT_EQ(kernel.voicePool, nullptr);
    EXPECT_TRUE(kernel.scratchBuf.empty());
    EXPECT_EQ(kernel.maxFrames, 512);
    EXPECT_EQ(kernel.sampleRate, 44100.0);
    EXPECT_EQ(kernel.clockPhase, 0.0);
    EXPECT_EQ(kernel.clockPhaseBuf, 0.0);
    EXPECT_EQ(kernel.hostTempo, 0.0);
    EXPECT_EQ(kernel.hostBeatsPerBar, 0.0);
    EXPECT_EQ(kernel.hostBeatUnit, 0.0);
    EXPECT_FALSE(kernel.hostPlaying);
    EXPECT_FALSE(kernel.internalPlaying);
    EXPECT_FALSE(kernel.hostPlayingLast);
    EXPECT_FALSE(kernel.internalPlayingLast);
    EXPECT_EQ(kernel.lastPitchClass, -1);
    EXPECT_EQ(kernel.rngState, 12345U);
    EXPECT_TRUE(kernel.noteEvents().empty());
    for (std::size_t ring = 0; ring < 5; ++ring) {
        EXPECT_EQ(kernel.activityPhases[ring], 0.0);
        EXPECT_EQ(kernel.lfoOffsets[ring], 0.0);
        EXPECT_EQ(kernel.lfoPhases[ring], 0.0);
        EXPECT_EQ(kernel.lastSpotIndex[ring], 0);
        EXPECT_FALSE(kernel.ringInitialised[ring]);
        EXPECT_EQ(kernel.lastRingPhase[ring], 0.0);
    }
    ASSERT_EQ(kernel.spotFireTimes.size(), 80U);
    for (const auto& time : kernel.spotFireTimes)
        EXPECT_EQ(time, 0U);
}

TEST(KernelParameters, GlobalAddressesCountFromActivityToSync)
{
    VelotrineDSPKernel kernel;
    for (ParameterAddress address = 0; address < 8; ++address)
        kernel.setParameter(address, 0.125f * static_cast<float>(address + 1));
    kernel.setParameter(8, 0.0f);
    EXPECT_EQ(kernel.activity, 0.125f);
    EXPECT_EQ(kernel.boredom, 0.25f);
    EXPECT_EQ(kernel.calories, 0.375f);
    EXPECT_EQ(kernel.drudgery, 0.5f);
    EXPECT_EQ(kernel.rootNote, 0.625f);
    EXPECT_EQ(kernel.scaleType, 0.75f);
    EXPECT_EQ(kernel.bpm, 0.875f);
    EXPECT_EQ(kernel.volume, 1.0f);
    EXPECT_FALSE(kernel.sync);
}

TEST(KernelParameters, RingAddressesAreSixGroupsOfFive)
{
    VelotrineDSPKernel kernel;
    for (ParameterAddress address = 9; address < 39; ++address)
        kernel.setParameter(address, static_cast<float>(address));
    for (std::size_t ring = 0; ring < 5; ++ring) {
        const auto first = static_cast<float>(9 + ring);
        EXPECT_EQ(static_cast<float>(kernel.spotCounts[ring]), first);
        EXPECT_EQ(kernel.phaseOffsets[ring], first + 5.0f);
        EXPECT_EQ(kernel.probabilities[ring], first + 10.0f);
        EXPECT_EQ(static_cast<float>(kernel.ringOctaves[ring]), first + 15.0f);
        EXPECT_EQ(kernel.ringVolumes[ring], first + 20.0f);
        EXPECT_EQ(kernel.ringTimbres[ring], first + 25.0f);
    }
}

TEST(KernelParameters, EveryAddressReadsBackWhatWasStoredUnderIt)
{
    VelotrineDSPKernel kernel;
    for (ParameterAddress address = 0; address < 39; ++address) {
        const float value = address == 8 ? 0.0f : static_cast<float>(address) + 100.0f;
        kernel.setParameter(address, value);
        EXPECT_EQ(kernel.parameter(address), value) << "address " << address;
    }
}

TEST(KernelParameters, AddressesBeyondTheLastChangeNothingAndReadZero)
{
    VelotrineDSPKernel kernel;
    std::array<float, 39> before{};
    for (ParameterAddress address = 0; address < before.size(); ++address)
        before[address] = kernel.parameter(address);
    for (const ParameterAddress address : {std::uint64_t{39}, std::uint64_t{1000}, UINT64_MAX}) {
        kernel.setParameter(address, 77.0f);
        EXPECT_EQ(kernel.parameter(address), 0.0f);
    }
    for (ParameterAddress address = 0; address < before.size(); ++address)
        EXPECT_EQ(kernel.parameter(address), before[address]);
}

TEST(KernelParameters, CountsAndOctavesAreCutTowardsZero)
{
    VelotrineDSPKernel kernel;
    for (int ring = 0; ring < ringCount; ++ring) {
        const auto index = static_cast<std::size_t>(ring);
        kernel.setParameter(addressOf(RingParameter::spots, ring), 7.9f);
        EXPECT_EQ(kernel.spotCounts[index], 7);
        kernel.setParameter(addressOf(RingParameter::spots, ring), -0.9f);
        EXPECT_EQ(kernel.spotCounts[index], 0);
        kernel.setParameter(addressOf(RingParameter::octave, ring), 3.999f);
        EXPECT_EQ(kernel.ringOctaves[index], 3);
        kernel.setParameter(addressOf(RingParameter::octave, ring), -2.7f);
        EXPECT_EQ(kernel.ringOctaves[index], -2);
    }
}

TEST(KernelParameters, SyncIsOnOnlyAboveOneHalf)
{
    VelotrineDSPKernel kernel;
    kernel.setParameter(addressOf(GlobalParameter::sync), 0.5f);
    EXPECT_FALSE(kernel.sync);
    kernel.setParameter(addressOf(GlobalParameter::sync), 0.51f);
    EXPECT_TRUE(kernel.sync);
    kernel.setParameter(addressOf(GlobalParameter::sync), notANumber);
    EXPECT_FALSE(kernel.sync);
}

TEST(KernelParameters, ValuesOutsideTheirRangesAreKeptAsTheyAre)
{
    VelotrineDSPKernel kernel;
    for (const float tempo : {-1.0f, 20.0f, 500.0f, infinity}) {
        kernel.setParameter(addressOf(GlobalParameter::bpm), tempo);
        EXPECT_EQ(kernel.bpm, tempo);
    }
    kernel.setParameter(addressOf(GlobalParameter::boredom), 3.5f);
    EXPECT_EQ(kernel.boredom, 3.5f);
    kernel.setParameter(addressOf(GlobalParameter::scaleType), -4.5f);
    EXPECT_EQ(kernel.scaleType, -4.5f);
    kernel.setParameter(addressOf(RingParameter::timbre, 2), -9.0f);
    EXPECT_EQ(kernel.ringTimbres[2], -9.0f);
    kernel.setParameter(addressOf(RingParameter::spots, 2), 1000.0f);
    EXPECT_EQ(kernel.spotCounts[2], 1000);
    kernel.setParameter(addressOf(GlobalParameter::volume), notANumber);
    EXPECT_TRUE(std::isnan(kernel.volume.load()));
}

TEST(KernelParameters, TheEndsOfTheSixtyFourBitRangeAreStillWholeNumbers)
{
    VelotrineDSPKernel kernel;
    constexpr float lowest = -9223372036854775808.0f;
    const float highest = std::nextafter(-lowest, 0.0f);
    kernel.setParameter(addressOf(RingParameter::octave, 0), lowest);
    EXPECT_EQ(kernel.ringOctaves[0], INT64_MIN);
    kernel.setParameter(addressOf(RingParameter::octave, 0), highest);
    EXPECT_EQ(kernel.ringOctaves[0], INT64_MAX - ((std::int64_t{1} << 39) - 1));
}

TEST(KernelParametersDeathTest, ACountOrOctaveThatIsNoWholeNumberStopsTheProgram)
{
    VelotrineDSPKernel kernel;
    for (const auto address : {addressOf(RingParameter::spots, 0), addressOf(RingParameter::spots, 4),
                               addressOf(RingParameter::octave, 0), addressOf(RingParameter::octave, 4)})
        for (const float value : {notANumber, infinity, -infinity, 9223372036854775808.0f, -1.0e19f}) {
            SCOPED_TRACE(value);
            EXPECT_DEATH(kernel.setParameter(address, value), "velotrine: fatal");
        }
}

TEST(KernelSetup, StoresItsArgumentsAndMakesSixteenFreshVoices)
{
    VelotrineDSPKernel kernel;
    kernel.setup(640, 96000.0);
    EXPECT_EQ(kernel.maxFrames, 640);
    EXPECT_EQ(kernel.sampleRate, 96000.0);
    EXPECT_EQ(kernel.scratchBuf, std::vector<float>(640, 0.0f));
    ASSERT_NE(kernel.voicePool, nullptr);
    ASSERT_EQ(kernel.voicePool->voices.size(), 16U);
    for (const auto& voice : kernel.voicePool->voices) {
        EXPECT_FALSE(voice.active);
        EXPECT_EQ(voice.sampleRate, 96000.0);
    }
    EXPECT_EQ(kernel.voicePool->triggerOrder.size(), 0U);
}

TEST(KernelSetup, NoFramesGiveAnEmptyMixBuffer)
{
    VelotrineDSPKernel kernel;
    kernel.setup(512, 48000.0);
    kernel.setup(0, 48000.0);
    EXPECT_EQ(kernel.maxFrames, 0);
    EXPECT_TRUE(kernel.scratchBuf.empty());
}

TEST(KernelSetup, ASecondSetupStopsTheNotesThatWereSounding)
{
    VelotrineDSPKernel kernel;
    kernel.setup(64, 48000.0);
    kernel.triggerVoice(2);
    std::array<float, 64> left{};
    std::array<float, 64> right{};
    kernel.process(left.data(), right.data(), 64);
    EXPECT_NE(left, (std::array<float, 64>{}));

    kernel.setup(64, 48000.0);
    EXPECT_EQ(kernel.voicePool->triggerOrder.size(), 0U);
    kernel.process(left.data(), right.data(), 64);
    EXPECT_EQ(left, (std::array<float, 64>{}));
    EXPECT_EQ(right, (std::array<float, 64>{}));
}

TEST(KernelSetup, PutsTheClockBackToTheStart)
{
    test::PlayingKernel playing;
    playing.run(30000, 512);
    playing.kernel.setup(8192, 48000.0);
    EXPECT_EQ(playing.kernel.clockPhase, 0.0);
    EXPECT_EQ(playing.kernel.clockPhaseBuf, 0.0);
    EXPECT_EQ(playing.kernel.lastPitchClass, -1);
    EXPECT_FALSE(playing.kernel.internalPlayingLast);
}

TEST(KernelSetupDeathTest, ANegativeNumberOfFramesStopsTheProgram)
{
    VelotrineDSPKernel kernel;
    EXPECT_DEATH(kernel.setup(-1, 48000.0), "velotrine: fatal");
    EXPECT_DEATH(kernel.setup(INT64_MIN, 48000.0), "velotrine: fatal");
}

TEST(KernelReset, PutsClockRingsAndNoteChainBack)
{
    test::PlayingKernel playing;
    playing.kernel.activity = 1.0f;
    playing.run(50000, 500);
    auto& kernel = playing.kernel;
    ASSERT_NE(kernel.clockPhase, 0.0);
    ASSERT_NE(kernel.lastPitchClass, -1);
    ASSERT_TRUE(kernel.internalPlayingLast);
    kernel.hostPlayingLast = true;

    kernel.reset();
    EXPECT_EQ(kernel.clockPhase, 0.0);
    EXPECT_EQ(kernel.clockPhaseBuf, 0.0);
    EXPECT_EQ(kernel.lastPitchClass, -1);
    EXPECT_FALSE(kernel.hostPlayingLast);
    EXPECT_FALSE(kernel.internalPlayingLast);
    for (std::size_t ring = 0; ring < 5; ++ring) {
        EXPECT_EQ(kernel.lfoPhases[ring], 0.0);
        EXPECT_EQ(kernel.lfoOffsets[ring], 0.0);
        EXPECT_EQ(kernel.activityPhases[ring], 0.0);
        EXPECT_EQ(kernel.lastRingPhase[ring], 0.0);
        EXPECT_EQ(kernel.lastSpotIndex[ring], 0);
        EXPECT_FALSE(kernel.ringInitialised[ring]);
    }
}

TEST(KernelReset, LeavesParametersRandomStateFireTimesHostAndSoundingNotes)
{
    test::PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.hostTempo = 98.0;
    kernel.hostBeatsPerBar = 7.0;
    kernel.hostBeatUnit = 8.0;
    kernel.hostPlaying = true;
    kernel.boredom = 0.123f;
    playing.run(96000, 500);
    kernel.triggerVoice(0);
    const auto random = kernel.rngState;
    ASSERT_NE(random, 12345U);
    const auto sounding = kernel.voicePool->triggerOrder.size();
    std::array<std::uint64_t, 80> fireTimes{};
    std::copy(kernel.spotFireTimes.begin(), kernel.spotFireTimes.end(), fireTimes.begin());
    ASSERT_NE(fireTimes, (std::array<std::uint64_t, 80>{}));

    kernel.reset();
    EXPECT_EQ(kernel.rngState, random);
    EXPECT_EQ(kernel.boredom, 0.123f);
    EXPECT_EQ(kernel.hostTempo, 98.0);
    EXPECT_EQ(kernel.hostBeatsPerBar, 7.0);
    EXPECT_EQ(kernel.hostBeatUnit, 8.0);
    EXPECT_TRUE(kernel.hostPlaying);
    EXPECT_TRUE(kernel.internalPlaying);
    EXPECT_TRUE(std::equal(fireTimes.begin(), fireTimes.end(), kernel.spotFireTimes.begin()));
    EXPECT_EQ(kernel.voicePool->triggerOrder.size(), sounding);
    kernel.internalPlaying = false;
    std::array<float, 64> left{};
    std::array<float, 64> right{};
    kernel.process(left.data(), right.data(), 64);
    EXPECT_NE(left, (std::array<float, 64>{}));
}

// What programs outside this repository write against the kernel.
TEST(KernelNames, ProgramsOutsideFindEverythingUnderItsPublicName)
{
    std::array<float, 512> left{};
    std::array<float, 512> right{};

    velotrine::VelotrineDSPKernel kernel;
    kernel.setParameter(0, 0.7f);
    const float a = kernel.parameter(0);
    EXPECT_EQ(a, 0.7f);
    kernel.sync = false;
    kernel.spotCounts[2] = 7;
    kernel.boredom = 0.3f;
    kernel.hostPlaying = false;
    kernel.hostTempo = 0.0;
    kernel.hostBeatsPerBar = 4.0;
    kernel.hostBeatUnit = 4.0;
    kernel.setup(512, 48000.0);
    kernel.internalPlaying = true;
    kernel.process(left.data(), right.data(), 512);
    const double p = kernel.clockPhaseBuf;
    EXPECT_GT(p, 0.0);
    const double r = kernel.activityPhases[4];
    EXPECT_GT(r, 0.0);
    const double w = kernel.lfoOffsets[4];
    EXPECT_GT(w, 0.0);
    const std::uint64_t t = kernel.spotFireTimes[3 * 16 + 2];
    EXPECT_EQ(t, 0U);
    const std::uint64_t g = kernel.rngState;
    EXPECT_NE(g, 0U);
    const int note = static_cast<int>(kernel.nextNote(2));
    const int pc = static_cast<int>(kernel.lastPitchClass);
    EXPECT_EQ(note, 3 * 12 + pc);

    int eventCount = 0;
    for (const auto& e : kernel.noteEvents())
        eventCount += e.frame >= 0 && e.ring >= 0 && e.spot >= 0 && e.note > 0 && e.gain > 0.0f &&
                      e.decaySeconds > 0.0f;
    EXPECT_EQ(static_cast<std::size_t>(eventCount), kernel.noteEvents().size());

    std::array<float, 12> row = velotrine::shapedRow(0, 0, 0.0f);
    EXPECT_EQ(row[0], 0.2624f);
    const auto [ratio, index, decay] = velotrine::timbreParameters(0.25f);
    EXPECT_EQ(ratio, 1.5);
    EXPECT_EQ(index, 1.5f);
    EXPECT_EQ(decay, 0.8f);

    const auto sounding = kernel.voicePool->triggerOrder.size();
    ASSERT_EQ(sounding, kernel.noteEvents().size());
    EXPECT_FALSE(kernel.voicePool->voices[sounding].active);
    kernel.triggerVoice(1);
    EXPECT_TRUE(kernel.voicePool->voices[sounding].active);
    ASSERT_EQ(kernel.voicePool->triggerOrder.size(), sounding + 1);
    EXPECT_EQ(kernel.voicePool->triggerOrder[sounding], static_cast<int>(sounding));
    kernel.reset();
    EXPECT_EQ(kernel.droppedNoteEvents, 0);
}

} // namespace
} // namespace velotrine
