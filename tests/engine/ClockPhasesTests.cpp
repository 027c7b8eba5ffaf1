#include "engine/ClockPhases.h"

#include "tests/support/EachSimdTarget.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr auto places = ClockPhases::places;

/// One addition at a time.
void addOneByOne(ClockPhases& phases, int frames)
{
    for (int frame = 0; frame < frames; ++frame)
        for (std::size_t i = 0; i < places; ++i) {
            phases.rising[i] += phases.risingSteps[i];
            if (phases.rising[i] >= 1.0)
                phases.rising[i] -= 1.0;
            phases.turning[i] += phases.turningSteps[i];
            if (phases.turning[i] >= 1.0)
                phases.turning[i] -= 1.0;
            else if (phases.turning[i] < 0.0)
                phases.turning[i] += 1.0;
        }
}

std::array<std::uint64_t, 2 * places> bitsOf(const ClockPhases& phases)
{
    std::array<std::uint64_t, 2 * places> bits{};
    for (std::size_t i = 0; i < places; ++i) {
        bits[i] = std::bit_cast<std::uint64_t>(phases.rising[i]);
        bits[places + i] = std::bit_cast<std::uint64_t>(phases.turning[i]);
    }
    return bits;
}

void expectSameAsOneByOne(const ClockPhases& start, int frames)
{
    auto expected = start;
    addOneByOne(expected, frames);
    auto advanced = start;
    advanced.advance(frames);
    ASSERT_EQ(bitsOf(advanced), bitsOf(expected)) << frames << " frames";
    ASSERT_EQ(advanced.risingSteps, start.risingSteps);
    ASSERT_EQ(advanced.turningSteps, start.turningSteps);
}

/// Phases all over the turn, many of them close to its ends.
class RandomPhases
{
public:
    /// @param longestStep  turns
    ClockPhases draw(double longestStep)
    {
        ClockPhases phases;
        for (std::size_t i = 0; i < places; ++i) {
            phases.rising[i] = drawPhase();
            phases.turning[i] = drawPhase();
            phases.risingSteps[i] = longestStep * unit(random);
            phases.turningSteps[i] = longestStep * (2.0 * unit(random) - 1.0);
        }
        return phases;
    }

    int drawFrames(int most) { return std::uniform_int_distribution<int>(0, most)(random); }

private:
    double drawPhase()
    {
        switch (std::uniform_int_distribution<int>(0, 4)(random)) {
        case 0:
            return 0.0;
        case 1:
            return std::nextafter(1.0, 0.0);
        case 2:
            return unit(random) * 1.0e-9;
        case 3:
            return 1.0 - 1.0e-9 * (1.0 - unit(random)) - 1.0e-12;
        default:
            return unit(random);
        }
    }

    std::mt19937_64 random{20240117};
    std::uniform_real_distribution<double> unit{0.0, 1.0};
};

TEST(ClockPhases, ManyAdditionsAtOnceAreThoseOneByOneToTheLastBit)
{
    test::onEachSimdTarget([] {
        RandomPhases random;
        for (const double longestStep : {1.0e-7, 1.0e-5, 1.0e-3, 0.02, 0.5, 0.999})
            for (int i = 0; i < 200; ++i)
                expectSameAsOneByOne(random.draw(longestStep), random.drawFrames(700));
    });
}

TEST(ClockPhases, EveryNumberOfFramesUpToSeveralRunsIsExact)
{
    test::onEachSimdTarget([] {
        RandomPhases random;
        const auto phases = random.draw(3.0e-3);
        for (int frames = 0; frames <= 300; ++frames)
            expectSameAsOneByOne(phases, frames);
    });
}

TEST(ClockPhases, StepsThatDivideTheTurnMeetItsEndInTheSameFrame)
{
    test::onEachSimdTarget([] {
        // Sums of such steps come to the end of the turn within a rounding, on one side or the other.
        ClockPhases phases;
        const std::array<double, places> divisors{96000.0, 96.0, 64.0, 1000.0, 300.0, 3.0, 7.0, 48000.0};
        for (std::size_t i = 0; i < places; ++i) {
            phases.risingSteps[i] = 1.0 / divisors[i];
            phases.turningSteps[i] = (i % 2 == 0 ? -1.0 : 1.0) / divisors[i];
        }
        for (int call = 0; call < 200; ++call) {
            auto expected = phases;
            addOneByOne(expected, 997);
            phases.advance(997);
            ASSERT_EQ(bitsOf(phases), bitsOf(expected)) << "call " << call;
        }
    });
}

TEST(ClockPhases, RisingPhasesThatFallAreNotWrapped)
{
    // A wobble slower than nothing, in a bar shorter than half a quarter note.
    test::onEachSimdTarget([] {
        ClockPhases phases;
        phases.risingSteps[0] = -0.001;
        expectSameAsOneByOne(phases, 3000);
        phases.advance(3000);
        EXPECT_NEAR(phases.rising[0], -3.0, 1.0e-9);
    });
}

TEST(ClockPhases, PhasesOutsideTheTurnComeBackByOneTurnAFrameWhicheverWayTheyMove)
{
    test::onEachSimdTarget([] {
        std::mt19937_64 random{7};
        const auto between = [&random](double low, double high) {
            return std::uniform_real_distribution<double>(low, high)(random);
        };
        for (const double longestStep : {0.0, 1.0e-6, 1.0e-3, 0.5, 40.0})
            for (int i = 0; i < 200; ++i) {
                ClockPhases phases;
                for (std::size_t place = 0; place < places; ++place) {
                    phases.rising[place] = between(-60.0, 60.0);
                    phases.turning[place] = between(-60.0, 60.0);
                    phases.risingSteps[place] = between(-longestStep, longestStep);
                    phases.turningSteps[place] = between(-longestStep, longestStep);
                }
                expectSameAsOneByOne(phases, std::uniform_int_distribution<int>(0, 300)(random));
            }
    });
}

TEST(ClockPhases, OnePhaseOutsideTheTurnComesBackThoughAllOthersAreWithin)
{
    test::onEachSimdTarget([] {
        for (std::size_t place = 0; place < places; ++place)
            for (const double step : {-1.0e-3, -1.0e-9, 0.0, 1.0e-9, 1.0e-3})
                for (const double phase : {-42.7, -0.3, 1.0, 1.02, 3.5}) {
                    SCOPED_TRACE(testing::Message() << place << ": " << phase << " by " << step);
                    ClockPhases phases;
                    phases.rising.fill(0.5);
                    phases.turning.fill(0.5);
                    auto rising = phases;
                    rising.rising[place] = phase;
                    rising.risingSteps[place] = step;
                    expectSameAsOneByOne(rising, 100);
                    auto turning = phases;
                    turning.turning[place] = phase;
                    turning.turningSteps[place] = step;
                    expectSameAsOneByOne(turning, 100);
                    turning.advance(100);
                    EXPECT_TRUE(turning.areWithinTurn());
                }
    });
}

TEST(ClockPhases, UnusedPlacesStayZero)
{
    ClockPhases phases;
    phases.risingSteps[ClockPhases::barClock] = 0.01;
    phases.advance(555);
    for (std::size_t i = 0; i < places; ++i) {
        EXPECT_EQ(phases.turning[i], 0.0);
        if (i != ClockPhases::barClock) {
            EXPECT_EQ(phases.rising[i], 0.0);
        }
    }
    EXPECT_NEAR(phases.rising[ClockPhases::barClock], 0.55, 1.0e-12);
}

} // namespace
} // namespace velotrine
