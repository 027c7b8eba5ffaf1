#include "engine/VelotrineDSPKernel.h"

#include "tests/engine/PlayingKernel.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using test::PlayingKernel;

constexpr double sampleRate = 48000.0;

/// The sum after `additions` additions of a step, a turn taken off wherever one is complete.
double accumulated(double step, int additions)
{
    double phase = 0.0;
    for (int i = 0; i < additions; ++i) {
        phase += step;
        if (phase >= 1.0)
            phase -= 1.0;
    }
    return phase;
}

double barsPerFrame(double tempo, double quartersPerBar = 4.0)
{
    return tempo / (quartersPerBar * 60.0 * sampleRate);
}

struct Host
{
    double tempo;
    double beatsPerBar;
    double beatUnit;
};

/// A kernel that follows a host whose transport is moving.
class FollowingKernel : public PlayingKernel
{
public:
    explicit FollowingKernel(const Host& host)
    {
        kernel.internalPlaying = false;
        kernel.sync = true;
        kernel.hostPlaying = true;
        kernel.hostTempo = host.tempo;
        kernel.hostBeatsPerBar = host.beatsPerBar;
        kernel.hostBeatUnit = host.beatUnit;
    }
};

TEST(KernelClock, TheInternalClockMakesOneTurnInFourQuarters)
{
    PlayingKernel playing;
    playing.run(1000, 250);
    EXPECT_EQ(playing.kernel.clockPhaseBuf, accumulated(barsPerFrame(120.0), 1000));
    EXPECT_EQ(playing.kernel.clockPhase, playing.kernel.clockPhaseBuf);
    playing.run(95000, 500);
    const double afterOneBar = playing.kernel.clockPhase;
    EXPECT_LT(std::min(afterOneBar, 1.0 - afterOneBar), 1.0e-9);
}

TEST(KernelClock, TheInternalTempoIsBoundedToFortyAndThreeHundred)
{
    struct Case
    {
        float bpm;
        double runsAt;
    };

    constexpr float infinity = std::numeric_limits<float>::infinity();
    const Case cases[] = {{20.0f, 40.0},     {40.0f, 40.0},
                          {-1.0f, 40.0},     {-infinity, 40.0},
                          {41.0f, 41.0},     {299.0f, 299.0},
                          {300.0f, 300.0},   {500.0f, 300.0},
                          {infinity, 300.0}, {std::numeric_limits<float>::quiet_NaN(), 300.0}};
    for (const auto& [bpm, runsAt] : cases) {
        SCOPED_TRACE(bpm);
        PlayingKernel playing;
        playing.kernel.bpm = bpm;
        playing.run(777, 777);
        EXPECT_EQ(playing.kernel.clockPhase, accumulated(barsPerFrame(runsAt), 777));
    }
}

TEST(KernelClock, AnInternalTempoOutOfBoundsIsKeptAsItWasWritten)
{
    for (const float bpm : {-1.0f, 20.0f, 500.0f}) {
        PlayingKernel playing;
        playing.kernel.setParameter(addressOf(GlobalParameter::bpm), bpm);
        playing.run(1000, 500);
        ASSERT_NE(playing.kernel.clockPhase, 0.0);
        EXPECT_EQ(playing.kernel.bpm, bpm);
        EXPECT_EQ(playing.kernel.parameter(addressOf(GlobalParameter::bpm)), bpm);
    }
}

TEST(KernelClock, FollowsTheHostsTempoAndMetre)
{
    struct Case
    {
        Host host;
        double quartersPerBar;
    };

    const Case cases[] = {{{133.0, 4.0, 4.0}, 4.0}, {{90.0, 3.0, 4.0}, 3.0},  {{90.0, 6.0, 8.0}, 3.0},
                          {{90.0, 7.0, 8.0}, 3.5},  {{90.0, 0.0, 8.0}, 4.0},  {{90.0, -3.0, 4.0}, 4.0},
                          {{90.0, 5.0, 0.0}, 5.0},  {{90.0, 5.0, -8.0}, 5.0}, {{1000.0, 2.0, 2.0}, 4.0},
                          {{10.0, 1.0, 4.0}, 1.0}};
    for (const auto& [host, quartersPerBar] : cases) {
        SCOPED_TRACE(testing::Message()
                     << host.tempo << " bpm, " << host.beatsPerBar << "/" << host.beatUnit);
        FollowingKernel following(host);
        following.run(900, 300);
        EXPECT_EQ(following.kernel.clockPhase, accumulated(barsPerFrame(host.tempo, quartersPerBar), 900));
    }
}

