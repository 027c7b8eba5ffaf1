#include "engine/VelotrineDSPKernel.h"

#include "engine/HostClock.h"
#include "engine/RandomGenerator.h"
#include "tests/engine/PlayingKernel.h"
#include "tests/support/EachSimdTarget.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using test::HeardNote;
using test::PlayingKernel;
using ::testing::ElementsAre;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

/// At this tempo, 247809 / 2048, no spot of the tests below is met exactly on a frame, where rounding would
/// decide. A bar is 4 x 60 x 48000 frames by the tempo.
constexpr float tempo = 121.00048828125f;
constexpr std::int64_t framesPerBarNumerator = 11520000 * std::int64_t{2048};
constexpr std::int64_t framesPerBarDenominator = 247809;
constexpr std::int64_t wholeFramesPerBar = framesPerBarNumerator / framesPerBarDenominator;

/// The frame in which the hand comes to a spot of a ring that neither rotates nor wobbles: the first at whose
/// end the clock has moved by `bar` bars, the spot's share of one, and the offset, in exact numbers. -1 is
/// before the start.
std::int64_t frameOfSpot(std::int64_t bar, std::int64_t spot, std::int64_t spots,
                         std::int64_t offsetThousandths)
{
    const auto numerator =
        framesPerBarNumerator / 1000 * (1000 * (bar * spots + spot) + spots * offsetThousandths);
    const auto denominator = framesPerBarDenominator * spots;
    if (numerator <= 0)
        return -1;
    EXPECT_NE(numerator % denominator, 0) << "on a frame";
    return (numerator + denominator - 1) / denominator - 1;
}

std::vector<std::int64_t> framesOf(const std::vector<HeardNote>& notes)
{
    std::vector<std::int64_t> frames(notes.size());
    std::ranges::transform(notes, frames.begin(), &HeardNote::frame);
    return frames;
}

std::uint64_t stepped(std::uint64_t state, std::size_t steps)
{
    for (; steps > 0; --steps)
        state = xorshift(state);
    return state;
}

TEST(KernelRings, ASpotFiresInTheFrameInWhichTheHandComesToIt)
{
    struct Offset
    {
        float turns;
        std::int64_t thousandths;
    };

    // Below a thousandth a thousandth is used.
    const Offset offsets[] = {{0.0f, 1},    {-3.0f, 1},  {-infinity, 1}, {0.125f, 125},
                              {0.25f, 250}, {0.5f, 500}, {0.75f, 750},   {1.0f, 1000}};
    constexpr std::int64_t frames = 200000;
    for (const auto& [turns, thousandths] : offsets)
        for (const std::int64_t spots : {1, 2, 3, 4, 5, 7, 8, 12, 13, 16}) {
            SCOPED_TRACE(testing::Message() << spots << " spots from " << turns);
            PlayingKernel playing;
            const auto ring = static_cast<std::size_t>(spots % 5);
            playing.playOnlyRing(ring, spots);
            playing.kernel.bpm = tempo;
            playing.kernel.phaseOffsets[ring] = turns;
            playing.run(frames, 1000);

            std::vector<std::int64_t> expected;
            std::vector<int> expectedSpots;
            for (std::int64_t bar = -1; bar < 4; ++bar)
                for (std::int64_t spot = 0; spot < spots; ++spot) {
                    const auto frame = frameOfSpot(bar, spot, spots, thousandths);
                    // The first frame only finds out where the hand stands.
                    if (frame > 0 && frame < frames) {
                        expected.push_back(frame);
                        expectedSpots.push_back(static_cast<int>(spot));
                    }
                }
            ASSERT_EQ(framesOf(playing.notes), expected);
            for (std::size_t i = 0; i < expected.size(); ++i) {
                ASSERT_EQ(playing.notes[i].spot, expectedSpots[i]);
                ASSERT_EQ(playing.notes[i].ring, static_cast<int>(ring));
            }
        }
}

