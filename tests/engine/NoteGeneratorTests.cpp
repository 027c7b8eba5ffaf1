#include "engine/NoteGenerator.h"

#include "engine/RandomGenerator.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

constexpr std::int64_t noLastNote = -1;

/// Checks each row of a table against the blend for a Boredom.
void expectTableAt(float boredom, const TransitionTable& table)
{
    for (std::int64_t scale = 0; scale < 4; ++scale)
        for (std::int64_t previous = 0; previous < 12; ++previous)
            EXPECT_EQ(shapedRow(scale, previous, boredom),
                      table[static_cast<std::size_t>(scale)][static_cast<std::size_t>(previous)])
                << "scale " << scale << ", previous " << previous;
}

std::array<int, 12> countDraws(const NoteContext& context, int draws)
{
    std::array<int, 12> counts{};
    std::uint64_t rngState = 12345;
    for (int i = 0; i < draws; ++i)
        ++counts.at(static_cast<std::size_t>(drawPitchClass(context, rngState)));
    return counts;
}

/// Checks that the counts are what weights (which start at the root) let expect: within five times the
/// standard deviation.
void expectDrawnFrom(const NoteWeights& weights, std::size_t root, const std::array<int, 12>& counts)
{
    double total = 0.0;
    double draws = 0.0;
    for (std::size_t i = 0; i < 12; ++i) {
        total += static_cast<double>(weights[i]);
        draws += counts[i];
    }
    for (std::size_t i = 0; i < 12; ++i) {
        const double share = static_cast<double>(weights[i]) / total;
        const double deviation = std::sqrt(draws * share * (1.0 - share));
        // One more for a draw of exactly 1, which is the root's.
        EXPECT_NEAR(counts[(i + root) % 12], draws * share, 5.0 * deviation + (i == 0 ? 1.0 : 0.0)) << i;
    }
}

TEST(NoteGenerator, BoredomMeetsEachTableExactly)
{
    expectTableAt(0.0f, lowTransitions);
    expectTableAt(0.35f, middleTransitions);
    expectTableAt(0.7f, highTransitions);
}

TEST(NoteGenerator, FullBoredomMakesAllNotesAlikeWhateverTheScale)
{
    NoteWeights uniform{};
    uniform.fill(0.083333336f);
    TransitionTable allAlike{};
    for (auto& scale : allAlike)
        scale.fill(uniform);
    expectTableAt(1.0f, allAlike);
}

TEST(NoteGenerator, BoredomIsBoundedToItsRange)
{
    expectTableAt(-0.5f, lowTransitions);
    expectTableAt(-infinity, lowTransitions);
    EXPECT_EQ(shapedRow(0, 0, 7.0f), shapedRow(0, 0, 1.0f));
    EXPECT_EQ(shapedRow(0, 0, infinity), shapedRow(0, 0, 1.0f));
}

TEST(NoteGenerator, BoredomThatIsNoNumberCountsAsZero)
{
    expectTableAt(notANumber, lowTransitions);
}

TEST(NoteGenerator, BetweenTheTablesTheBlendIsLinear)
{
    struct Case
    {
        float boredom;
        const TransitionTable* from;
        const TransitionTable* to;
        double amount;
    };

    NoteWeights uniform{};
    uniform.fill(1.0f / 12.0f);
    TransitionTable allAlike{};
    for (auto& scale : allAlike)
        scale.fill(uniform);

    const Case cases[] = {{0.07f, &lowTransitions, &middleTransitions, 0.2},
                          {0.175f, &lowTransitions, &middleTransitions, 0.5},
                          {0.42f, &middleTransitions, &highTransitions, 0.2},
                          {0.63f, &middleTransitions, &highTransitions, 0.8},
                          {0.76f, &highTransitions, &allAlike, 0.2},
                          {0.94f, &highTransitions, &allAlike, 0.8}};
    for (const auto& [boredom, from, to, amount] : cases)
        for (std::size_t scale = 0; scale < 4; ++scale)
            for (std::size_t previous = 0; previous < 12; ++previous) {
                const auto row =
                    shapedRow(static_cast<std::int64_t>(scale), static_cast<std::int64_t>(previous), boredom);
                for (std::size_t i = 0; i < 12; ++i) {
                    const double expected =
                        (1.0 - amount) * static_cast<double>((*from)[scale][previous][i]) +
                        amount * static_cast<double>((*to)[scale][previous][i]);
                    EXPECT_NEAR(row[i], expected, 5.0e-7) << boredom << ": " << scale << " " << previous;
                }
            }
}

TEST(NoteGeneratorDeathTest, ARowThatThereIsNotStopsTheProgram)
{
    for (const std::int64_t scale : {std::int64_t{-1}, std::int64_t{4}, INT64_MIN, INT64_MAX})
        EXPECT_DEATH(static_cast<void>(shapedRow(scale, 0, 0.5f)), "velotrine: fatal");
    for (const std::int64_t previous : {std::int64_t{-1}, std::int64_t{12}, INT64_MIN, INT64_MAX})
        EXPECT_DEATH(static_cast<void>(shapedRow(0, previous, 0.5f)), "velotrine: fatal");
}

TEST(NoteGenerator, FirstNoteAfterAStartComesFromTheInitialDistribution)
{
    for (std::int64_t scale = 0; scale < 4; ++scale)
        for (const float boredom : {0.0f, 0.5f, 1.0f}) {
            SCOPED_TRACE(testing::Message() << scale << " " << boredom);
            const auto counts = countDraws(
                {.root = 5, .scale = scale, .lastPitchClass = noLastNote, .boredom = boredom}, 20000);
            expectDrawnFrom(initialWeights[static_cast<std::size_t>(scale)], 5, counts);
            EXPECT_NEAR(counts[5], 14000, 330);
        }
}

