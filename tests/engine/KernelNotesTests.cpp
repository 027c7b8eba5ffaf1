#include "engine/VelotrineDSPKernel.h"

#include "engine/RandomGenerator.h"
#include "tests/engine/PlayingKernel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

void setUp(VelotrineDSPKernel& kernel)
{
    kernel.setup(512, 48000.0);
}

/// Makes the next note this pitch class: it becomes the root of a pentatonic scale, which is certain to
/// follow a note that the scale does not have.
void forceNextPitchClass(VelotrineDSPKernel& kernel, int pitchClass)
{
    kernel.scaleType = 2.0f;
    kernel.boredom = 0.0f;
    kernel.rootNote = static_cast<float>(pitchClass);
    kernel.lastPitchClass = (pitchClass + 1) % 12;
}

/// Starts a note as a fired spot does, and returns the voice that plays it.
const FMVoice& triggered(VelotrineDSPKernel& kernel, std::int64_t ring)
{
    kernel.triggerVoice(ring);
    const auto& order = kernel.voicePool->triggerOrder;
    return kernel.voicePool->voices[static_cast<std::size_t>(order[order.size() - 1])];
}

std::vector<std::int64_t> drawnNotes(VelotrineDSPKernel& kernel, int count)
{
    std::vector<std::int64_t> notes;
    notes.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        notes.push_back(kernel.nextNote(i % 5));
    return notes;
}

TEST(KernelNotes, TheNoteIsTwelveTimesTheOctavePlusThePitchClass)
{
    VelotrineDSPKernel kernel;
    forceNextPitchClass(kernel, 0);
    EXPECT_EQ(kernel.nextNote(0), 12);
    forceNextPitchClass(kernel, 11);
    EXPECT_EQ(kernel.nextNote(4), 71);
    EXPECT_EQ(kernel.lastPitchClass, 11);
    kernel.ringOctaves[2] = -2;
    forceNextPitchClass(kernel, 5);
    EXPECT_EQ(kernel.nextNote(2), -19);
}

TEST(KernelNotes, AScaleBeyondTheLastIsTheLastAndANegativeOneTheFirst)
{
    struct Case
    {
        float asked;
        float used;
    };

    for (const auto& [asked, used] : {Case{7.0f, 3.0f}, Case{4.0f, 3.0f}, Case{3.9f, 3.0f}, Case{-1.0f, 0.0f},
                                      Case{-9.0e18f, 0.0f}, Case{9.0e18f, 3.0f}, Case{0.9f, 0.0f}}) {
        VelotrineDSPKernel kernel;
        VelotrineDSPKernel other;
        kernel.scaleType = asked;
        other.scaleType = used;
        EXPECT_EQ(drawnNotes(kernel, 500), drawnNotes(other, 500)) << asked;
    }

    // The four differ, or the above would say nothing.
    std::vector<std::vector<std::int64_t>> runs;
    for (const float scale : {0.0f, 1.0f, 2.0f, 3.0f}) {
        VelotrineDSPKernel kernel;
        kernel.scaleType = scale;
        runs.push_back(drawnNotes(kernel, 500));
        for (std::size_t i = 0; i + 1 < runs.size(); ++i)
            EXPECT_NE(runs[i], runs.back());
    }
}

TEST(KernelNotes, TheRootIsCutToAWholeNumberAndTakenWithinTheOctave)
{
    struct Case
    {
        float asked;
        float used;
    };

    for (const auto& [asked, used] :
         {Case{2.7f, 2.0f}, Case{2.2f, 2.0f}, Case{11.99f, 11.0f}, Case{14.0f, 2.0f}, Case{12.5f, 0.0f},
          Case{-0.3f, 0.0f}, Case{-0.9f, 0.0f}, Case{-2.7f, -2.0f}}) {
        VelotrineDSPKernel kernel;
        VelotrineDSPKernel other;
        kernel.rootNote = asked;
        other.rootNote = used;
        EXPECT_EQ(drawnNotes(kernel, 500), drawnNotes(other, 500)) << asked;
    }
}

TEST(KernelNotes, ANegativeRootIsUsedAsItIs)
{
    VelotrineDSPKernel kernel;
    kernel.scaleType = 2.0f;
    kernel.boredom = 0.0f;
    kernel.rootNote = -13.0f;
    kernel.lastPitchClass = 0; // a semitone above
    EXPECT_EQ(kernel.nextNote(0), 11);
    EXPECT_EQ(kernel.lastPitchClass, -1);
}

