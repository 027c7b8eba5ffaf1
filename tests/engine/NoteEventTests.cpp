#include "engine/VelotrineDSPKernel.h"

#include "engine/RandomGenerator.h"
#include "tests/engine/PlayingKernel.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using test::PlayingKernel;

/// Frames in a bar at 300 bpm and 48 kHz.
constexpr int fastBar = 38400;

/// One ring, on which every frame but the first crosses a spot.
void crossASpotEveryFrame(PlayingKernel& playing, std::size_t ring)
{
    playing.playOnlyRing(ring, fastBar * 3 / 2);
    playing.kernel.bpm = 300.0f;
}

TEST(NoteEvents, FramesAreCountedFromTheStartOfTheCall)
{
    PlayingKernel playing;
    playing.playOnlyRing(2, 4);
    playing.run(90, 90);
    EXPECT_TRUE(playing.kernel.noteEvents().empty());
    playing.run(100, 100);
    ASSERT_EQ(playing.kernel.noteEvents().size(), 1U);
    EXPECT_EQ(playing.kernel.noteEvents()[0].frame, 5) << "the 96th frame";
    EXPECT_EQ(playing.kernel.noteEvents()[0].ring, 2);
    EXPECT_EQ(playing.kernel.noteEvents()[0].spot, 0);
}

TEST(NoteEvents, ComeInFiringOrderFromTheInnermostRingOutwardsWithinAFrame)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    playing.playOnlyRing(0, 2);
    for (auto& spots : kernel.spotCounts)
        spots = 2;
    kernel.phaseOffsets[1] = 0.02f;
    playing.run(4000, 4000);
    const auto events = kernel.noteEvents();
    ASSERT_EQ(events.size(), 5U);
    const std::array<int, 5> rings{0, 2, 3, 4, 1};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(events[i].ring, rings[i]);
        // The note that fired first has the first voice.
        EXPECT_EQ(kernel.voicePool->voices[i].ring, rings[i]);
    }
    EXPECT_EQ(events[0].frame, 95);
    EXPECT_EQ(events[3].frame, 95);
    EXPECT_GT(events[4].frame, 1900);
}

TEST(NoteEvents, AreEmptyAfterACallInWhichNothingFires)
{
    PlayingKernel playing;
    playing.playOnlyRing(2, 4);
    playing.run(100, 100);
    ASSERT_EQ(playing.kernel.noteEvents().size(), 1U);
    playing.run(100, 100);
    EXPECT_TRUE(playing.kernel.noteEvents().empty());
}

TEST(NoteEvents, AreEmptyAfterACallWithoutFrames)
{
    PlayingKernel playing;
    playing.playOnlyRing(2, 4);
    playing.run(100, 100);
    ASSERT_EQ(playing.kernel.noteEvents().size(), 1U);
    playing.kernel.process(nullptr, nullptr, 0);
    EXPECT_TRUE(playing.kernel.noteEvents().empty());
}

TEST(NoteEvents, TellGainDecayAndPitchAsTheVoiceGotThem)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.activity = 0.0f;
    kernel.calories = 0.0f;
    kernel.ringVolumes[3] = 0.9f;
    kernel.ringTimbres[4] = 0.8f;
    kernel.ringTimbres[0] = 7.0f;
    for (auto& probability : kernel.probabilities)
        probability = 1.0f;
    playing.run(100, 100);
    const auto events = kernel.noteEvents();
    ASSERT_EQ(events.size(), 5U);
    for (std::size_t i = 0; i < events.size(); ++i) {
        const auto& voice = kernel.voicePool->voices[i];
        EXPECT_EQ(voice.ring, events[i].ring);
        EXPECT_EQ(voice.gain, events[i].gain);
        const double decaySamples = static_cast<double>(events[i].decaySeconds) * 48000.0;
        EXPECT_FLOAT_EQ(voice.decayRate, static_cast<float>(std::pow(0.001, 1.0 / decaySamples)));
        EXPECT_NEAR(voice.carrierFreq, 440.0 * std::exp2((events[i].note - 69) / 12.0), 1.0e-9);
    }
    EXPECT_EQ(events[3].gain, 0.9f * 0.9f);
    EXPECT_FLOAT_EQ(events[4].decaySeconds, 0.22f);
    EXPECT_EQ(events[0].decaySeconds, 0.1f);
}

TEST(NoteEvents, TwoHundredAndFiftySixHaveRoom)
{
    PlayingKernel playing;
    crossASpotEveryFrame(playing, 1);
    playing.run(257, 257);
    EXPECT_EQ(playing.kernel.noteEvents().size(), 256U);
    EXPECT_EQ(playing.kernel.droppedNoteEvents, 0);
    const auto events = playing.kernel.noteEvents();
    for (std::size_t i = 0; i < events.size(); ++i)
        EXPECT_EQ(events[i].frame, static_cast<int>(i) + 1);
}

TEST(NoteEvents, FurtherOnesAreCountedAndStillSound)
{
    PlayingKernel playing;
    crossASpotEveryFrame(playing, 1);
    playing.run(501, 501);
    const auto& kernel = playing.kernel;
    EXPECT_EQ(kernel.noteEvents().size(), 256U);
    EXPECT_EQ(kernel.noteEvents().back().frame, 256);
    EXPECT_EQ(kernel.droppedNoteEvents, 500 - 256);

    // Each of the 500 took a random number for its pitch, and a voice in turn.
    std::uint64_t state = 12345;
    for (int i = 0; i < 500; ++i)
        state = xorshift(state);
    EXPECT_EQ(kernel.rngState, state);
    const auto& order = kernel.voicePool->triggerOrder;
    ASSERT_EQ(order.size(), 16U);
    EXPECT_EQ(order[15], 499 % 16);
    EXPECT_EQ(order[0], 500 % 16);
}

TEST(NoteEvents, TheCountOfDroppedOnesIsOfTheLastCallAlone)
{
    PlayingKernel playing;
    crossASpotEveryFrame(playing, 1);
    playing.run(501, 501);
    playing.run(301, 301);
    EXPECT_EQ(playing.kernel.droppedNoteEvents, 301 - 256);
    playing.run(10, 10);
    EXPECT_EQ(playing.kernel.noteEvents().size(), 10U);
    EXPECT_EQ(playing.kernel.droppedNoteEvents, 0);
    playing.run(301, 301);
    playing.kernel.process(nullptr, nullptr, 0);
    EXPECT_EQ(playing.kernel.droppedNoteEvents, 0);
}

TEST(NoteEvents, ANoteStartedOutsideACallIsNoEvent)
{
    PlayingKernel playing;
    auto& kernel = playing.kernel;
    kernel.triggerVoice(3);
    EXPECT_TRUE(kernel.noteEvents().empty());
    static_cast<void>(kernel.nextNote(2));
    playing.playOnlyRing(2, 4);
    playing.run(96, 96);
    kernel.triggerVoice(4);
    ASSERT_EQ(kernel.noteEvents().size(), 1U);
    EXPECT_EQ(kernel.noteEvents()[0].ring, 2);
    EXPECT_EQ(kernel.voicePool->triggerOrder.size(), 3U);
}

} // namespace
} // namespace velotrine