TEST(KernelClock, WithoutAHostTempoOrTransportNothingMovesButVoicesStillDecay)
{
    struct Case
    {
        double tempo;
        bool playing;
    };

    const Case cases[] = {
        {0.0, true}, {-120.0, true}, {std::numeric_limits<double>::quiet_NaN(), true}, {120.0, false}};
    for (const auto& [tempo, hostPlays] : cases) {
        SCOPED_TRACE(tempo);
        FollowingKernel following({tempo, 4.0, 4.0});
        auto& kernel = following.kernel;
        kernel.hostPlaying = hostPlays;
        kernel.internalPlaying = true;
        kernel.ringTimbres[3] = 1.0f;
        kernel.triggerVoice(3);
        const auto& voice = kernel.voicePool->voices[0];
        following.run(2400, 480);
        EXPECT_EQ(kernel.clockPhase, 0.0);
        EXPECT_EQ(kernel.clockPhaseBuf, 0.0);
        for (const auto& rotation : kernel.activityPhases)
            EXPECT_EQ(rotation, 0.0);
        EXPECT_TRUE(following.notes.empty());
        // A clock that ran at tempo 0 would move nothing either, but it would look at the rings.
        for (const bool armed : kernel.ringInitialised)
            EXPECT_FALSE(armed);
        EXPECT_TRUE(voice.active);
        // Half of the tenth of a second in which it falls by 60 dB.
        EXPECT_NEAR(voice.amplitude, std::sqrt(0.001f), 1.0e-4f);
        following.run(3000, 480);
        EXPECT_FALSE(voice.active);
        EXPECT_EQ(kernel.voicePool->triggerOrder.size(), 0U);
    }
}

TEST(KernelClock, AStopPutsClockRotationAndWobbleBackAtOnce)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.activity = 1.0f;
    playing.run(20000, 500);
    ASSERT_NE(kernel.activityPhases[4], 0.0);
    ASSERT_NE(kernel.lfoOffsets[4], 0.0);
    const auto random = kernel.rngState;

    kernel.internalPlaying = false;
    playing.run(1, 1);
    EXPECT_EQ(kernel.clockPhase, 0.0);
    EXPECT_EQ(kernel.clockPhaseBuf, 0.0);
    for (std::size_t ring = 0; ring < 5; ++ring) {
        EXPECT_EQ(kernel.activityPhases[ring], 0.0);
        EXPECT_EQ(kernel.lfoOffsets[ring], 0.0);
        EXPECT_EQ(kernel.lfoPhases[ring], 0.0);
    }
    EXPECT_EQ(kernel.rngState, random);
}

TEST(KernelClock, AStartArmsTheRingsAnewAndForgetsTheLastNote)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    playing.run(60000, 500);
    ASSERT_NE(kernel.lastPitchClass, -1);
    kernel.internalPlaying = false;
    playing.run(100, 100);
    EXPECT_NE(kernel.lastPitchClass, -1) << "only a start forgets it";

    const auto notesBefore = playing.notes.size();
    kernel.internalPlaying = true;
    playing.run(1, 1);
    EXPECT_EQ(kernel.lastPitchClass, -1);
    EXPECT_EQ(playing.notes.size(), notesBefore) << "the first frame only arms the rings";
    for (std::size_t ring = 0; ring < 5; ++ring) {
        EXPECT_TRUE(kernel.ringInitialised[ring]);
        EXPECT_EQ(kernel.lastSpotIndex[ring], kernel.spotCounts[ring] - 1);
    }
}

TEST(KernelClock, AfterAStopTheFirstSpotComesAThousandthOfABarIntoTheFirstBar)
{
    PlayingKernel playing;
    playing.playOnlyRing(1, 5);
    playing.kernel.bpm = 121.0f;
    playing.run(47000, 500);
    playing.kernel.internalPlaying = false;
    playing.run(500, 500);
    const auto started = playing.frames();
    const auto notesBefore = playing.notes.size();
    playing.kernel.internalPlaying = true;
    playing.run(5000, 500);

    // A bar of 4 x 60 x 48000 / 121 = 95206.6 frames; the hand stands beyond 95.2 after the 96th, frame 95.
    ASSERT_EQ(playing.notes.size(), notesBefore + 1);
    EXPECT_EQ(playing.notes.back().frame, started + 95);
    EXPECT_EQ(playing.notes.back().spot, 0);
}

