#include "tests/host/JackNoteRecorder.h"
#include "tests/host/PlayingEngine.h"
#include "tests/support/JackServer.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/NoteRecorder.h"
#include "tests/support/Onsets.h"
#include "tests/support/PlayedNotes.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double timeoutSeconds = 10.0;

/// One ring of two spots, with notes that die away before the next.
void makeSparse(VelotrineDSPKernel& kernel)
{
    kernel.activity = 0.0f;
    kernel.calories = 0.0f;
    for (auto& count : kernel.spotCounts)
        count = 0;
    kernel.spotCounts[1] = 2;
    kernel.ringTimbres[1] = 1.0f;
}

class JackNotes : public testing::Test
{
protected:
    /// Connects the recorder, and only then begins to play.
    void play()
    {
        playing->instrument->dspKernel->internalPlaying = false;
        ASSERT_FALSE(playing->engine.start());
        recorder.emplace();
        ASSERT_TRUE(recorder->connectSound());
        ASSERT_TRUE(recorder->connectNotes());
        playing->instrument->dspKernel->internalPlaying = true;
    }

    /// Returns in mid note.
    void playUntilAKeyIsDown()
    {
        play();
        ASSERT_TRUE(runMessagesUntil([this] { return recorder->keysDown() > 0; }, timeoutSeconds));
    }

    const JackServer server{{"-S"}}; // it waits for its clients, and loses nothing
    std::optional<PlayingEngine> playing{std::in_place};
    std::optional<JackNoteRecorder> recorder;
};

TEST_F(JackNotes, LieAtTheirFramesOfTheSound)
{
    makeSparse(*playing->instrument->dspKernel);
    play();
    runMessagesFor(2.5);
    const auto take = recorder->take();

    const auto onsets = onsetsIn(take.sound);
    const auto strikes = strikesIn(take.notes);
    ASSERT_GE(strikes.size(), 3u);
    ASSERT_EQ(onsets.size(), strikes.size());
    for (std::size_t i = 0; i < strikes.size(); ++i) {
        EXPECT_EQ(strikes[i].channel, 1);
        // The sound begins with the render cycle in which the crossing lies, and a sine with a zero.
        EXPECT_LE(onsets[i], strikes[i].frame + 1);
        EXPECT_GT(onsets[i], strikes[i].frame - CycleRenderer::defaultCycleFrames);
    }
}

TEST_F(JackNotes, ComeToThoseWhoHearNoSound)
{
    play();
    recorder->disconnectSound();
    const auto before = recorder->strikes();
    runMessagesFor(1.0);
    EXPECT_GT(recorder->strikes(), before + 10);
}

TEST_F(JackNotes, EndWhenTheApplicationLeavesInMidNote)
{
    playUntilAKeyIsDown();
    playing.reset();
    runMessagesFor(0.2);
    const auto notes = recorder->take().notes;
    EXPECT_FALSE(notes.empty());
    EXPECT_EQ(mistakeIn(notes), "");
}

TEST_F(JackNotes, RunToTheirEndsAfterAStop)
{
    playUntilAKeyIsDown();
    playing->instrument->dspKernel->internalPlaying = false;
    EXPECT_TRUE(runMessagesUntil([this] { return recorder->keysDown() == 0; }, timeoutSeconds));
    EXPECT_EQ(mistakeIn(recorder->take().notes), "");
}

TEST_F(JackNotes, GoOnAtVolumeZero)
{
    playing->instrument->dspKernel->volume = 0.0f;
    play();
    runMessagesFor(0.5);
    const auto take = recorder->take();
    EXPECT_FALSE(take.notes.empty());
    EXPECT_TRUE(std::ranges::all_of(take.sound, [](float sample) { return sample == 0.0f; }));
}

} // namespace
} // namespace velotrine
