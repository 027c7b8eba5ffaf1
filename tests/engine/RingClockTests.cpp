#include "engine/RingClock.h"

#include "tests/support/EachSimdTarget.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double twoPi = 6.283185307179586;

/// Draws settings and phases as music has them.
class RandomMusic
{
public:
    RingClock::Settings settings()
    {
        RingClock::Settings drawn{.quartersPerMinute = between(40.0, 300.0),
                                  .quartersPerBar = between(2.0, 7.0),
                                  .sampleRate = between(8000.0, 96000.0),
                                  .activity = between(0.0, 1.0),
                                  .calories = between(0.0, 1.0),
                                  .phaseOffsets = {},
                                  .spotCounts = {}};
        for (auto& offset : drawn.phaseOffsets)
            offset = between(0.0, 1.0);
        for (auto& count : drawn.spotCounts)
            count = std::uniform_int_distribution<std::int64_t>(1, 16)(random);
        return drawn;
    }

    RingClock::Phases phases()
    {
        RingClock::Phases drawn{.bar = between(0.0, 1.0), .wobbles = {}, .rotations = {}};
        for (auto& wobble : drawn.wobbles)
            wobble = between(0.0, 1.0);
        for (auto& rotation : drawn.rotations)
            rotation = between(0.0, 1.0);
        return drawn;
    }

    int frames(int most) { return std::uniform_int_distribution(1, most)(random); }

private:
    double between(double from, double to) { return std::uniform_real_distribution(from, to)(random); }

    std::mt19937_64 random{20240229};
};

/// Past which spot the hand is, and whether past the half turn: all that a crossing depends on.
std::int64_t sectionOf(const RingClock& clock, std::size_t ring)
{
    const double position = clock.handOn(ring).position;
    const auto spot = static_cast<std::int64_t>(position * static_cast<double>(clock.spotCount(ring)));
    return 2 * spot + (position < 0.5 ? 0 : 1);
}

TEST(RingClock, WithinTheQuietFramesNoHandPassesASpotOrTheHalfTurn)
{
    test::onEachSimdTarget([] {
        RandomMusic music;
        std::int64_t quietFrames = 0;
        for (int i = 0; i < 500; ++i) {
            RingClock start;
            start.start(music.settings(), music.phases());
            start.advance(1);
            for (std::size_t ring = 0; ring < ringCount; ++ring) {
                auto clock = start;
                const auto section = sectionOf(clock, ring);
                const int quiet = std::min(clock.handOn(ring).quietFrames, 1000);
                for (int frame = 0; frame < quiet; ++frame) {
                    clock.advance(1);
                    ASSERT_EQ(sectionOf(clock, ring), section) << "ring " << ring << ", frame " << frame;
                }
                quietFrames += quiet;
            }
        }
        EXPECT_GT(quietFrames, 500 * ringCount * 100);
    });
}

TEST(RingClock, ManyFramesAtOnceComeToWhereOneByOneDoes)
{
    RandomMusic music;
    for (int i = 0; i < 200; ++i) {
        RingClock atOnce;
        atOnce.start(music.settings(), music.phases());
        auto oneByOne = atOnce;
        const int frames = music.frames(700);
        atOnce.advance(frames);
        for (int frame = 0; frame < frames; ++frame)
            oneByOne.advance(1);
        ASSERT_EQ(atOnce.phases().bar, oneByOne.phases().bar);
        ASSERT_EQ(atOnce.phases().wobbles, oneByOne.phases().wobbles);
        ASSERT_EQ(atOnce.phases().rotations, oneByOne.phases().rotations);
        for (std::size_t ring = 0; ring < ringCount; ++ring)
            ASSERT_EQ(atOnce.handOn(ring).position, oneByOne.handOn(ring).position);
    }
}

TEST(RingClock, TheHandIsTheClockLessOffsetRotationAndWobble)
{
    RandomMusic music;
    for (int i = 0; i < 200; ++i) {
        const auto settings = music.settings();
        RingClock clock;
        clock.start(settings, music.phases());
        clock.advance(music.frames(700));
        const auto phases = clock.phases();
        const double depth = settings.calories / 4.0 / std::pow(settings.quartersPerBar, 2.0);
        for (std::size_t ring = 0; ring < ringCount; ++ring) {
            const double direction = ring % 2 == 0 ? 1.0 : -1.0;
            const double wobble = direction * depth * std::sin(twoPi * phases.wobbles[ring]);
            const double turns =
                phases.bar - std::max(settings.phaseOffsets[ring], 0.001) - phases.rotations[ring] - wobble;
            const auto hand = clock.handOn(ring);
            ASSERT_NEAR(hand.wobble, wobble, 1.0e-15);
            ASSERT_NEAR(hand.position, turns - std::floor(turns), 1.0e-14);
        }
    }
}

TEST(RingClock, ARingWithoutSpotsWobblesAndIsQuietForEver)
{
    RandomMusic music;
    auto settings = music.settings();
    settings.calories = 1.0;
    settings.spotCounts[2] = 0;
    RingClock clock;
    clock.start(settings, music.phases());
    clock.advance(100);
    const auto before = clock.handOn(2);
    clock.advance(100);
    EXPECT_NE(clock.handOn(2).wobble, before.wobble);
    EXPECT_EQ(before.quietFrames, std::numeric_limits<int>::max());
}

} // namespace
} // namespace velotrine