TEST(KernelNotes, TheLastNoteIsCountedFromTheRoot)
{
    VelotrineDSPKernel kernel;
    kernel.rootNote = 2.0f;
    kernel.boredom = 0.0f;
    const auto& row = lowTransitions[0][2];
    float total = 0.0f;
    for (const float weight : row)
        total += weight;

    for (int i = 0; i < 2000; ++i) {
        auto state = kernel.rngState;
        const float target = total * drawUnit(state);
        std::int64_t interval = 0;
        float sum = row[0];
        while (target >= sum && interval < 11)
            sum += row[static_cast<std::size_t>(++interval)];
        kernel.lastPitchClass = 4;
        ASSERT_EQ(kernel.nextNote(1), 24 + (2 + interval) % 12) << i;
        ASSERT_EQ(kernel.lastPitchClass, (2 + interval) % 12);
        ASSERT_EQ(kernel.rngState, state);
    }
}

TEST(KernelNotes, AfterAnOutsiderAtHighBoredomALowerOneLeadsBackToTheRoot)
{
    VelotrineDSPKernel kernel;
    kernel.scaleType = 3.0f;
    kernel.rootNote = 7.0f;
    kernel.boredom = 1.0f;
    const auto isOutsider = [&kernel] {
        const auto interval = (kernel.lastPitchClass + 12 - 7) % 12;
        return interval != 0 && interval != 3 && interval != 5 && interval != 7 && interval != 10;
    };
    for (int i = 0; i < 1000 && !(kernel.lastPitchClass >= 0 && isOutsider()); ++i)
        static_cast<void>(kernel.nextNote(0));
    ASSERT_TRUE(isOutsider());

    kernel.boredom = 0.7f;
    const auto random = kernel.rngState;
    EXPECT_EQ(kernel.nextNote(0), 12 + 7);
    EXPECT_EQ(kernel.lastPitchClass, 7);
    EXPECT_EQ(kernel.rngState, random) << "nothing to draw";
    for (int i = 0; i < 1000; ++i) {
        static_cast<void>(kernel.nextNote(0));
        ASSERT_FALSE(isOutsider()) << "the chain goes on within the scale";
    }
    EXPECT_NE(kernel.rngState, random);
}

TEST(KernelNotes, BoredomThatIsNoNumberCountsAsZero)
{
    VelotrineDSPKernel kernel;
    VelotrineDSPKernel other;
    kernel.boredom = notANumber;
    other.boredom = 0.0f;
    EXPECT_EQ(drawnNotes(kernel, 500), drawnNotes(other, 500));
}

TEST(KernelNotesDeathTest, ARootOrScaleThatIsNoWholeNumberStopsTheProgramWhenANoteIsChosen)
{
    for (const float value : {notANumber, infinity, -infinity, 1.0e19f, -1.0e19f}) {
        SCOPED_TRACE(value);
        VelotrineDSPKernel withRoot;
        withRoot.setParameter(addressOf(GlobalParameter::rootNote), value);
        EXPECT_DEATH(static_cast<void>(withRoot.nextNote(0)), "velotrine: fatal");
        VelotrineDSPKernel withScale;
        withScale.setParameter(addressOf(GlobalParameter::scaleType), value);
        EXPECT_DEATH(static_cast<void>(withScale.nextNote(0)), "velotrine: fatal");
    }
}

TEST(KernelNotesDeathTest, ARingThatThereIsNotStopsTheProgram)
{
    VelotrineDSPKernel kernel;
    setUp(kernel);
    for (const std::int64_t ring : {std::int64_t{-1}, std::int64_t{5}, INT64_MIN, INT64_MAX}) {
        EXPECT_DEATH(static_cast<void>(kernel.nextNote(ring)), "velotrine: fatal");
        EXPECT_DEATH(kernel.triggerVoice(ring), "velotrine: fatal");
    }
}

TEST(KernelNotesDeathTest, ANoteBeforeSetupStopsTheProgram)
{
    VelotrineDSPKernel kernel;
    EXPECT_DEATH(kernel.triggerVoice(0), "velotrine: fatal");
}

TEST(KernelNotesDeathTest, ATimbreThatIsNoNumberStopsTheProgramWhenANoteStarts)
{
    VelotrineDSPKernel kernel;
    setUp(kernel);
    kernel.ringTimbres[2] = notANumber;
    EXPECT_DEATH(kernel.triggerVoice(2), "velotrine: fatal");
}

TEST(KernelNotesDeathTest, AnOctaveTooHighForAnyNoteStopsTheProgram)
{
    VelotrineDSPKernel kernel;
    kernel.ringOctaves[0] = INT64_MAX / 12;
    EXPECT_DEATH(static_cast<void>(kernel.nextNote(0)), "velotrine: fatal");
    kernel.ringOctaves[0] = INT64_MIN;
    EXPECT_DEATH(static_cast<void>(kernel.nextNote(0)), "velotrine: fatal");
}

