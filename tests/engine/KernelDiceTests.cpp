#include "tests/engine/PlayingKernel.h"

#include "engine/RandomGenerator.h"

#include <array>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using test::HeardNote;
using test::PlayingKernel;

constexpr int block = 64;
constexpr std::int64_t barFrames = 96000; ///< at the tempo and rate that a kernel begins with

/// Plays a bar, stops, and gives the notes, dated from the start.
std::vector<HeardNote> playBar(PlayingKernel& playing)
{
    playing.notes.clear();
    const auto start = playing.frames();
    playing.kernel.internalPlaying = true;
    playing.run(barFrames, block);
    playing.kernel.internalPlaying = false;
    playing.run(block, block);
    auto notes = playing.notes;
    for (auto& note : notes)
        note.frame -= start;
    return notes;
}

TEST(KernelDice, ASeedThatIsSetBeforeTheFirstCallIsThrownInIt)
{
    PlayingKernel playing;
    playing.kernel.seed = 7;
    EXPECT_EQ(playing.kernel.rngState, 12345U) << "the render thread's alone";
    playing.run(1, 1);
    EXPECT_EQ(playing.kernel.rngState, generatorState(7));
    EXPECT_EQ(playing.kernel.inputs().seed, 7U);
}

TEST(KernelDice, AnotherSeedIsOtherMusicAndTheSameSeedTheSame)
{
    const auto musicOf = [](std::uint32_t seed) {
        PlayingKernel playing;
        playing.kernel.seed = seed;
        return playBar(playing);
    };
    EXPECT_EQ(musicOf(7), musicOf(7));
    EXPECT_NE(musicOf(7), musicOf(8));
    EXPECT_EQ(musicOf(defaultSeed), [] {
        PlayingKernel playing;
        return playBar(playing);
    }());
}

TEST(KernelDice, GoOnFromPlayToPlayUnlessToldOtherwise)
{
    PlayingKernel playing;
    const auto first = playBar(playing);
    const auto second = playBar(playing);
    EXPECT_NE(first, second);
}

TEST(KernelDice, OfASeedThatStaysAreNotThrownAgain)
{
    PlayingKernel playing;
    playBar(playing);
    const auto random = playing.kernel.rngState;
    playing.kernel.seed = defaultSeed;
    playing.run(block, block);
    EXPECT_EQ(playing.kernel.rngState, random);
}

TEST(KernelDice, WithTheSameMusicAtEveryStartAreThrownAtEachStart)
{
    for (const std::uint32_t seed : {defaultSeed, 7U}) {
        PlayingKernel playing;
        playing.kernel.seed = seed;
        playing.kernel.sameMusicAtEveryStart = true;
        const auto first = playBar(playing);
        EXPECT_GT(first.size(), 10U);
        EXPECT_EQ(playBar(playing), first);
        EXPECT_EQ(playBar(playing), first);
    }
}

TEST(KernelDice, WithTheSameMusicAtEveryStartFollowTheHostsTransportToo)
{
    PlayingKernel playing;
    playing.kernel.sync = true;
    playing.kernel.hostTempo = 120.0;
    playing.kernel.sameMusicAtEveryStart = true;
    std::array<std::vector<HeardNote>, 2> plays;
    for (auto& notes : plays) {
        playing.notes.clear();
        const auto start = playing.frames();
        playing.kernel.hostPlaying = true;
        playing.run(barFrames, block);
        playing.kernel.hostPlaying = false;
        playing.run(block, block);
        notes = playing.notes;
        for (auto& note : notes)
            note.frame -= start;
    }
    EXPECT_GT(plays[0].size(), 10U);
    EXPECT_EQ(plays[0], plays[1]);
}

TEST(KernelDice, WithTheSameMusicAtEveryStartGoOnWhileTheClockRuns)
{
    PlayingKernel playing;
    playing.kernel.sameMusicAtEveryStart = true;
    playing.run(barFrames, block);
    const auto random = playing.kernel.rngState;
    EXPECT_NE(random, 12345U);
    playing.kernel.activity = 0.9f;
    playing.run(block, block);
    EXPECT_EQ(playing.kernel.rngState, random) << "no spot within a block of the bar line";
}

TEST(KernelDice, SurviveASetup)
{
    PlayingKernel playing;
    playing.kernel.seed = 7;
    playing.run(barFrames, block);
    const auto random = playing.kernel.rngState;
    playing.kernel.setup(block, 44100.0);
    EXPECT_EQ(playing.kernel.rngState, random);
    EXPECT_EQ(playing.kernel.seed, 7U);
    EXPECT_EQ(playing.kernel.thrownSeed, 7U);
}

TEST(KernelInputs, AreWhatTheLastCallSaw)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        kernel.setParameter(address, static_cast<float>(address % 5 + 1));
    kernel.sync = false;
    kernel.sameMusicAtEveryStart = true;
    playing.run(block, block);

    std::array<float, parameterCount> expected{};
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        expected[address] = kernel.parameter(address);
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        kernel.setParameter(address, 0.0f);
    kernel.internalPlaying = false;
    kernel.sameMusicAtEveryStart = false;

    for (ParameterAddress address = 0; address < parameterCount; ++address) {
        float seen = -1.0f;
        visitField(
            address, [&seen](const auto& value) { seen = static_cast<float>(value); },
            kernel.inputs().parameters);
        EXPECT_EQ(seen, expected[address]) << "address " << address;
    }
    EXPECT_TRUE(kernel.inputs().internalPlaying);
    EXPECT_TRUE(kernel.inputs().sameMusicAtEveryStart);
}

} // namespace
} // namespace velotrine