TEST(NoteGenerator, LaterNotesAtFullBoredomAreAllTwelveAlike)
{
    NoteWeights uniform{};
    uniform.fill(1.0f / 12.0f);
    for (std::int64_t scale = 0; scale < 4; ++scale)
        expectDrawnFrom(uniform, 0,
                        countDraws({.root = 0, .scale = scale, .lastPitchClass = 6, .boredom = 1.0f}, 24000));
}

TEST(NoteGenerator, LaterNotesAreDrawnFromTheRowOfTheLastOne)
{
    // The last note is counted from the root: E above D is two semitones, C above D is ten.
    expectDrawnFrom(lowTransitions[0][2], 2,
                    countDraws({.root = 2, .scale = 0, .lastPitchClass = 4, .boredom = 0.0f}, 50000));
    expectDrawnFrom(middleTransitions[1][10], 2,
                    countDraws({.root = 2, .scale = 1, .lastPitchClass = 0, .boredom = 0.35f}, 50000));
    expectDrawnFrom(highTransitions[3][7], 11,
                    countDraws({.root = 11, .scale = 3, .lastPitchClass = 6, .boredom = 0.7f}, 50000));
}

TEST(NoteGenerator, ADrawTakesTheFirstNoteAtWhichTheRunningSumPassesIt)
{
    // Major, first note: the root below 0.7, the fifth below 0.9, the seventh below 1.
    const NoteContext context{.root = 3, .scale = 0, .lastPitchClass = noLastNote, .boredom = 0.5f};
    std::uint64_t rngState = 12345;
    for (int i = 0; i < 2000; ++i) {
        auto drawState = rngState;
        const float drawn = drawUnit(drawState);
        const std::int64_t interval = drawn < 0.7f ? 0 : drawn < 0.9f ? 7 : 11;
        ASSERT_EQ(drawPitchClass(context, rngState), (3 + interval) % 12) << drawn;
        ASSERT_EQ(rngState, drawState) << "one random number a note";
    }
}

/// A state from which the next draw is exactly 1: a step undone.
std::uint64_t stateBeforeOne()
{
    std::uint64_t state = 0xFFFFFF;
    const auto undo = [&state](auto&& shifted, int shift) {
        const auto mixed = state;
        for (int known = shift; known < 64; known += shift)
            state = mixed ^ shifted(state);
    };
    undo([](std::uint64_t x) { return x << 17; }, 17);
    undo([](std::uint64_t x) { return x >> 7; }, 7);
    undo([](std::uint64_t x) { return x << 13; }, 13);
    return state;
}

TEST(NoteGenerator, ADrawOfExactlyOneGivesTheRoot)
{
    auto check = stateBeforeOne();
    ASSERT_EQ(drawUnit(check), 1.0f);

    for (const std::int64_t lastPitchClass : {noLastNote, std::int64_t{7}, std::int64_t{9}}) {
        auto rngState = stateBeforeOne();
        EXPECT_EQ(drawPitchClass({.root = 4, .scale = 0, .lastPitchClass = lastPitchClass, .boredom = 0.5f},
                                 rngState),
                  4);
    }
}

TEST(NoteGenerator, AfterANoteOutsideThePentatonicScaleTheRootComesWithoutADraw)
{
    constexpr std::array<std::array<bool, 12>, 2> inScale{
        {{true, false, true, false, true, false, false, true, false, true, false, false},
         {true, false, false, true, false, true, false, true, false, false, true, false}}};
    for (std::int64_t scale = 2; scale < 4; ++scale)
        for (std::int64_t interval = 0; interval < 12; ++interval)
            for (const float boredom : {0.0f, 0.2f, 0.35f, 0.5f, 0.7f}) {
                SCOPED_TRACE(testing::Message() << scale << " " << interval << " " << boredom);
                constexpr std::int64_t root = 9;
                std::uint64_t rngState = 12345;
                const auto pitchClass = drawPitchClass({.root = root,
                                                        .scale = scale,
                                                        .lastPitchClass = (root + interval) % 12,
                                                        .boredom = boredom},
                                                       rngState);
                const bool known =
                    inScale[static_cast<std::size_t>(scale - 2)][static_cast<std::size_t>(interval)];
                EXPECT_EQ(rngState, known ? xorshift(12345) : 12345U);
                if (!known) {
                    EXPECT_EQ(pitchClass, root);
                }
            }
}

TEST(NoteGenerator, AboveTheHighTableThePentatonicScalesTakeOutsiders)
{
    for (std::int64_t scale = 2; scale < 4; ++scale) {
        const auto inside =
            countDraws({.root = 0, .scale = scale, .lastPitchClass = 0, .boredom = 0.7f}, 20000);
        const auto beyond =
            countDraws({.root = 0, .scale = scale, .lastPitchClass = 0, .boredom = 0.85f}, 20000);
        for (const std::size_t outsider : {1U, 6U, 8U, 11U}) {
            EXPECT_EQ(inside[outsider], 0);
            EXPECT_GT(beyond[outsider], 0);
        }
        // After such a note all twelve are alike, since its own row says nothing.
        const auto after =
            countDraws({.root = 0, .scale = scale, .lastPitchClass = 6, .boredom = 0.85f}, 24000);
        NoteWeights uniform{};
        uniform.fill(1.0f);
        expectDrawnFrom(uniform, 0, after);
    }
}

} // namespace
} // namespace velotrine