TEST(KernelClock, TogglingSyncIsNoTransportEdge)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    playing.run(30000, 500);
    const double phase = kernel.clockPhase;
    const auto chain = kernel.lastPitchClass;
    const auto lastSpots = kernel.lastSpotIndex;
    ASSERT_NE(chain, -1);

    // The host stands: nothing moves, and nothing is put back either.
    kernel.sync = true;
    playing.run(1000, 500);
    EXPECT_EQ(kernel.clockPhase, phase);
    EXPECT_EQ(kernel.clockPhaseBuf, phase);

    kernel.sync = false;
    playing.run(1, 1);
    EXPECT_EQ(kernel.clockPhase, phase + barsPerFrame(120.0));
    EXPECT_EQ(kernel.lastPitchClass, chain);
    EXPECT_EQ(kernel.lastSpotIndex, lastSpots);
}

TEST(KernelClock, BothTransportsAreRememberedWhicheverIsFollowed)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    playing.run(30000, 500);
    const double phase = kernel.clockPhase;
    kernel.hostPlaying = true;
    kernel.hostTempo = 120.0;
    playing.run(500, 500);
    EXPECT_TRUE(kernel.hostPlayingLast);

    // Both run and both ran: following the other one is neither a start nor a stop.
    const auto chain = kernel.lastPitchClass;
    kernel.sync = true;
    playing.run(500, 500);
    EXPECT_NEAR(kernel.clockPhase, phase + 1000 * barsPerFrame(120.0), 1.0e-12);
    EXPECT_NE(chain, -1);
    EXPECT_NE(kernel.lastPitchClass, -1);

    // A stop of the transport that is not followed goes unnoticed.
    kernel.internalPlaying = false;
    playing.run(500, 500);
    EXPECT_FALSE(kernel.internalPlayingLast);
    EXPECT_NEAR(kernel.clockPhase, phase + 1500 * barsPerFrame(120.0), 1.0e-12);
}

TEST(KernelClock, AStopOfTheHostIsAStop)
{
    FollowingKernel following({120.0, 4.0, 4.0});
    following.run(30000, 500);
    ASSERT_GT(following.kernel.clockPhase, 0.3);
    following.kernel.hostPlaying = false;
    following.run(1, 1);
    EXPECT_EQ(following.kernel.clockPhase, 0.0);
}

TEST(KernelClock, FewerThanOneFrameDoNothing)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    playing.run(30000, 500);
    kernel.internalPlaying = false;
    const double phase = kernel.clockPhase;
    float left = 5.0f;
    float right = 6.0f;
    for (const int frames : {0, -1, INT32_MIN}) {
        kernel.process(&left, &right, frames);
        EXPECT_EQ(kernel.clockPhase, phase);
        EXPECT_TRUE(kernel.internalPlayingLast) << "the stop is still to be noticed";
        EXPECT_EQ(left, 5.0f);
        EXPECT_EQ(right, 6.0f);
    }
}

TEST(KernelClockDeathTest, ProcessBeforeSetupStopsTheProgram)
{
    VelotrineDSPKernel kernel;
    std::array<float, 64> left{};
    std::array<float, 64> right{};
    EXPECT_DEATH(kernel.process(left.data(), right.data(), 64), "velotrine: fatal");
}

TEST(KernelClockDeathTest, MoreFramesThanSetUpStopTheProgram)
{
    VelotrineDSPKernel kernel;
    kernel.setup(64, sampleRate);
    std::array<float, 65> left{};
    std::array<float, 65> right{};
    kernel.process(left.data(), right.data(), 64);
    EXPECT_DEATH(kernel.process(left.data(), right.data(), 65), "velotrine: fatal");
}

TEST(KernelClockDeathTest, ARunningClockWithoutASampleRateStopsTheProgram)
{
    PlayingKernel playing(64, 0.0);
    EXPECT_DEATH(playing.run(1, 1), "velotrine: fatal");
}

