#include "takes/TakePlayer.h"

#include "audiounit/Parameters.h"
#include "takes/TakeText.h"
#include "tests/support/AllocationCounter.h"
#include "tests/takes/TakenInstrument.h"

#include <cstdint>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double rate = 48000.0;
constexpr int cycle = 32;
constexpr std::int64_t barFrames = 96000; ///< at 120 quarters a minute

Take takeOf(const std::string& text)
{
    auto read = takeFromText(text);
    if (!read.take)
        throw std::invalid_argument(read.error);
    return std::move(*read.take);
}

Take takeWithChanges(const std::string& changes)
{
    return takeOf(R"({"version": 1, "changes": [)" + changes + "]}");
}

/// Plays a take on a kernel without rendering it.
class Played
{
public:
    explicit Played(Take newTake, double sampleRate = rate)
        : take(std::move(newTake)), player(take, sampleRate)
    {
        player.begin(kernel);
    }

    /// Up to the cycle that begins at a frame, or behind it.
    void runTo(std::int64_t frame)
    {
        player.apply(kernel);
        while (player.frame() < frame) {
            player.advance(player.cycleFrames());
            player.apply(kernel);
        }
    }

    void runToBar(double bar) { runTo(static_cast<std::int64_t>(bar * barFrames)); }

    Take take;
    VelotrineDSPKernel kernel;
    TakePlayer player;
};

TEST(TakePlayer, BeginsAsTheTakeDoes)
{
    const Played played(takeOf(R"({"version": 1, "start": {"parameters": {"boredom": 0.125, "spotsR2": 16},
        "seed": 7, "generator": "00000000000000ff", "sameMusicAtEveryStart": true, "cycleFrames": 64,
        "host": {"tempo": 100, "beatsPerBar": 7, "beatUnit": 8, "playing": true}}, "changes": []})"));
    EXPECT_EQ(played.kernel.boredom, 0.125f);
    EXPECT_EQ(played.kernel.spotCounts[1], 16);
    EXPECT_EQ(played.kernel.seed, 7U);
    EXPECT_EQ(played.kernel.thrownSeed, 7U);
    EXPECT_EQ(played.kernel.rngState, 255U);
    EXPECT_TRUE(played.kernel.sameMusicAtEveryStart);
    EXPECT_TRUE(played.kernel.sync);
    EXPECT_EQ(played.kernel.hostTempo, 100.0);
    EXPECT_EQ(played.kernel.hostBeatsPerBar, 7.0);
    EXPECT_EQ(played.kernel.hostBeatUnit, 8.0);
    EXPECT_TRUE(played.kernel.hostPlaying);
    EXPECT_FALSE(played.kernel.internalPlaying);
    EXPECT_EQ(played.player.cycleFrames(), 64);
    EXPECT_TRUE(played.player.isOver());
}

TEST(TakePlayer, PlaysByTheInternalClockWhereThereIsNoHost)
{
    Played played(takeWithChanges(R"({"bar": 0, "play": true}, {"bar": 1, "set": {"sync": 1}})"));
    EXPECT_FALSE(played.kernel.sync);
    played.runToBar(2.0);
    EXPECT_FALSE(played.kernel.sync);
    EXPECT_TRUE(played.kernel.internalPlaying);
}