TEST(KernelRings, OneSpotFiresOnceATurnThroughTheStartOfTheRing)
{
    PlayingKernel playing;
    playing.playOnlyRing(0, 1);
    playing.kernel.bpm = tempo;
    playing.run(5 * wholeFramesPerBar, 512);
    std::vector<std::int64_t> expected;
    for (std::int64_t bar = 0; bar < 5; ++bar)
        expected.push_back(frameOfSpot(bar, 0, 1, 1));
    EXPECT_EQ(framesOf(playing.notes), expected);
}

TEST(KernelRings, TheSmallestOffsetIsAThousandthInDoublePrecision)
{
    // At 120 bpm and 48 kHz a thousandth of a bar is 96 frames. The nearest float is above a thousandth: the
    // spot comes a frame later.
    struct Case
    {
        float offset;
        std::int64_t frame;
    };

    for (const auto& [offset, frame] : {Case{0.0f, 95}, Case{0.0009f, 95}, Case{0.001f, 96}}) {
        PlayingKernel playing;
        playing.playOnlyRing(2, 4);
        playing.kernel.phaseOffsets[2] = offset;
        playing.run(200, 200);
        ASSERT_EQ(playing.notes.size(), 1U);
        EXPECT_EQ(playing.notes[0].frame, frame) << offset;
    }
}

TEST(KernelRings, ARingWithoutSpotsIsSilentAndArmsItselfAnewWhenItGetsSome)
{
    for (const std::int64_t none : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
        PlayingKernel playing;
        auto& kernel = playing.kernel;
        playing.playOnlyRing(2, 6);
        playing.run(40000, 500);
        ASSERT_TRUE(kernel.ringInitialised[2]);
        const auto before = playing.notes.size();
        ASSERT_GT(before, 0U);

        kernel.spotCounts[2] = none;
        playing.run(30000, 500);
        EXPECT_FALSE(kernel.ringInitialised[2]);
        EXPECT_EQ(playing.notes.size(), before);

        kernel.spotCounts[2] = 8;
        playing.run(1, 1);
        EXPECT_TRUE(kernel.ringInitialised[2]);
        EXPECT_EQ(playing.notes.size(), before) << "the first frame only arms the ring";
        EXPECT_EQ(kernel.lastSpotIndex[2], 5) << "70001 of 96000 frames, less 96: 5.8 eighths";
        playing.run(20000, 500);
        ASSERT_GT(playing.notes.size(), before);
        EXPECT_EQ(playing.notes[before].spot, 6);
    }
}

TEST(KernelRings, ANewNumberOfSpotsFiresAtOnceWhereItChangesTheSpotUnderTheHand)
{
    PlayingKernel playing;
    playing.playOnlyRing(1, 4);
    playing.run(35000, 500);
    const auto before = playing.notes.size();
    ASSERT_EQ(playing.kernel.lastSpotIndex[1], 1);
    playing.kernel.spotCounts[1] = 16;
    playing.run(1, 1);
    ASSERT_EQ(playing.notes.size(), before + 1);
    EXPECT_EQ(playing.notes.back().spot, 5) << "35001 of 96000 frames, less 96: 5.8 sixteenths";
}

TEST(KernelRings, FullActivityTurnsEachRingByItsOwnShareOfASixteenthABar)
{
    PlayingKernel playing;
    playing.kernel.activity = 1.0f;
    playing.run(96000, 1000);
    const std::array<double, 5> turns{0.6561 / 16, 1 - 0.729 / 16, 0.81 / 16, 1 - 0.9 / 16, 1.0 / 16};
    for (std::size_t ring = 0; ring < 5; ++ring)
        EXPECT_NEAR(playing.kernel.activityPhases[ring], turns[ring], 1.0e-9);
}

TEST(KernelRings, UpToHalfActivityAllRingsTurnAlike)
{
    for (const float activity : {0.25f, 0.5f}) {
        PlayingKernel playing;
        playing.kernel.activity = activity;
        playing.run(96000, 1000);
        const double turn = static_cast<double>(activity) / 16;
        for (std::size_t ring = 0; ring < 5; ++ring)
            EXPECT_NEAR(playing.kernel.activityPhases[ring], ring % 2 == 0 ? turn : 1 - turn, 1.0e-9);
    }
}