TEST(KernelClock, AStandingClockNeedsNoSampleRate)
{
    PlayingKernel playing(64, 0.0);
    playing.kernel.internalPlaying = false;
    playing.run(64, 64);
    EXPECT_EQ(playing.left, std::vector<float>(64, 0.0f));
}

TEST(KernelClockDeathTest, AMotionThatIsNotFiniteStopsTheProgram)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    for (const float value : {infinity, notANumber}) {
        SCOPED_TRACE(value);
        {
            PlayingKernel playing;
            playing.kernel.phaseOffsets[3] = value;
            EXPECT_DEATH(playing.run(1, 1), "velotrine: fatal");
        }
        {
            PlayingKernel playing;
            playing.kernel.activity = value;
            EXPECT_DEATH(playing.run(1, 1), "velotrine: fatal");
        }
        {
            PlayingKernel playing;
            playing.kernel.calories = value;
            EXPECT_DEATH(playing.run(1, 1), "velotrine: fatal");
        }
    }
}

TEST(KernelClockDeathTest, AHostTempoThatIsNotFiniteStopsTheProgram)
{
    FollowingKernel following({std::numeric_limits<double>::infinity(), 4.0, 4.0});
    EXPECT_DEATH(following.run(1, 1), "velotrine: fatal");
}

TEST(KernelClock, ARestoredPositionGoesOnWithTheSameNotesOverANewSetup)
{
    constexpr int block = 512;
    PlayingKernel interrupted;
    PlayingKernel uninterrupted;
    for (auto* const playing : {&interrupted, &uninterrupted}) {
        playing->kernel.activity = 0.8f;
        playing->run(std::int64_t{100} * block, block);
    }
    auto& kernel = interrupted.kernel;
    const auto position = kernel.position();
    kernel.setup(block, sampleRate);
    ASSERT_EQ(kernel.clockPhaseBuf, 0.0);
    kernel.restore(position);

    const auto& expected = uninterrupted.kernel;
    EXPECT_NE(expected.clockPhaseBuf, 0.0);
    EXPECT_EQ(kernel.clockPhaseBuf, expected.clockPhaseBuf.load());
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        SCOPED_TRACE(ring);
        EXPECT_NE(expected.lfoOffsets[ring], 0.0);
        EXPECT_EQ(kernel.activityPhases[ring], expected.activityPhases[ring].load());
        EXPECT_EQ(kernel.lfoOffsets[ring], expected.lfoOffsets[ring].load());
    }

    for (auto* const playing : {&interrupted, &uninterrupted})
        playing->run(std::int64_t{500} * block, block);
    EXPECT_GT(uninterrupted.notes.size(), 50U);
    EXPECT_EQ(interrupted.notes, uninterrupted.notes);
}

TEST(KernelClock, APositionKnowsWhetherItsTransportRan)
{
    PlayingKernel playing;
    playing.run(512, 512);
    auto& kernel = playing.kernel;
    const auto running = kernel.position();
    kernel.reset();
    kernel.restore(running);
    kernel.internalPlaying = false;
    playing.run(512, 512);
    EXPECT_EQ(kernel.clockPhaseBuf, 0.0) << "the stop is noticed";
}

TEST(KernelClock, RestsBeforeTheStartAndAgainWhenTheLastNoteHasEnded)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.internalPlaying = false;
    EXPECT_FALSE(VelotrineDSPKernel().isAtRest()) << "without setup";
    EXPECT_TRUE(kernel.isAtRest());
    kernel.internalPlaying = true;
    EXPECT_FALSE(kernel.isAtRest());
    playing.run(48000, 512);
    EXPECT_FALSE(kernel.isAtRest());
    kernel.internalPlaying = false;
    EXPECT_FALSE(kernel.isAtRest()) << "the stop is still to be noticed";
    playing.run(512, 512);
    EXPECT_FALSE(kernel.isAtRest()) << "notes still ring";
    playing.run(std::int64_t{2} * 48000, 512);
    EXPECT_TRUE(kernel.isAtRest());
    kernel.hostPlaying = true;
    EXPECT_FALSE(kernel.isAtRest()) << "the host's start is still to be noticed";
    playing.run(512, 512);
    EXPECT_TRUE(kernel.isAtRest());
    kernel.sync = true;
    EXPECT_FALSE(kernel.isAtRest());
}

} // namespace
} // namespace velotrine
