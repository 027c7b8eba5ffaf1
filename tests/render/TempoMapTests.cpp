#include "render/TempoMap.h"

#include <cmath>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(TempoMap, OfOneTempoHasOneStep)
{
    const auto steps = TempoMap(90.0).steps();
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(steps[0].seconds, 0.0);
    EXPECT_EQ(steps[0].quartersPerMinute, 90.0);
    EXPECT_EQ(TempoMap::quartersAt(steps, 10.0), 15.0);
}

TEST(TempoMap, TakesTheLastOfSeveralTemposAtTheBeginning)
{
    TempoMap map(120.0);
    map.set(0.0, 60.0);
    map.set(0.0, 90.0);
    const auto steps = map.steps();
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(steps[0].quartersPerMinute, 90.0);
}

TEST(TempoMap, JumpsWhereTheTempoDoes)
{
    TempoMap map(60.0);
    map.set(4.0, 120.0);
    map.set(6.0, 120.0);
    map.set(8.0, 30.0);
    const auto steps = map.steps();
    ASSERT_EQ(steps.size(), 3U);
    EXPECT_EQ(steps[1].seconds, 4.0);
    EXPECT_EQ(steps[1].quarters, 4.0);
    EXPECT_DOUBLE_EQ(steps[1].quartersPerMinute, 120.0);
    EXPECT_EQ(steps[2].quarters, 12.0);
    EXPECT_EQ(steps[2].quartersPerMinute, 30.0);
    EXPECT_DOUBLE_EQ(TempoMap::quartersAt(steps, 5.0), 6.0);
    EXPECT_DOUBLE_EQ(TempoMap::quartersAt(steps, 10.0), 13.0);
}

TEST(TempoMap, FollowsAGlideInFewStepsOfWhichNoneIsOff)
{
    // From 60 to 120 in ten seconds, told a thousand times a second: t + t^2/20 quarters after t seconds.
    TempoMap map(60.0);
    for (int i = 1; i <= 10000; ++i)
        map.set(i / 1000.0, 60.0 + 6.0 * i / 1000.0);
    const auto steps = map.steps();
    EXPECT_LT(steps.size(), 15.0 * 16.0 + 2.0);
    EXPECT_GT(steps.size(), 15.0 * 16.0 / 2.0);
    for (int i = 0; i <= 1000; ++i) {
        const auto seconds = i / 100.0;
        EXPECT_NEAR(TempoMap::quartersAt(steps, seconds), seconds + seconds * seconds / 20.0, 0.01);
    }
    EXPECT_NEAR(TempoMap::quartersAt(steps, 20.0), 15.0 + 20.0, 0.01);
}

TEST(TempoMap, GivesATempoThatHoldsItsOwnStepHoweverShortTheOneBefore)
{
    TempoMap map(60.0);
    map.set(4.0, 300.0);
    map.set(4.001, 120.0);
    map.set(8.001, 60.0);
    const auto steps = map.steps();
    const double before = 4.0 + 0.005;
    EXPECT_NEAR(TempoMap::quartersAt(steps, 4.001), before, 1.0e-9);
    EXPECT_NEAR(TempoMap::quartersAt(steps, 6.001), before + 4.0, 1.0e-9);
    EXPECT_NEAR(TempoMap::quartersAt(steps, 8.001), before + 8.0, 1.0e-9);
}

} // namespace
} // namespace velotrine
