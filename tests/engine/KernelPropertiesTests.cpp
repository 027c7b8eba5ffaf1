#include "engine/VelotrineDSPKernel.h"

#include "tests/engine/PlayingKernel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using test::HeardNote;
using test::PlayingKernel;

constexpr double sampleRate = 48000.0;

/// A way to set the instrument up that is worth playing through.
struct Piece
{
    std::string name;
    std::function<void(VelotrineDSPKernel&)> prepare;
};

void followHost(VelotrineDSPKernel& kernel, double tempo, double beatsPerBar, double beatUnit)
{
    kernel.sync = true;
    kernel.hostPlaying = true;
    kernel.hostTempo = tempo;
    kernel.hostBeatsPerBar = beatsPerBar;
    kernel.hostBeatUnit = beatUnit;
}

const std::vector<Piece>& pieces()
{
    static const std::vector<Piece> all{
        {"as made", [](VelotrineDSPKernel&) {}},
        {"all motion at once",
         [](VelotrineDSPKernel& kernel) {
             kernel.bpm = 300.0f;
             kernel.activity = 1.0f;
             kernel.calories = 1.0f;
             kernel.boredom = 0.9f;
             for (std::size_t ring = 0; ring < 5; ++ring) {
                 kernel.spotCounts[ring] = 16;
                 kernel.probabilities[ring] = 0.9f;
                 kernel.phaseOffsets[ring] = 0.21f * static_cast<float>(ring);
             }
         }},
        {"seven eighths", [](VelotrineDSPKernel& kernel) { followHost(kernel, 173.3, 7.0, 8.0); }},
        {"a wobble that turns the hand back",
         [](VelotrineDSPKernel& kernel) {
             followHost(kernel, 61.7, 1.0, 4.0);
             kernel.calories = 1.0f;
             kernel.activity = 0.8f;
             kernel.spotCounts[1] = 1;
             kernel.spotCounts[3] = 2;
         }},
    };
    return all;
}

TEST(KernelProperties, NotesDoNotDependOnTheBlockSize)
{
    const std::vector<std::vector<int>> ways{{1},   {7},    {64},
                                             {512}, {8192}, {1, 8192, 3, 32, 511, 64, 1, 1000, 128, 2}};
    constexpr std::int64_t frames = 150000;
    for (const auto& piece : pieces()) {
        SCOPED_TRACE(piece.name);
        std::vector<HeardNote> expected;
        double clockPhase = 0.0;
        std::uint64_t random = 0;
        std::array<double, 5> rotations{};
        for (const auto& blocks : ways) {
            SCOPED_TRACE(testing::PrintToString(blocks));
            PlayingKernel playing;
            auto& kernel = playing.kernel;
            piece.prepare(kernel);
            playing.run(frames, blocks);
            if (expected.empty()) {
                expected = playing.notes;
                ASSERT_GT(expected.size(), 15U);
                clockPhase = kernel.clockPhase;
                random = kernel.rngState;
                std::copy(kernel.activityPhases.begin(), kernel.activityPhases.end(), rotations.begin());
            }
            EXPECT_EQ(playing.notes, expected);
            EXPECT_EQ(kernel.clockPhase, clockPhase);
            EXPECT_EQ(kernel.rngState, random);
            EXPECT_TRUE(std::equal(rotations.begin(), rotations.end(), kernel.activityPhases.begin()));
        }
    }
}

/// What a caller can change between two calls, so that the rings are no longer as the last call left them.
const std::vector<Piece>& changesBetweenCalls()
{
    static const std::vector<Piece> all{
        {"tempo", [](VelotrineDSPKernel& kernel) { kernel.bpm = 290.0f; }},
        {"activity", [](VelotrineDSPKernel& kernel) { kernel.activity = 0.3f; }},
        {"calories", [](VelotrineDSPKernel& kernel) { kernel.calories = 0.2f; }},
        {"offset", [](VelotrineDSPKernel& kernel) { kernel.phaseOffsets[2] = 0.37f; }},
        {"number of spots", [](VelotrineDSPKernel& kernel) { kernel.spotCounts[1] = 11; }},
        {"bar phase", [](VelotrineDSPKernel& kernel) { kernel.clockPhase = 0.612; }},
        {"rotation", [](VelotrineDSPKernel& kernel) { kernel.activityPhases[4] = 0.331; }},
        {"wobble", [](VelotrineDSPKernel& kernel) { kernel.lfoPhases[3] = 0.204; }},
        {"spot last crossed", [](VelotrineDSPKernel& kernel) { kernel.lastSpotIndex[0] = -1; }},
        {"where the hand stood", [](VelotrineDSPKernel& kernel) { kernel.lastRingPhase.fill(0.75); }},
        {"rings that know where they are",
         [](VelotrineDSPKernel& kernel) { kernel.ringInitialised.fill(false); }},
        {"a reset", [](VelotrineDSPKernel& kernel) { kernel.reset(); }},
    };
    return all;
}