TEST(KernelNotes, AnOctaveIsTwiceTheFrequencyAndNote69Is440Hertz)
{
    struct Case
    {
        std::int64_t octave;
        double frequency;
    };

    for (const auto& [octave, frequency] :
         {Case{5, 440.0}, Case{6, 880.0}, Case{4, 220.0}, Case{0, 13.75}, Case{-1, 6.875}, Case{9, 7040.0}}) {
        VelotrineDSPKernel kernel;
        setUp(kernel);
        kernel.ringOctaves[3] = octave;
        forceNextPitchClass(kernel, 9);
        EXPECT_EQ(triggered(kernel, 3).carrierFreq, frequency);
    }
    VelotrineDSPKernel kernel;
    setUp(kernel);
    kernel.ringOctaves[3] = 5;
    forceNextPitchClass(kernel, 0);
    EXPECT_NEAR(triggered(kernel, 3).carrierFreq, 261.6255653005986, 1.0e-10) << "middle C";
}

TEST(KernelNotes, TheGainIsTheSquareOfTheRingsVolume)
{
    VelotrineDSPKernel kernel;
    setUp(kernel);
    kernel.ringVolumes[1] = 0.5f;
    kernel.ringVolumes[2] = -0.5f;
    kernel.ringVolumes[3] = 1.0f;
    kernel.ringVolumes[4] = 0.0f;
    EXPECT_EQ(triggered(kernel, 0).gain, 0.7f * 0.7f);
    EXPECT_EQ(triggered(kernel, 1).gain, 0.25f);
    EXPECT_EQ(triggered(kernel, 2).gain, 0.25f);
    EXPECT_EQ(triggered(kernel, 3).gain, 1.0f);
    EXPECT_EQ(triggered(kernel, 4).gain, 0.0f);
}

TEST(KernelNotes, ASilentNoteHoldsItsVoiceForItsWholeDecay)
{
    test::PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.internalPlaying = false;
    kernel.ringVolumes[1] = 0.0f;
    kernel.ringTimbres[1] = 1.0f;
    kernel.triggerVoice(1);
    playing.run(4700, 100);
    EXPECT_TRUE(kernel.voicePool->voices[0].active);
    EXPECT_EQ(kernel.voicePool->triggerOrder.size(), 1U);
    playing.run(200, 100);
    EXPECT_FALSE(kernel.voicePool->voices[0].active);
    EXPECT_EQ(kernel.voicePool->triggerOrder.size(), 0U);
    for (const float sample : playing.left)
        ASSERT_EQ(sample, 0.0f);
}

TEST(KernelNotes, DrudgeryFeedsBackThreeQuartersAtMostWithinItsRange)
{
    struct Case
    {
        float drudgery;
        float feedback;
    };

    for (const auto& [drudgery, feedback] :
         {Case{1.0f, 0.75f}, Case{0.0f, 0.0f}, Case{0.5f, 0.375f}, Case{2.0f, 1.0f}, Case{-1.0f, 0.0f},
          Case{infinity, 1.0f}, Case{-infinity, 0.0f}, Case{notANumber, 0.0f}}) {
        VelotrineDSPKernel kernel;
        setUp(kernel);
        kernel.drudgery = drudgery;
        EXPECT_EQ(triggered(kernel, 0).feedback, feedback) << drudgery;
    }
}

TEST(KernelNotes, TheRingsTimbreShapesItsNotes)
{
    struct Case
    {
        float timbre;
        double modRatio;
        float modIndex;
        double decaySeconds;
    };

    for (const auto& [timbre, modRatio, modIndex, decaySeconds] :
         {Case{0.0f, 1.0, 0.5f, 1.2}, Case{0.125f, 1.25, 1.0f, 1.0}, Case{1.0f, 5.0, 6.0f, 0.1},
          Case{1.7f, 5.0, 6.0f, 0.1}, Case{-0.3f, 1.0, 0.5f, 1.2}, Case{infinity, 5.0, 6.0f, 0.1},
          Case{-infinity, 1.0, 0.5f, 1.2}}) {
        SCOPED_TRACE(timbre);
        VelotrineDSPKernel kernel;
        setUp(kernel);
        kernel.ringTimbres[2] = timbre;
        const auto& voice = triggered(kernel, 2);
        EXPECT_EQ(voice.ring, 2);
        EXPECT_EQ(voice.modRatio, modRatio);
        EXPECT_EQ(voice.modIndex, modIndex);
        EXPECT_EQ(voice.currentModIndex, modIndex);
        const double samples = decaySeconds * 48000.0;
        EXPECT_FLOAT_EQ(voice.decayRate, static_cast<float>(std::pow(0.001, 1.0 / samples)));
        EXPECT_FLOAT_EQ(voice.modDecayRate, static_cast<float>(std::pow(0.001, 1.5 / samples)));
    }
}

