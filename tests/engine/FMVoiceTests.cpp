#include "engine/FMVoice.h"

#include "engine/VoiceBatch.h"
#include "tests/support/EachSimdTarget.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <span>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double sampleRate = 48000.0;

constexpr FMVoice::Note plainNote{.ring = 3,
                                  .frequency = 440.0,
                                  .modRatio = 1.5,
                                  .modIndex = 2.5f,
                                  .decaySeconds = 0.5f,
                                  .gain = 0.49f,
                                  .feedback = 0.375f};

FMVoice started(const FMVoice::Note& note)
{
    FMVoice voice;
    voice.sampleRate = sampleRate;
    voice.start(note);
    return voice;
}

std::vector<float> rendered(FMVoice& voice, int frames)
{
    std::vector<float> buffer(static_cast<std::size_t>(frames), 0.0f);
    voice.render(buffer.data(), frames);
    return buffer;
}

/// How far apart two phases are, the shorter way round, in turns.
double distanceInTurns(double a, double b)
{
    const double apart = std::abs(a - b);
    return std::min(apart, 1.0 - apart);
}

TEST(FMVoice, StartSetsAllThatANoteNeeds)
{
    FMVoice voice;
    voice.sampleRate = sampleRate;
    voice.carrierPhase = 0.3;
    voice.modPhase = 0.4;
    voice.amplitude = 0.2f;
    voice.lastMod1 = 0.5f;
    voice.lastMod2 = 0.6f;
    voice.start(plainNote);
    EXPECT_TRUE(voice.active);
    EXPECT_EQ(voice.ring, 3);
    EXPECT_EQ(voice.carrierPhase, 0.0);
    EXPECT_EQ(voice.modPhase, 0.0);
    EXPECT_EQ(voice.amplitude, 1.0f);
    EXPECT_EQ(voice.carrierFreq, 440.0);
    EXPECT_EQ(voice.modRatio, 1.5);
    EXPECT_EQ(voice.modIndex, 2.5f);
    EXPECT_EQ(voice.currentModIndex, 2.5f);
    EXPECT_EQ(voice.gain, 0.49f);
    EXPECT_EQ(voice.feedback, 0.375f);
    EXPECT_EQ(voice.lastMod1, 0.0f);
    EXPECT_EQ(voice.lastMod2, 0.0f);
    EXPECT_EQ(voice.sampleRate, sampleRate);
}

TEST(FMVoice, RatesReachSixtyDecibelsInTheDecayTimeAndInTwoThirdsOfIt)
{
    // A tenth of a second at 48 kHz is 4800 samples.
    auto note = plainNote;
    note.decaySeconds = 0.1f;
    const auto voice = started(note);
    EXPECT_FLOAT_EQ(voice.decayRate, static_cast<float>(std::pow(0.001, 1.0 / 4800.0)));
    EXPECT_FLOAT_EQ(voice.modDecayRate, static_cast<float>(std::pow(0.001, 1.0 / 3200.0)));
}

TEST(FMVoice, PhasesMoveByTheFrequenciesOverTheSampleRate)
{
    test::onEachSimdTarget([] {
        for (const int frames : {1, 2, 15, 16, 17, 100, 1000}) {
            auto voice = started(plainNote);
            rendered(voice, frames);
            const double carrier = 440.0 * frames / sampleRate;
            const double mod = 440.0 * 1.5 * frames / sampleRate;
            EXPECT_LT(distanceInTurns(voice.carrierPhase, carrier - std::floor(carrier)), 1.0e-12);
            EXPECT_LT(distanceInTurns(voice.modPhase, mod - std::floor(mod)), 1.0e-12);
            EXPECT_GE(voice.carrierPhase, 0.0);
            EXPECT_LT(voice.carrierPhase, 1.0);
            EXPECT_GE(voice.modPhase, 0.0);
            EXPECT_LT(voice.modPhase, 1.0);
        }
    });
}

TEST(FMVoice, AmplitudeAndIndexAreMultipliedByTheirRatesEachSample)
{
    test::onEachSimdTarget([] {
        auto voice = started(plainNote);
        float amplitude = 1.0f;
        float index = 2.5f;
        for (const int frames : {1, 3, 64, 200}) {
            rendered(voice, frames);
            for (int i = 0; i < frames; ++i) {
                amplitude *= voice.decayRate;
                index *= voice.modDecayRate;
            }
            EXPECT_EQ(voice.amplitude, amplitude);
            EXPECT_EQ(voice.currentModIndex, index);
        }
        EXPECT_EQ(voice.modIndex, 2.5f);
    });
}