TEST(KernelRings, AboveHalfActivityTheSpreadGrowsInProportion)
{
    PlayingKernel playing;
    playing.kernel.activity = 0.75f;
    playing.run(96000, 1000);
    const std::array<double, 5> behind{0.3439, 0.271, 0.19, 0.1, 0.0};
    for (std::size_t ring = 0; ring < 5; ++ring) {
        const double turn = 0.75 / 16 * (1 - 0.5 * behind[ring]);
        EXPECT_NEAR(playing.kernel.activityPhases[ring], ring % 2 == 0 ? turn : 1 - turn, 1.0e-9);
    }
}

TEST(KernelRings, RotationKeepsToTheLengthOfTheBar)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.sync = true;
    kernel.hostPlaying = true;
    kernel.hostTempo = 120.0;
    kernel.hostBeatsPerBar = 3.0;
    kernel.hostBeatUnit = 4.0;
    kernel.activity = 0.5f;
    kernel.calories = 1.0f;
    playing.run(72000, 1000);
    EXPECT_NEAR(kernel.activityPhases[4], 0.5 * 0.25 / 3, 1.0e-9);
    // 24 - 4 + ring cycles in eight bars.
    for (std::size_t ring = 0; ring < 5; ++ring) {
        const double cycles = (20.0 + static_cast<double>(ring)) / 8;
        EXPECT_NEAR(kernel.lfoPhases[ring], cycles - std::floor(cycles), 1.0e-9);
        const double direction = ring % 2 == 0 ? 1.0 : -1.0;
        EXPECT_NEAR(kernel.lfoOffsets[ring], 0.25 / 9 * std::sin(6.283185307179586 * cycles) * direction,
                    1.0e-9);
    }
}

TEST(KernelRings, WithoutActivityARingStaysWhereItStands)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.activity = 1.0f;
    playing.run(50000, 500);
    std::array<double, 5> stand{};
    std::copy(kernel.activityPhases.begin(), kernel.activityPhases.end(), stand.begin());
    kernel.activity = 0.0f;
    playing.run(100000, 500);
    for (std::size_t ring = 0; ring < 5; ++ring) {
        EXPECT_NE(stand[ring], 0.0);
        EXPECT_EQ(kernel.activityPhases[ring], stand[ring]);
    }
}

TEST(KernelRings, WithoutCaloriesNothingWobbles)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.calories = 1.0f;
    playing.run(10000, 500);
    for (const auto& wobble : kernel.lfoOffsets)
        EXPECT_NE(wobble, 0.0);
    kernel.calories = 0.0f;
    playing.run(1, 1);
    for (const auto& wobble : kernel.lfoOffsets)
        EXPECT_EQ(wobble, 0.0);
}

TEST(KernelRings, WobblesComeTogetherEveryEightBars)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.calories = 1.0f;
    playing.run(96000, 1000);
    for (std::size_t ring = 0; ring < 5; ++ring) {
        const double cycles = (28.0 + static_cast<double>(ring)) / 8;
        EXPECT_NEAR(kernel.lfoPhases[ring], cycles - std::floor(cycles), 1.0e-9);
        const double direction = ring % 2 == 0 ? 1.0 : -1.0;
        EXPECT_NEAR(kernel.lfoOffsets[ring], std::sin(6.283185307179586 * cycles) / 64 * direction, 1.0e-9);
    }
    playing.run(std::int64_t{7} * 96000, 1000);
    for (std::size_t ring = 0; ring < 5; ++ring)
        EXPECT_LT(std::min(kernel.lfoPhases[ring], 1.0 - kernel.lfoPhases[ring]), 1.0e-8);
}