/// A kernel goes on from call to call without looking at the rings anew, as long as nothing has changed. A
/// new one has to look at them.
TEST(KernelProperties, WhatIsChangedBetweenCallsCountsFromTheNextFrameOn)
{
    constexpr int block = 256;
    std::size_t notesHeard = 0;
    for (const auto& piece : pieces())
        for (const auto& change : changesBetweenCalls()) {
            SCOPED_TRACE(piece.name + ", " + change.name);
            PlayingKernel changed;
            piece.prepare(changed.kernel);
            for (int moment = 0; moment < 20; ++moment) {
                piece.prepare(changed.kernel);
                changed.run(std::int64_t{7} * block, block);
                PlayingKernel anew;
                piece.prepare(anew.kernel);
                for (ParameterAddress address = 0; address < parameterCount; ++address)
                    anew.kernel.setParameter(address, changed.kernel.parameter(address));
                anew.kernel.rngState = changed.kernel.rngState;
                anew.kernel.restore(changed.kernel.position());

                for (auto* const playing : {&changed, &anew}) {
                    change.prepare(playing->kernel);
                    playing->notes.clear();
                    playing->run(std::int64_t{8} * block, block);
                }
                for (auto& note : anew.notes)
                    note.frame += changed.frames() - anew.frames();
                ASSERT_EQ(changed.notes, anew.notes) << "moment " << moment;
                ASSERT_EQ(changed.kernel.rngState, anew.kernel.rngState) << "moment " << moment;
                notesHeard += anew.notes.size();
            }
        }
    EXPECT_GT(notesHeard, 1000U);
}

TEST(KernelProperties, ARunIsReproducibleToTheLastBit)
{
    constexpr std::array<int, 4> blocks{512, 33, 1, 700};
    for (const auto& piece : pieces()) {
        SCOPED_TRACE(piece.name);
        PlayingKernel first;
        PlayingKernel second;
        piece.prepare(first.kernel);
        piece.prepare(second.kernel);
        first.run(100000, blocks);
        second.run(100000, blocks);
        EXPECT_EQ(first.left, second.left);
        EXPECT_EQ(first.right, second.right);
        EXPECT_EQ(first.notes, second.notes);
        EXPECT_NE(first.left, std::vector<float>(100000, 0.0f));
    }
}

/// Where the five rings stand, in closed form: no sums, no blocks.
class RingsInClosedForm
{
public:
    RingsInClosedForm(const VelotrineDSPKernel& kernel, double tempo, double quartersPerBar)
        : barStep(tempo / (quartersPerBar * 60.0 * sampleRate)),
          activity(static_cast<double>(kernel.activity.load())), quarters(quartersPerBar),
          wobbleDepth(static_cast<double>(kernel.calories.load()) * 0.25 / (quarters * quarters))
    {
        for (std::size_t ring = 0; ring < 5; ++ring)
            offsets[ring] = std::max(static_cast<double>(kernel.phaseOffsets[ring].load()), 0.001);
    }

    /// Where the hand stands on the ring after `frames` frames, in turns.
    [[nodiscard]] double hand(std::size_t ring, std::int64_t frames) const
    {
        const double bars = static_cast<double>(frames) * barStep;
        const double direction = ring % 2 == 0 ? 1.0 : -1.0;
        const double fromOutside = 4.0 - static_cast<double>(ring);
        const double behind = 1.0 - std::pow(0.9, fromOutside);
        const double spread = 2.0 * std::max(activity - 0.5, 0.0);
        const double rotation = bars / quarters * activity * 0.25 * direction * (1.0 - spread * behind);
        const double cyclesPerBar = (8.0 * quarters - fromOutside) / 8.0;
        const double wobble =
            wobbleDepth * std::sin(2.0 * std::numbers::pi * cyclesPerBar * bars) * direction;
        const double turns = bars - offsets[ring] - rotation - wobble;
        return turns - std::floor(turns);
    }

private:
    double barStep;
    double activity;
    double quarters;
    double wobbleDepth;
    std::array<double, 5> offsets{};
};

