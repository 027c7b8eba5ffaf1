#include "engine/RandomGenerator.h"

#include <cstdint>
#include <set>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// The state before a step, found by undoing its three shifts one after the other.
std::uint64_t undone(std::uint64_t state)
{
    const auto undoLeft = [](std::uint64_t mixed, int shift) {
        auto original = mixed;
        for (int known = shift; known < 64; known += shift)
            original = mixed ^ (original << shift);
        return original;
    };
    const auto undoRight = [](std::uint64_t mixed, int shift) {
        auto original = mixed;
        for (int known = shift; known < 64; known += shift)
            original = mixed ^ (original >> shift);
        return original;
    };
    return undoLeft(undoRight(undoLeft(state, 17), 7), 13);
}

TEST(RandomGenerator, AStepShiftsByThirteenSevenAndSeventeen)
{
    // By hand: 1 ^ 1 << 13 is bits 0 and 13; ^ >> 7 adds bit 6; ^ << 17 adds bits 17, 23 and 30.
    constexpr std::uint64_t expected =
        1ULL << 0 | 1ULL << 6 | 1ULL << 13 | 1ULL << 17 | 1ULL << 23 | 1ULL << 30;
    EXPECT_EQ(xorshift(1), expected);
    // The top bit leaves to the left, and comes down by 7 only.
    EXPECT_EQ(xorshift(1ULL << 63), 1ULL << 63 | 1ULL << 56);
    EXPECT_EQ(xorshift(0), 0U);
}

TEST(RandomGenerator, EveryStepCanBeUndone)
{
    std::uint64_t state = 12345;
    for (int i = 0; i < 1000; ++i) {
        const auto next = xorshift(state);
        ASSERT_EQ(undone(next), state);
        state = next;
    }
}

TEST(RandomGenerator, ADrawStepsOnceAndReadsTheLowTwentyFourBits)
{
    std::uint64_t state = 12345;
    std::uint64_t steps = 12345;
    for (int i = 0; i < 1000; ++i) {
        steps = xorshift(steps);
        const float expected = static_cast<float>(static_cast<double>(steps % 16777216U) / 16777215.0);
        ASSERT_EQ(drawUnit(state), expected);
        ASSERT_EQ(state, steps);
    }
}

TEST(RandomGenerator, BothEndsOfTheUnitCanBeDrawn)
{
    auto beforeOne = undone(0xABCDEF0123FFFFFFULL);
    EXPECT_EQ(drawUnit(beforeOne), 1.0f);
    auto beforeZero = undone(0xABCDEF0123000000ULL);
    EXPECT_EQ(drawUnit(beforeZero), 0.0f);
}

TEST(RandomGenerator, DrawsSpreadEvenlyOverTheUnit)
{
    constexpr int draws = 100000;
    int counts[10] = {};
    std::uint64_t state = 12345;
    for (int i = 0; i < draws; ++i) {
        const int bin = static_cast<int>(drawUnit(state) * 10.0f);
        ++counts[bin > 9 ? 9 : bin];
    }
    const int expected = draws / 10;
    // The count of a bin strays by about 95; five times that is next to impossible.
    for (const int count : counts)
        EXPECT_NEAR(count, expected, 475);
}

TEST(GeneratorState, OfTheDefaultSeedIsTheSeedItself)
{
    EXPECT_EQ(defaultSeed, 12345U);
    EXPECT_EQ(generatorState(12345), 12345U);
}

TEST(GeneratorState, OfAnyOtherSeedIsTheFirstNumberOfSplitMix64)
{
    // The number that is published for this seed to check other implementations by.
    EXPECT_EQ(generatorState(1234567), 6457827717110365317U);
}

TEST(GeneratorState, IsNeverZeroAndNeverTheSameForTwoSeeds)
{
    std::set<std::uint64_t> states;
    std::uint32_t seeds = 0;
    const auto check = [&states, &seeds](std::uint32_t seed) {
        states.insert(generatorState(seed));
        ++seeds;
    };
    for (std::uint32_t seed = 0; seed < 100000; ++seed)
        check(seed);
    for (std::uint32_t seed = UINT32_MAX; seed > UINT32_MAX - 100000; --seed)
        check(seed);
    EXPECT_EQ(states.size(), seeds);
    EXPECT_FALSE(states.contains(0));
}

TEST(GeneratorState, OfNeighbouringSeedsBeginsUnlike)
{
    constexpr int seeds = 1000;
    int falling = 0;
    double sum = 0.0;
    float previous = 0.0f;
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        auto state = generatorState(seed);
        const float first = drawUnit(state);
        falling += first < previous ? 1 : 0;
        sum += static_cast<double>(first);
        previous = first;
    }
    // Of independent numbers, half are below their predecessor, and the mean is a half: five times as far off
    // as chance takes them is next to impossible.
    EXPECT_NEAR(falling, seeds / 2.0, 50.0);
    EXPECT_NEAR(sum / seeds, 0.5, 0.05);
}

} // namespace
} // namespace velotrine
