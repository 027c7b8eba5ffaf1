#include "engine/Timbre.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

void expectTimbre(float timbre, double modRatio, float modIndex, float decaySeconds)
{
    SCOPED_TRACE(timbre);
    const auto result = timbreParameters(timbre);
    EXPECT_EQ(result.modRatio, modRatio);
    EXPECT_EQ(result.modIndex, modIndex);
    EXPECT_EQ(result.decaySeconds, decaySeconds);
}

TEST(Timbre, TheFivePointsAreMetExactly)
{
    expectTimbre(0.0f, 1.0, 0.5f, 1.2f);
    expectTimbre(0.25f, 1.5, 1.5f, 0.8f);
    expectTimbre(0.5f, 2.0, 3.0f, 0.5f);
    expectTimbre(0.75f, 3.0, 4.5f, 0.25f);
    expectTimbre(1.0f, 5.0, 6.0f, 0.1f);
}

TEST(Timbre, IsLinearBetweenThePoints)
{
    const auto low = timbreParameters(0.125f);
    EXPECT_EQ(low.modRatio, 1.25);
    EXPECT_EQ(low.modIndex, 1.0f);
    EXPECT_FLOAT_EQ(low.decaySeconds, 1.0f);

    const auto high = timbreParameters(0.875f);
    EXPECT_EQ(high.modRatio, 4.0);
    EXPECT_EQ(high.modIndex, 5.25f);
    EXPECT_FLOAT_EQ(high.decaySeconds, 0.175f);

    const auto quarterOfTheWay = timbreParameters(0.5625f);
    EXPECT_EQ(quarterOfTheWay.modRatio, 2.25);
    EXPECT_EQ(quarterOfTheWay.modIndex, 3.375f);
    EXPECT_FLOAT_EQ(quarterOfTheWay.decaySeconds, 0.4375f);
}

TEST(Timbre, ThePointsAreJoinedWithoutAStep)
{
    for (const float point : {0.25f, 0.5f, 0.75f, 1.0f}) {
        SCOPED_TRACE(point);
        const auto below = timbreParameters(std::nextafter(point, 0.0f));
        const auto at = timbreParameters(point);
        EXPECT_NEAR(below.modRatio, at.modRatio, 1.0e-6);
        EXPECT_NEAR(below.modIndex, at.modIndex, 1.0e-6f);
        EXPECT_NEAR(below.decaySeconds, at.decaySeconds, 1.0e-6f);
    }
}

TEST(Timbre, BeyondTheEndsTheEndsHold)
{
    for (const float timbre : {1.0001f, 2.0f, 1.0e30f, infinity})
        expectTimbre(timbre, 5.0, 6.0f, 0.1f);
    for (const float timbre : {-0.0f, -0.0001f, -7.0f, -1.0e30f, -infinity})
        expectTimbre(timbre, 1.0, 0.5f, 1.2f);
}

TEST(TimbreDeathTest, ATimbreThatIsNoNumberStopsTheProgram)
{
    EXPECT_DEATH(static_cast<void>(timbreParameters(std::numeric_limits<float>::quiet_NaN())),
                 "velotrine: fatal");
}

} // namespace
} // namespace velotrine
