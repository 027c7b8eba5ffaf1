// Notes played alone where feedback makes them chaotic: one float of a modulator rounded the other way grows
// until it is heard.

#include "engine/FMVoice.h"
#include "engine/Timbre.h"
#include "tests/reference/ScalarTranscription.h"
#include "tests/support/EachSimdTarget.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double sampleRate = 48000.0;
constexpr int block = 512;

struct Note
{
    int midiNote;
    float timbre;
    float drudgery;
};

/// Of the two highest octaves, with every timbre, in the last eighth of Drudgery. The same on every machine.
Note drawNote(std::mt19937& generator)
{
    const auto below = [&](unsigned count) { return static_cast<float>(generator() % count); };
    return {.midiNote = 72 + static_cast<int>(generator() % 24),
            .timbre = below(101) / 100.0f,
            .drudgery = 0.875f + 0.125f * below(1001) / 1000.0f};
}

FMVoice startedVoice(const Note& note)
{
    FMVoice voice;
    voice.sampleRate = sampleRate;
    const auto timbre = timbreParameters(note.timbre);
    voice.start({.ring = 0,
                 .frequency = 440.0 * std::pow(2.0, (note.midiNote - 69) / 12.0),
                 .modRatio = timbre.modRatio,
                 .modIndex = timbre.modIndex,
                 .decaySeconds = timbre.decaySeconds,
                 .gain = 1.0f,
                 .feedback = note.drudgery * 0.75f});
    return voice;
}

reference::ScalarVoice plainVoice(const FMVoice& voice)
{
    reference::ScalarVoice plain;
    plain.active = true;
    plain.amplitude = voice.amplitude;
    plain.sampleRate = voice.sampleRate;
    plain.carrierFreq = voice.carrierFreq;
    plain.modRatio = voice.modRatio;
    plain.modIndex = voice.modIndex;
    plain.decayRate = voice.decayRate;
    plain.modDecayRate = voice.modDecayRate;
    plain.feedback = voice.feedback;
    plain.gain = voice.gain;
    plain.currentModIndex = voice.currentModIndex;
    return plain;
}

float largestDifference(const Note& note)
{
    auto voice = startedVoice(note);
    auto plain = plainVoice(voice);
    float largest = 0.0f;
    std::vector<float> expected(block);
    std::vector<float> heard(block);
    while (plain.active) {
        std::ranges::fill(expected, 0.0f);
        std::ranges::fill(heard, 0.0f);
        plain.render(expected.data(), block);
        voice.render(heard.data(), block);
        for (std::size_t i = 0; i < heard.size(); ++i)
            largest = std::max(largest, std::abs(heard[i] - expected[i]));
    }
    return largest;
}

TEST(HighNotesNearFullDrudgery, PlayedAloneFollowThePlainCodeOnEveryInstructionSet)
{
    constexpr int notes = 300;
    test::onEachSimdTarget([] {
        std::mt19937 generator(1);
        for (int i = 0; i < notes; ++i) {
            const auto note = drawNote(generator);
            EXPECT_LT(largestDifference(note), 2.0e-6f)
                << "note " << note.midiNote << ", timbre " << note.timbre << ", Drudgery " << note.drudgery;
        }
    });
}

} // namespace
} // namespace velotrine