TEST(FMVoice, WithoutModulationItIsADecayingSine)
{
    test::onEachSimdTarget([] {
        auto note = plainNote;
        note.modIndex = 0.0f;
        auto voice = started(note);
        const auto samples = rendered(voice, 2000);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const auto frame = static_cast<double>(i);
            const double envelope = 0.49 * std::pow(0.001, frame / (0.5 * sampleRate));
            const double expected = envelope * std::sin(2.0 * std::numbers::pi * 440.0 * frame / sampleRate);
            ASSERT_NEAR(samples[i], expected, 2.0e-5) << "frame " << i;
        }
    });
}

TEST(FMVoice, WithoutFeedbackTheModulatorIsAPlainSine)
{
    test::onEachSimdTarget([] {
        auto note = plainNote;
        note.feedback = 0.0f;
        auto voice = started(note);
        const auto samples = rendered(voice, 2000);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const auto frame = static_cast<double>(i);
            const double radians = 2.0 * std::numbers::pi * 440.0 * frame / sampleRate;
            const double envelope = 0.49 * std::pow(0.001, frame / (0.5 * sampleRate));
            const double index = 2.5 * std::pow(0.001, 1.5 * frame / (0.5 * sampleRate));
            const double expected = envelope * std::sin(radians + index * std::sin(1.5 * radians));
            ASSERT_NEAR(samples[i], expected, 5.0e-5) << "frame " << i;
        }
        const double last = 2.0 * std::numbers::pi * 660.0 * 1999.0 / sampleRate;
        EXPECT_NEAR(voice.lastMod1, std::sin(last), 1.0e-6);
    });
}

TEST(FMVoice, TheModulatorIsPushedByTheMeanOfItsLastTwoSamples)
{
    constexpr double feedbackAtOne = 4.712389; // three quarters of a turn, in radians
    test::onEachSimdTarget([] {
        auto voice = started(plainNote);
        double last1 = 0.0;
        double last2 = 0.0;
        for (int i = 0; i < 60; ++i) {
            const double phase = 2.0 * std::numbers::pi * 660.0 * i / sampleRate;
            const double mod = std::sin(phase + 0.375 * feedbackAtOne * (last1 + last2) / 2.0);
            rendered(voice, 1);
            ASSERT_NEAR(voice.lastMod1, mod, 2.0e-6) << "sample " << i;
            ASSERT_NEAR(voice.lastMod2, last1, 2.0e-6) << "sample " << i;
            last2 = last1;
            last1 = mod;
        }
    });
}

TEST(FMVoice, AddsToWhatTheBufferHolds)
{
    auto voice = started(plainNote);
    auto again = voice;
    const auto alone = rendered(voice, 50);
    std::vector<float> buffer(50, 0.25f);
    again.render(buffer.data(), 50);
    for (std::size_t i = 0; i < buffer.size(); ++i)
        EXPECT_NEAR(buffer[i], 0.25f + alone[i], 1.0e-7f);
}

TEST(FMVoice, ANoteIsTheSameInOneCallAndInMany)
{
    test::onEachSimdTarget([] {
        auto whole = started(plainNote);
        auto pieces = whole;
        const auto expected = rendered(whole, 1000);
        std::vector<float> samples;
        for (int length = 1; samples.size() < expected.size(); length = length % 37 + 1) {
            const auto left = static_cast<int>(expected.size() - samples.size());
            const auto piece = rendered(pieces, std::min(length, left));
            samples.insert(samples.end(), piece.begin(), piece.end());
        }
        for (std::size_t i = 0; i < expected.size(); ++i)
            ASSERT_NEAR(samples[i], expected[i], 1.0e-6f) << "frame " << i;
        EXPECT_EQ(pieces.amplitude, whole.amplitude);
    });
}