TEST(TakePlayer, ChangesAValueAtTheFirstCycleAtItsTimeOrLater)
{
    Played played(takeWithChanges(
        R"({"frame": 63, "set": {"activity": 0.1}}, {"frame": 64, "set": {"activity": 0.2}},
           {"frame": 65, "set": {"activity": 0.3}}, {"frame": 97, "end": true})"));
    played.runTo(32);
    EXPECT_EQ(played.kernel.activity, 0.5f);
    played.runTo(64);
    EXPECT_EQ(played.kernel.activity, 0.2f);
    EXPECT_FALSE(played.player.isOver());
    played.runTo(96);
    EXPECT_EQ(played.kernel.activity, 0.3f);
    EXPECT_FALSE(played.player.isOver());
    played.runTo(128);
    EXPECT_TRUE(played.player.isOver());
}

TEST(TakePlayer, CountsBarsToTheFrame)
{
    // 96000 frames a bar and 32 a cycle: each bar begins with a cycle.
    std::string changes;
    for (int bar = 0; bar <= 200; ++bar)
        changes += (bar == 0 ? "" : ", ") + ("{\"bar\": " + std::to_string(bar)) +
                   ", \"seed\": " + std::to_string(bar) + "}";
    Played played(takeWithChanges(changes));
    for (int bar = 1; bar <= 200; ++bar) {
        played.runTo(bar * barFrames - cycle);
        ASSERT_EQ(played.kernel.seed, static_cast<std::uint32_t>(bar - 1));
        played.runTo(bar * barFrames);
        ASSERT_EQ(played.kernel.seed, static_cast<std::uint32_t>(bar));
        ASSERT_NEAR(played.player.bar(), bar, 1.0e-9);
    }
}

TEST(TakePlayer, CountsBarsOnWhileTheClockStands)
{
    Played played(takeWithChanges(R"({"bar": 1, "play": true}, {"bar": 2, "play": false},
                                     {"bar": 4, "play": true})"));
    played.runToBar(0.99);
    EXPECT_FALSE(played.kernel.internalPlaying);
    played.runToBar(1.0);
    EXPECT_TRUE(played.kernel.internalPlaying);
    played.runToBar(2.0);
    EXPECT_FALSE(played.kernel.internalPlaying);
    played.runToBar(4.0);
    EXPECT_TRUE(played.kernel.internalPlaying);
}

TEST(TakePlayer, CountsBarsAtTheTempoInForce)
{
    Played played(takeWithChanges(
        R"({"bar": 1, "set": {"bpm": 240}}, {"bar": 3, "set": {"bpm": 60}}, {"bar": 4, "seed": 1})"));
    played.runTo(barFrames + 2 * barFrames / 2);
    EXPECT_EQ(played.kernel.bpm, 60.0f);
    EXPECT_DOUBLE_EQ(played.player.bar(), 3.0);
    played.runTo(2 * barFrames + 2 * barFrames - cycle);
    EXPECT_EQ(played.kernel.seed, defaultSeed);
    played.runTo(2 * barFrames + 2 * barFrames);
    EXPECT_EQ(played.kernel.seed, 1U);
}

TEST(TakePlayer, CountsBarsOfTheHostsMetreWhileItIsFollowed)
{
    // 7/8 at 105 quarters a minute is a bar in two seconds.
    Played played(takeOf(R"({"version": 1, "start": {"host": {"tempo": 105, "beatsPerBar": 7, "beatUnit": 8}},
        "changes": [{"bar": 0, "host": {"playing": true}}, {"bar": 2, "host": {"playing": false}}]})"));
    played.runTo(2 * barFrames - cycle);
    EXPECT_TRUE(played.kernel.hostPlaying);
    played.runTo(2 * barFrames);
    EXPECT_FALSE(played.kernel.hostPlaying);
}

TEST(TakePlayer, LetsBarsStandWhileTheHostTellsNoTempo)
{
    Played played(takeOf(R"({"version": 1, "start": {"host": {}},
        "changes": [{"bar": 1, "seed": 1}, {"frame": 9600, "host": {"tempo": 120}}]})"));
    played.runTo(10 * barFrames);
    EXPECT_EQ(played.kernel.seed, defaultSeed) << "changes come in the order of the list";
    EXPECT_EQ(played.player.bar(), 0.0);
}

TEST(TakePlayer, LeadsAValueStraightToItsEndInSoManyBars)
{
    Played played(takeWithChanges(R"({"bar": 1, "set": {"activity": 0}},
        {"bar": 2, "set": {"activity": 0.5, "boredom": 1}, "over": 4})"));
    played.runToBar(2.0);
    EXPECT_EQ(played.kernel.activity, 0.0f);
    EXPECT_EQ(played.kernel.boredom, 0.5f);
    played.runToBar(3.0);
    EXPECT_FLOAT_EQ(played.kernel.activity, 0.125f);
    EXPECT_FLOAT_EQ(played.kernel.boredom, 0.625f);
    EXPECT_FALSE(played.player.isOver());
    played.runToBar(6.0);
    EXPECT_EQ(played.kernel.activity, 0.5f);
    EXPECT_EQ(played.kernel.boredom, 1.0f);
    EXPECT_TRUE(played.player.isOver());
    played.runToBar(10.0);
    EXPECT_EQ(played.kernel.activity, 0.5f);
}

TEST(TakePlayer, LeadsWholeNumbersFromOneToTheNext)
{
    Played played(takeWithChanges(R"({"bar": 0, "set": {"spotsR1": 8}, "over": 4})"));
    for (const auto& [bar, spots] :
         {std::pair{0.0, 4}, {0.49, 4}, {0.51, 5}, {1.0, 5}, {3.49, 7}, {3.51, 8}}) {
        played.runToBar(bar);
        EXPECT_EQ(played.kernel.spotCounts[0], spots) << "bar " << bar;
    }
}

TEST(TakePlayer, LeadsTheTempoAndCountsItsBarsMeanwhile)
{
    Played played(takeWithChanges(R"({"bar": 0, "set": {"bpm": 240}, "over": 8}, {"bar": 8, "end": true})"));
    while (!played.player.isOver())
        played.runTo(played.player.frame() + cycle);
    // The time of eight bars whose tempo doubles in a straight line: 8 x 4 x 60 / 120 x ln 2 seconds.
    EXPECT_NEAR(static_cast<double>(played.player.frame()) / rate, 16.0 * 0.693147, 0.01);
    EXPECT_EQ(played.kernel.bpm, 240.0f);
}

TEST(TakePlayer, EndsARampWhereTheNextValueComes)
{
    Played played(takeWithChanges(R"({"bar": 0, "set": {"volume": 0}, "over": 8},
        {"bar": 4, "set": {"volume": 1}}, {"bar": 5, "set": {"volume": 0}, "over": 1})"));
    played.runToBar(4.0);
    EXPECT_EQ(played.kernel.volume, 1.0f);
    played.runToBar(4.9);
    EXPECT_EQ(played.kernel.volume, 1.0f);
    played.runToBar(5.5);
    EXPECT_FLOAT_EQ(played.kernel.volume, 0.5f);
    played.runToBar(9.0);
    EXPECT_EQ(played.kernel.volume, 0.0f);
}

TEST(TakePlayer, KeepsTimesInFramesAtAnotherRate)
{
    Played played(takeOf(R"({"version": 1, "start": {"sampleRate": 48000}, "changes":
                            [{"frame": 48000, "seed": 1}]})"),
                  96000.0);
    played.runTo(96000 - cycle);
    EXPECT_EQ(played.kernel.seed, defaultSeed);
    played.runTo(96000);
    EXPECT_EQ(played.kernel.seed, 1U);
}

TEST(TakePlayer, ChangesTheLengthOfItsCycles)
{
    Played played(takeWithChanges(R"({"frame": 64, "cycleFrames": 100})"));
    played.runTo(32);
    EXPECT_EQ(played.player.cycleFrames(), 32);
    played.runTo(64);
    EXPECT_EQ(played.player.cycleFrames(), 100);
}

TEST(TakePlayer, NeitherTakesNorGivesBackMemoryOnTheRenderThread)
{
    Played played(takeWithChanges(
        R"({"bar": 0, "play": true, "set": {"activity": 1, "boredom": 1, "spotsR1": 3}, "over": 2},
           {"bar": 1, "set": {"activity": 0}, "seed": 3}, {"bar": 3, "end": true})"));
    const AllocationCounter counter;
    played.runToBar(3.0);
    EXPECT_EQ(counter.count(), 0);
    EXPECT_TRUE(played.player.isOver());
}

} // namespace
} // namespace velotrine
