#include "engine/VoicePool.h"

#include "engine/VelotrineDSPKernel.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr double sampleRate = 48000.0;

FMVoice::Note noteOf(float decaySeconds, std::int64_t ring = 0)
{
    return {.ring = ring,
            .frequency = 440.0,
            .modRatio = 2.0,
            .modIndex = 3.0f,
            .decaySeconds = decaySeconds,
            .gain = 0.25f,
            .feedback = 0.0f};
}

/// Starts a note as the kernel does. Returns the voice's index.
int startNote(VoicePool& pool, float decaySeconds = 0.5f)
{
    auto& voice = pool.allocate();
    voice.start(noteOf(decaySeconds));
    return static_cast<int>(&voice - pool.voices.data());
}

std::vector<int> orderOf(const VoicePool& pool)
{
    return {pool.triggerOrder.begin(), pool.triggerOrder.end()};
}

/// One render cycle of the pool.
void renderCycle(VoicePool& pool, int frames)
{
    std::vector<float> buffer(static_cast<std::size_t>(frames), 0.0f);
    pool.render(buffer.data(), frames);
    pool.forgetSilentVoices();
}

TEST(VoicePool, IsMadeOfSixteenSilentVoicesWithTheirStartingValues)
{
    const VoicePool pool(sampleRate);
    ASSERT_EQ(pool.voices.size(), 16U);
    for (const auto& voice : pool.voices) {
        EXPECT_FALSE(voice.active);
        EXPECT_EQ(voice.ring, 0);
        EXPECT_EQ(voice.carrierPhase, 0.0);
        EXPECT_EQ(voice.modPhase, 0.0);
        EXPECT_EQ(voice.amplitude, 0.0f);
        EXPECT_EQ(voice.sampleRate, sampleRate);
        EXPECT_EQ(voice.carrierFreq, 440.0);
        EXPECT_EQ(voice.modRatio, 2.0);
        EXPECT_EQ(voice.modIndex, 3.0f);
        EXPECT_EQ(voice.decayRate, 0.9997f);
        EXPECT_EQ(voice.modDecayRate, 0.9995f);
        EXPECT_EQ(voice.feedback, 0.0f);
        EXPECT_EQ(voice.gain, 1.0f);
        EXPECT_EQ(voice.currentModIndex, 0.0f);
        EXPECT_EQ(voice.lastMod1, 0.0f);
        EXPECT_EQ(voice.lastMod2, 0.0f);
    }
    EXPECT_THAT(orderOf(pool), IsEmpty());
    EXPECT_TRUE(pool.isSilent());
}

TEST(VoicePool, NotesTakeTheFreeVoicesFromTheFirstUpwards)
{
    VoicePool pool(sampleRate);
    for (int expected = 0; expected < 16; ++expected)
        EXPECT_EQ(startNote(pool), expected);
    EXPECT_THAT(orderOf(pool), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    EXPECT_FALSE(pool.isSilent());
}

TEST(VoicePool, TheSeventeenthNoteTakesTheFrontOfTheOrderAndMovesItToTheBack)
{
    VoicePool pool(sampleRate);
    for (int i = 0; i < 16; ++i)
        startNote(pool);
    pool.voices[0].amplitude = 0.5f;
    pool.voices[0].carrierPhase = 0.25;

    EXPECT_EQ(startNote(pool), 0);
    EXPECT_THAT(orderOf(pool), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0));
    EXPECT_EQ(pool.voices[0].amplitude, 1.0f) << "cut off at once, without a fade";
    EXPECT_EQ(pool.voices[0].carrierPhase, 0.0);
    EXPECT_EQ(startNote(pool), 1);
}

TEST(VoicePool, VoicesThatFallSilentLeaveTheOrderAndTheLowestIsTakenNext)
{
    VoicePool pool(sampleRate);
    for (int i = 0; i < 8; ++i)
        startNote(pool, i == 2 || i == 5 ? 0.01f : 1.0f);
    renderCycle(pool, 512);
    EXPECT_THAT(orderOf(pool), ElementsAre(0, 1, 3, 4, 6, 7));
    EXPECT_EQ(startNote(pool), 2);
    EXPECT_THAT(orderOf(pool), ElementsAre(0, 1, 3, 4, 6, 7, 2));
    EXPECT_EQ(startNote(pool), 5);
}

TEST(VoicePool, AVoiceThatFallsSilentIsFreeOnlyFromTheNextRenderOn)
{
    VoicePool pool(sampleRate);
    for (int i = 0; i < 16; ++i)
        startNote(pool, i == 9 ? 0.01f : 1.0f);
    renderCycle(pool, 100);
    EXPECT_EQ(startNote(pool), 0) << "the short note still sounds, and the oldest is taken";
    renderCycle(pool, 500);
    EXPECT_EQ(startNote(pool), 9);
}