TEST(FMVoice, OneVoiceSoundsAloneAsInCompany)
{
    test::onEachSimdTarget([] {
        for (int company = 2; company <= maxBatchVoices; ++company) {
            // All but one are muted, so that what is heard is the one.
            for (int heard = 0; heard < company; ++heard) {
                std::vector<FMVoice> voices;
                std::vector<FMVoice*> batch;
                for (int i = 0; i < company; ++i) {
                    auto note = plainNote;
                    note.frequency = 55.0 * (i + 1);
                    note.gain = i == heard ? 0.8f : 0.0f;
                    note.feedback = 0.04f * static_cast<float>(i);
                    voices.push_back(started(note));
                }
                batch.reserve(voices.size());
                for (auto& voice : voices)
                    batch.push_back(&voice);
                auto alone = voices[static_cast<std::size_t>(heard)];
                const auto expected = rendered(alone, 60);
                std::vector<float> samples(60, 0.0f);
                renderVoices(batch, samples.data(), 60);
                for (std::size_t i = 0; i < samples.size(); ++i)
                    ASSERT_NEAR(samples[i], expected[i], 1.0e-6f) << heard << " of " << company;
                const auto& inCompany = voices[static_cast<std::size_t>(heard)];
                ASSERT_NEAR(inCompany.carrierPhase, alone.carrierPhase, 1.0e-12);
                ASSERT_NEAR(inCompany.lastMod1, alone.lastMod1, 1.0e-6f);
            }
        }
    });
}

TEST(FMVoice, NoFramesChangeNoSampleAndNoPhase)
{
    test::onEachSimdTarget([] {
        auto voice = started(plainNote);
        rendered(voice, 77);
        const auto before = voice;
        float untouched = 0.125f;
        voice.render(&untouched, 0);
        EXPECT_EQ(untouched, 0.125f);
        EXPECT_TRUE(voice.active);
        EXPECT_EQ(voice.carrierPhase, before.carrierPhase);
        EXPECT_EQ(voice.modPhase, before.modPhase);
        EXPECT_EQ(voice.amplitude, before.amplitude);
        EXPECT_EQ(voice.currentModIndex, before.currentModIndex);
        EXPECT_EQ(voice.lastMod1, before.lastMod1);
        EXPECT_EQ(voice.lastMod2, before.lastMod2);
    });
}

TEST(FMVoice, NoFramesStillEndANoteThatHasFallenSilent)
{
    auto voice = started(plainNote);
    voice.amplitude = std::nextafter(0.001f, 0.0f);
    voice.render(nullptr, 0);
    EXPECT_FALSE(voice.active);
}

TEST(FMVoice, AmplitudeOfExactlyTheFloorStillSounds)
{
    auto voice = started(plainNote);
    voice.amplitude = 0.001f;
    voice.render(nullptr, 0);
    EXPECT_TRUE(voice.active);
}

TEST(FMVoice, EndsWithTheCallInWhichItFallsBelowTheFloor)
{
    auto note = plainNote;
    note.decaySeconds = 0.1f;
    for (const int block : {1, 7, 64, 512, 4096}) {
        SCOPED_TRACE(block);
        auto voice = started(note);
        std::int64_t frames = 0;
        while (voice.active && frames < 20000) {
            EXPECT_GE(voice.amplitude, 0.001f);
            rendered(voice, block);
            frames += block;
        }
        EXPECT_LT(voice.amplitude, 0.001f);
        // 4800 samples, give or take what thousands of roundings of the amplitude come to.
        EXPECT_GT(frames, 4790);
        EXPECT_LT(frames - block, 4810);
    }
}

TEST(FMVoice, ALongCallIsRenderedToItsEndThoughTheNoteFallsSilentWithin)
{
    auto note = plainNote;
    note.decaySeconds = 0.01f;
    auto voice = started(note);
    const auto samples = rendered(voice, 600);
    EXPECT_FALSE(voice.active);
    EXPECT_TRUE(
        std::any_of(samples.begin() + 500, samples.end(), [](float sample) { return sample != 0.0f; }));
}

TEST(FMVoice, AnInactiveVoiceDoesNothing)
{
    auto voice = started(plainNote);
    voice.active = false;
    EXPECT_EQ(rendered(voice, 64), std::vector<float>(64, 0.0f));
    EXPECT_EQ(voice.amplitude, 1.0f);
    EXPECT_EQ(voice.carrierPhase, 0.0);
}

TEST(FMVoiceDeathTest, ANegativeNumberOfFramesStopsTheProgram)
{
    auto voice = started(plainNote);
    float sample = 0.0f;
    EXPECT_DEATH(voice.render(&sample, -1), "velotrine: fatal");
    voice.active = false;
    EXPECT_DEATH(voice.render(&sample, -1), "velotrine: fatal");
}

} // namespace
} // namespace velotrine