struct Crossing
{
    std::int64_t frame;
    int ring;
    int spot;

    bool operator==(const Crossing&) const = default;
};

/// All crossings of a run, from a look at every ring in every frame.
std::vector<Crossing> crossingsOf(const VelotrineDSPKernel& kernel, const RingsInClosedForm& rings,
                                  std::int64_t frames)
{
    std::vector<Crossing> crossings;
    std::array<double, 5> lastHand{};
    std::array<std::int64_t, 5> lastSpot{};
    for (std::int64_t frame = 0; frame < frames; ++frame)
        for (std::size_t ring = 0; ring < 5; ++ring) {
            const double hand = rings.hand(ring, frame + 1);
            const double position = hand * static_cast<double>(kernel.spotCounts[ring]);
            EXPECT_GT(std::abs(position - std::round(position)), 1.0e-10) << "rounding decides";
            const auto spot = static_cast<std::int64_t>(position);
            const bool passedTheStart = lastHand[ring] > 0.5 && hand < 0.5;
            if (frame > 0 && (passedTheStart || spot != lastSpot[ring]))
                crossings.push_back({frame, static_cast<int>(ring), static_cast<int>(spot)});
            lastHand[ring] = hand;
            lastSpot[ring] = spot;
        }
    return crossings;
}

TEST(KernelProperties, EverySpotIsCrossedWhereTheRingsStandInClosedForm)
{
    struct Case
    {
        double tempo;
        double beatsPerBar;
        float activity;
        float calories;
    };

    // In bars of one or two quarters the wobble turns the hand back.
    for (const auto& [tempo, beatsPerBar, activity, calories] :
         {Case{121.0, 4.0, 1.0f, 0.0f}, Case{121.0, 4.0, 0.0f, 1.0f}, Case{287.3, 4.0, 1.0f, 1.0f},
          Case{143.9, 1.0, 0.7f, 1.0f}, Case{143.9, 2.0, 0.3f, 1.0f}, Case{97.1, 5.0, 0.9f, 0.6f}}) {
        SCOPED_TRACE(testing::Message() << tempo << " bpm, " << beatsPerBar << "/4");
        PlayingKernel playing;
        auto& kernel = playing.kernel;
        followHost(kernel, tempo, beatsPerBar, 4.0);
        kernel.activity = activity;
        kernel.calories = calories;
        for (std::size_t ring = 0; ring < 5; ++ring) {
            kernel.probabilities[ring] = 1.0f;
            kernel.spotCounts[ring] = std::array{1, 16, 2, 5, 11}[ring];
            kernel.phaseOffsets[ring] = std::array{0.0f, 0.13f, 0.5f, 0.777f, 0.99f}[ring];
        }
        constexpr std::int64_t frames = 200000;
        playing.run(frames, 512);
        std::vector<Crossing> heard;
        for (const auto& note : playing.notes)
            heard.push_back({note.frame, note.ring, note.spot});
        const auto expected = crossingsOf(kernel, RingsInClosedForm(kernel, tempo, beatsPerBar), frames);
        EXPECT_GT(expected.size(), 40U);
        ASSERT_EQ(heard.size(), expected.size());
        for (std::size_t i = 0; i < heard.size(); ++i)
            ASSERT_EQ(heard[i], expected[i]) << i << ": " << heard[i].frame << " for " << expected[i].frame;
    }
}

/// Someone who turns every knob, and stops and starts at any moment.
class Storm
{
public:
    explicit Storm(std::uint32_t seed) : random(seed) {}

    int drawBlock() { return drawInt(0, 3) == 0 ? drawInt(1, 8) : drawInt(1, 1024); }