TEST(VoicePool, AStealNeverTakesAVoiceStartedLaterThanAnotherStillSounding)
{
    VoicePool pool(sampleRate);
    std::mt19937 random(71);
    std::uniform_real_distribution<float> decay(0.005f, 0.25f);
    std::uniform_int_distribution<int> frames(0, 900);
    std::uniform_int_distribution<int> notes(0, 9);
    std::vector<std::int64_t> startedAt(16, -1);
    std::int64_t now = 0;
    int steals = 0;
    int freeVoices = 0;

    for (int cycle = 0; cycle < 2000; ++cycle) {
        for (int left = notes(random); left > 0; --left) {
            const bool allSound = std::ranges::all_of(pool.voices, &FMVoice::active);
            std::ptrdiff_t expected = 0;
            if (allSound)
                expected = std::ranges::min_element(startedAt) - startedAt.begin();
            else
                expected = std::ranges::find(pool.voices, false, &FMVoice::active) - pool.voices.begin();
            ++(allSound ? steals : freeVoices);
            const int taken = startNote(pool, decay(random));
            ASSERT_EQ(taken, expected);
            startedAt[static_cast<std::size_t>(taken)] = ++now;
        }
        renderCycle(pool, frames(random));

        // The order holds the sounding voices, each once, the oldest note first.
        std::vector<int> sounding;
        for (int voice = 0; voice < 16; ++voice)
            if (pool.voices[static_cast<std::size_t>(voice)].active)
                sounding.push_back(voice);
        std::ranges::sort(sounding, {},
                          [&](int voice) { return startedAt[static_cast<std::size_t>(voice)]; });
        ASSERT_THAT(orderOf(pool), ElementsAreArray(sounding));
    }
    EXPECT_GT(steals, 1000);
    EXPECT_GT(freeVoices, 1000);
}

TEST(VoicePool, SilenceCutsOffAllNotesAndTheNextOnesAreTheFirstAgain)
{
    VoicePool pool(sampleRate);
    for (int i = 0; i < 11; ++i)
        startNote(pool);
    pool.silence();
    EXPECT_TRUE(pool.isSilent());
    EXPECT_THAT(orderOf(pool), IsEmpty());

    std::vector<float> buffer(100, 0.5f);
    pool.render(buffer.data(), 100);
    EXPECT_EQ(buffer, std::vector<float>(100, 0.5f));

    startNote(pool);
    startNote(pool);
    EXPECT_THAT(orderOf(pool), ElementsAre(0, 1));
}

TEST(VoicePool, RenderAddsAllSoundingVoicesToTheBuffer)
{
    VoicePool pool(sampleRate);
    constexpr int frames = 100;
    std::vector<float> expected(frames, 0.5f);
    for (int i = 0; i < 11; ++i) {
        auto note = noteOf(0.3f, i % 5);
        note.frequency = 110.0 + 37.0 * i;
        auto& voice = pool.allocate();
        voice.start(note);
        FMVoice alone = voice;
        alone.render(expected.data(), frames);
    }
    std::vector<float> mix(frames, 0.5f);
    pool.render(mix.data(), frames);
    for (std::size_t i = 0; i < mix.size(); ++i)
        ASSERT_NEAR(mix[i], expected[i], 2.0e-6f) << "frame " << i;
    EXPECT_NE(mix, std::vector<float>(frames, 0.5f));
}

TEST(VoicePoolDeathTest, AStealWithAnEmptyOrderStopsTheProgram)
{
    VoicePool pool(sampleRate);
    for (auto& voice : pool.voices)
        voice.start(noteOf(1.0f));
    EXPECT_DEATH(static_cast<void>(pool.allocate()), "velotrine: fatal");
    EXPECT_DEATH(pool.triggerOrder.takeFront(), "velotrine: fatal");

    VelotrineDSPKernel kernel;
    kernel.setup(64, sampleRate);
    for (auto& voice : kernel.voicePool->voices)
        voice.start(noteOf(1.0f));
    EXPECT_DEATH(kernel.triggerVoice(0), "velotrine: fatal");
}

TEST(VoicePoolDeathTest, ASeventeenthEntryInTheOrderStopsTheProgram)
{
    VoicePool pool(sampleRate);
    for (int i = 0; i < 16; ++i)
        pool.triggerOrder.append(i);
    EXPECT_DEATH(pool.triggerOrder.append(0), "velotrine: fatal");
}

} // namespace
} // namespace velotrine