/// A bar of one quarter in 16384 frames, and a wobble of a quarter turn that turns round at a quarter and at
/// three quarters of the bar: every step is a power of two, so that nothing is rounded and the hand comes to
/// the spots exactly on a frame. There a wobble that is too large by one part in 10^15 makes a note a frame
/// late.
TEST(KernelRings, ASpotMetExactlyWhereTheWobbleTurnsRoundFiresInThatFrame)
{
    test::onEachSimdTarget([] {
        constexpr std::int64_t framesPerBar = 16384;
        PlayingKernel playing;
        auto& kernel = playing.kernel;
        playing.playOnlyRing(4, 2);
        kernel.calories = 1.0f;
        kernel.phaseOffsets[4] = 0.5f;
        kernel.sync = true;
        kernel.hostPlaying = true;
        kernel.hostTempo = 175.78125;
        kernel.hostBeatsPerBar = 1.0;
        kernel.hostBeatUnit = 4.0;
        playing.run(2 * framesPerBar, 512);

        // A frame's crossings are looked for at its end, when the clock has moved. At the bar line the hand
        // stands exactly on the spot that it leaves backwards, so that it is beyond it one frame later.
        std::vector<std::int64_t> frames;
        std::vector<int> spots;
        for (const auto& note : playing.notes) {
            frames.push_back(note.frame);
            spots.push_back(note.spot);
        }
        EXPECT_THAT(frames, ElementsAre(framesPerBar / 4 - 1, framesPerBar / 2 - 1, framesPerBar * 3 / 4 - 1,
                                        framesPerBar, framesPerBar * 5 / 4 - 1, framesPerBar * 3 / 2 - 1,
                                        framesPerBar * 7 / 4 - 1));
        EXPECT_THAT(spots, ElementsAre(1, 0, 1, 0, 1, 0, 1));
    });
}

TEST(KernelRings, ACertainSpotTakesNoRandomNumberOfItsOwn)
{
    for (const float probability : {1.0f, 1.5f, infinity}) {
        PlayingKernel playing;
        playing.playOnlyRing(3, 7);
        playing.kernel.probabilities[3] = probability;
        playing.run(96000, 500);
        EXPECT_EQ(playing.notes.size(), 7U);
        EXPECT_EQ(playing.kernel.rngState, stepped(12345, 7)) << "one for each note's pitch";
    }
}

TEST(KernelRings, AnImpossibleSpotTakesOneRandomNumberAndNeverFires)
{
    for (const float probability : {0.0f, -1.0f, -infinity, notANumber}) {
        PlayingKernel playing;
        playing.playOnlyRing(3, 7);
        playing.kernel.probabilities[3] = probability;
        playing.run(96000, 500);
        EXPECT_TRUE(playing.notes.empty());
        EXPECT_EQ(playing.kernel.rngState, stepped(12345, 7)) << "one for each crossing";
    }
}

TEST(KernelRings, ASpotFiresWhenItsDrawIsBelowItsProbability)
{
    PlayingKernel playing;
    playing.playOnlyRing(3, 8);
    playing.kernel.probabilities[3] = 0.4f;
    playing.run(std::int64_t{20} * 96000, 512);

    std::vector<int> expectedSpots;
    std::uint64_t state = 12345;
    for (int crossing = 0; crossing < 20 * 8; ++crossing)
        if (drawUnit(state) < 0.4f) {
            state = xorshift(state); // for its pitch
            expectedSpots.push_back(crossing % 8);
        }
    std::vector<int> spots;
    for (const auto& note : playing.notes)
        spots.push_back(note.spot);
    EXPECT_EQ(spots, expectedSpots);
    EXPECT_EQ(playing.kernel.rngState, state);
}

TEST(KernelRings, AFiredSpotIsStampedWithTheHostClock)
{
    PlayingKernel playing;
    playing.playOnlyRing(3, 4);
    const auto before = hostClockNow();
    playing.run(96000, 500);
    const auto after = hostClockNow();
    constexpr auto firstSpot = std::size_t{3} * 16;
    std::uint64_t last = before;
    for (std::size_t i = 0; i < playing.kernel.spotFireTimes.size(); ++i) {
        const std::uint64_t time = playing.kernel.spotFireTimes[i];
        if (i < firstSpot || i >= firstSpot + 4) {
            EXPECT_EQ(time, 0U) << i;
            continue;
        }
        EXPECT_GE(time, last);
        EXPECT_LE(time, after);
        last = time;
    }
}