    void change(VelotrineDSPKernel& kernel)
    {
        for (int changes = drawInt(0, 6); changes > 0; --changes) {
            const auto address = static_cast<ParameterAddress>(drawInt(0, 38));
            kernel.setParameter(address, drawValue(address));
        }
        if (drawInt(0, 19) == 0)
            kernel.internalPlaying = !kernel.internalPlaying;
        if (drawInt(0, 19) == 0)
            kernel.hostPlaying = !kernel.hostPlaying;
        if (drawInt(0, 9) == 0) {
            kernel.hostTempo = drawInt(0, 9) == 0 ? 0.0 : 20.0 + 480.0 * drawUnitInterval();
            kernel.hostBeatsPerBar = drawInt(2, 15);
            kernel.hostBeatUnit = 1 << drawInt(0, 2);
        }
        if (drawInt(0, 199) == 0)
            kernel.reset();
        if (drawInt(0, 399) == 0)
            kernel.setup(1024, 44100.0);
    }

private:
    int drawInt(int lowest, int highest)
    {
        return std::uniform_int_distribution<int>(lowest, highest)(random);
    }

    double drawUnitInterval() { return std::uniform_real_distribution<double>(0.0, 1.0)(random); }

    float drawValue(ParameterAddress address)
    {
        const auto unit = static_cast<float>(drawInt(0, 3) == 0 ? drawInt(0, 1) : drawUnitInterval());
        if (address == addressOf(GlobalParameter::rootNote))
            return 11.0f * unit;
        if (address == addressOf(GlobalParameter::scaleType))
            return 3.0f * unit;
        if (address == addressOf(GlobalParameter::bpm))
            return 40.0f + 260.0f * unit;
        if (address >= addressOf(RingParameter::spots, 0) && address <= addressOf(RingParameter::spots, 4))
            return 16.0f * unit;
        if (address >= addressOf(RingParameter::octave, 0) && address <= addressOf(RingParameter::octave, 4))
            return 8.0f * unit;
        return unit;
    }

    std::mt19937 random;
};

void expectWithinTurn(double phase)
{
    EXPECT_GE(phase, 0.0);
    EXPECT_LT(phase, 1.0);
}

void expectSound(const VelotrineDSPKernel& kernel)
{
    expectWithinTurn(kernel.clockPhase);
    EXPECT_EQ(kernel.clockPhase, kernel.clockPhaseBuf);
    for (std::size_t ring = 0; ring < 5; ++ring) {
        expectWithinTurn(kernel.activityPhases[ring]);
        expectWithinTurn(kernel.lfoPhases[ring]);
        expectWithinTurn(kernel.lastRingPhase[ring]);
        EXPECT_LE(std::abs(kernel.lfoOffsets[ring]), 0.25);
    }
    EXPECT_GE(kernel.lastPitchClass, -1);
    EXPECT_LE(kernel.lastPitchClass, 11);

    std::vector<int> sounding;
    for (int i = 0; i < 16; ++i) {
        const auto& voice = kernel.voicePool->voices[static_cast<std::size_t>(i)];
        expectWithinTurn(voice.carrierPhase);
        expectWithinTurn(voice.modPhase);
        if (voice.active)
            sounding.push_back(i);
    }
    std::vector<int> order(kernel.voicePool->triggerOrder.begin(), kernel.voicePool->triggerOrder.end());
    std::ranges::sort(order);
    EXPECT_EQ(order, sounding) << "the sounding voices, each once";
}

TEST(KernelProperties, AStormOfChangesLeavesEverythingInBounds)
{
    std::size_t notesHeard = 0;
    for (std::uint32_t seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Storm storm(seed);
        PlayingKernel playing(1024);
        for (int cycle = 0; cycle < 2000 && !testing::Test::HasFailure(); ++cycle) {
            SCOPED_TRACE(testing::Message() << "cycle " << cycle);
            storm.change(playing.kernel);
            const int block = storm.drawBlock();
            const auto start = playing.left.size();
            playing.run(block, block);
            for (std::size_t i = start; i < playing.left.size(); ++i) {
                ASSERT_TRUE(std::isfinite(playing.left[i]));
                ASSERT_LE(std::abs(playing.left[i]), 1.0f);
                ASSERT_EQ(playing.left[i], playing.right[i]);
            }
            for (const auto& event : playing.kernel.noteEvents()) {
                EXPECT_GE(event.frame, 0);
                EXPECT_LT(event.frame, block);
            }
            expectSound(playing.kernel);
        }
        notesHeard += playing.notes.size();
    }
    EXPECT_GT(notesHeard, 1000U);
}

} // namespace
} // namespace velotrine