TEST(KernelNotes, TheSeventeenthNoteTakesTheOldestVoice)
{
    VelotrineDSPKernel kernel;
    setUp(kernel);
    for (int i = 0; i < 16; ++i)
        kernel.triggerVoice(i % 5);
    kernel.triggerVoice(4);
    const auto& order = kernel.voicePool->triggerOrder;
    ASSERT_EQ(order.size(), 16U);
    EXPECT_EQ(order[0], 1);
    EXPECT_EQ(order[15], 0);
    EXPECT_EQ(kernel.voicePool->voices[0].ring, 4);
}

TEST(KernelNotes, AfterACycleTheOrderHoldsOnlySoundingVoicesAndTheLowestFreeOneIsNext)
{
    test::PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.internalPlaying = false;
    kernel.ringTimbres[0] = 0.0f;
    kernel.ringTimbres[1] = 1.0f;
    for (const std::int64_t ring : {0, 0, 1, 0, 0, 1, 0})
        kernel.triggerVoice(ring);
    playing.run(5000, 500);
    const auto& order = kernel.voicePool->triggerOrder;
    EXPECT_EQ(std::vector<int>(order.begin(), order.end()), (std::vector<int>{0, 1, 3, 4, 6}));
    kernel.triggerVoice(0);
    EXPECT_EQ(order[5], 2);
}

TEST(KernelNotes, ANoteSoundsFromTheFirstFrameOfTheCallInWhichItFires)
{
    test::PlayingKernel playing;
    playing.playOnlyRing(4, 4);
    playing.run(512, 512);
    ASSERT_EQ(playing.notes.size(), 1U);
    ASSERT_EQ(playing.notes[0].frame, 95);
    // Frame 0 is the sine's own 0.
    for (std::size_t frame = 1; frame < 20; ++frame)
        EXPECT_NE(playing.left[frame], 0.0f);
}

TEST(KernelOutput, IsTheSoftClippedMixAlikeOnBothChannels)
{
    for (const float volume : {0.0f, 0.3f, 0.8f, 1.0f, 25.0f}) {
        test::PlayingKernel playing;
        auto& kernel = playing.kernel;
        kernel.internalPlaying = false;
        kernel.volume = volume;
        std::vector<float> mix(1000, 0.0f);
        for (int i = 0; i < 5; ++i)
            kernel.triggerVoice(i);
        for (auto voice : kernel.voicePool->voices)
            voice.render(mix.data(), 1000);
        playing.run(1000, 1000);
        for (std::size_t i = 0; i < mix.size(); ++i)
            ASSERT_NEAR(playing.left[i], std::tanh(volume * mix[i]),
                        3.0e-7 + 3.0e-6 * static_cast<double>(volume));
        ASSERT_EQ(playing.left, playing.right);
    }
}

TEST(KernelOutput, TheMixIsSilentInACallInWhichNothingSounds)
{
    test::PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.internalPlaying = false;
    kernel.ringTimbres[2] = 1.0f;
    kernel.triggerVoice(2);
    playing.run(8192, 8192);
    ASSERT_TRUE(kernel.voicePool->isSilent());
    ASSERT_NE(kernel.scratchBuf[100], 0.0f);
    const float beyond = kernel.scratchBuf[1000];
    playing.run(1000, 1000);
    EXPECT_TRUE(std::all_of(kernel.scratchBuf.begin(), kernel.scratchBuf.begin() + 1000,
                            [](float sample) { return sample == 0.0f; }));
    EXPECT_EQ(kernel.scratchBuf[1000], beyond) << "beyond the call";
}

TEST(KernelOutput, AProductThatIsNotFiniteIsSilent)
{
    const std::vector<float> silence(200, 0.0f);
    for (const float volume : {infinity, -infinity, notANumber}) {
        test::PlayingKernel playing;
        playing.kernel.internalPlaying = false;
        playing.kernel.volume = volume;
        playing.kernel.triggerVoice(0);
        playing.run(200, 100);
        EXPECT_EQ(playing.left, silence);
        EXPECT_EQ(playing.right, silence);
    }
    for (const float ringVolume : {infinity, notANumber, 1.0e30f}) {
        test::PlayingKernel playing;
        playing.kernel.internalPlaying = false;
        playing.kernel.ringVolumes[0] = ringVolume;
        playing.kernel.triggerVoice(0);
        playing.kernel.triggerVoice(1);
        playing.run(200, 100);
        for (std::size_t i = 1; i < 200; ++i)
            ASSERT_EQ(playing.left[i], 0.0f) << i;
        EXPECT_EQ(playing.left, playing.right);
    }
}

} // namespace
} // namespace velotrine