TEST(KernelRings, ACrossingThatDoesNotFireIsNotStamped)
{
    PlayingKernel playing;
    playing.playOnlyRing(0, 16);
    playing.kernel.probabilities[0] = 0.0f;
    playing.run(96000, 500);
    for (const auto& time : playing.kernel.spotFireTimes)
        EXPECT_EQ(time, 0U);
}

/// Only the ring's own sixteen entries may be stamped.
void expectOnlyOwnStamps(const VelotrineDSPKernel& kernel, std::size_t ring)
{
    for (std::size_t i = 0; i < kernel.spotFireTimes.size(); ++i)
        if (i / 16 != ring) {
            EXPECT_EQ(kernel.spotFireTimes[i], 0U) << "entry " << i << ", ring " << ring;
        }
}

TEST(KernelRings, SpotsBeyondTheSixteenthFireButAreNotStamped)
{
    for (std::size_t ring = 0; ring < 5; ++ring) {
        PlayingKernel playing;
        playing.playOnlyRing(ring, 40);
        playing.run(96000, 500);
        ASSERT_EQ(playing.notes.size(), 40U);
        for (int spot = 0; spot < 40; ++spot)
            EXPECT_EQ(playing.notes[static_cast<std::size_t>(spot)].spot, spot);
        expectOnlyOwnStamps(playing.kernel, ring);
        for (std::size_t spot = 0; spot < 16; ++spot)
            EXPECT_NE(playing.kernel.spotFireTimes[ring * 16 + spot], 0U);
    }
}

TEST(KernelRings, AnOffsetBeyondThreeTurnsFiresBelowZeroAndStampsNothingOutside)
{
    for (std::size_t ring = 0; ring < 5; ++ring) {
        PlayingKernel playing;
        playing.playOnlyRing(ring, 4);
        playing.kernel.bpm = tempo;
        playing.kernel.phaseOffsets[ring] = 5.25f;
        playing.run(2 * wholeFramesPerBar + 10, 500);
        // From a quarter turn below zero up to it, on from a whole turn below, and cut towards zero.
        std::vector<int> spots;
        for (const auto& note : playing.notes)
            spots.push_back(note.spot);
        EXPECT_THAT(spots, testing::ElementsAre(-3, -2, -1, 0, -3, -2, -1, 0));
        expectOnlyOwnStamps(playing.kernel, ring);
        EXPECT_NE(playing.kernel.spotFireTimes[ring * 16], 0U);
        for (std::size_t spot = 1; spot < 16; ++spot)
            EXPECT_EQ(playing.kernel.spotFireTimes[ring * 16 + spot], 0U);
    }
}

TEST(KernelRings, BarsShorterThanAnyMusicStampNothingOutside)
{
    struct Host
    {
        double tempo;
        double beatsPerBar;
        double beatUnit;
    };

    int spotsBelowZero = 0;
    for (const auto& [hostTempo, beatsPerBar, beatUnit] :
         {Host{120.0, 1.0, 32.0}, Host{100000.0, 1.0, 64.0}, Host{1.0e9, 4.0, 4.0}, Host{3.0, 0.01, 4.0}})
        for (std::size_t ring = 0; ring < 5; ++ring) {
            SCOPED_TRACE(testing::Message() << hostTempo << " bpm, " << beatsPerBar << "/" << beatUnit);
            PlayingKernel playing;
            auto& kernel = playing.kernel;
            playing.playOnlyRing(ring, 16);
            kernel.calories = 1.0f;
            kernel.activity = 1.0f;
            kernel.sync = true;
            kernel.hostPlaying = true;
            kernel.hostTempo = hostTempo;
            kernel.hostBeatsPerBar = beatsPerBar;
            kernel.hostBeatUnit = beatUnit;
            playing.run(20000, 500);
            EXPECT_FALSE(playing.notes.empty());
            for (const auto& note : playing.notes) {
                EXPECT_LT(std::abs(note.spot), 16);
                spotsBelowZero += note.spot < 0;
            }
            expectOnlyOwnStamps(kernel, ring);
            for (const float sample : playing.left)
                ASSERT_TRUE(std::isfinite(sample));
        }
    EXPECT_GT(spotsBelowZero, 100);
}

} // namespace
} // namespace velotrine
