#include "plugin/HostedInstrument.h"

#include "tests/support/NoteRecorder.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/Sound.h"

#include <algorithm>
#include <array>
#include <random>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double sampleRate = 48000.0;
constexpr HostTransport stopped{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = false};
constexpr HostTransport rolling{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};

class NotesOfAHostedInstrument : public testing::Test
{
protected:
    NotesOfAHostedInstrument() { EXPECT_TRUE(instrument.prepare(sampleRate)); }

    void render(int frames)
    {
        Sound sound(frames);
        instrument.render({sound.left.data(), sound.right.data()}, frames, {&recorder, played});
        played += frames;
        isHeard = !sound.isSilent();
    }

    void render(int frames, const HostTransport& transport)
    {
        instrument.setTransport(transport);
        render(frames);
    }

    [[nodiscard]] bool holdsKeys() const { return !mistakeIn(recorder.messages).empty(); }

    void renderUntilAKeyIsDown()
    {
        instrument.setTransport(rolling);
        while (!holdsKeys())
            render(17);
    }

    RecordingHost host;
    HostedInstrument instrument{host};
    NoteRecorder recorder;
    int played = 0;
    bool isHeard = false;
};

TEST_F(NotesOfAHostedInstrument, EndInTheFrameAfterAReset)
{
    renderUntilAKeyIsDown();
    instrument.reset();
    const int atReset = played;
    render(1, stopped);
    EXPECT_FALSE(holdsKeys());
    EXPECT_EQ(recorder.messages.back().frame, atReset);
}

TEST_F(NotesOfAHostedInstrument, EndAfterItWasReleasedAndPreparedAgain)
{
    renderUntilAKeyIsDown();
    instrument.release();
    EXPECT_TRUE(instrument.prepare(2.0 * sampleRate));
    const int restarted = played;
    render(1, stopped);
    EXPECT_FALSE(holdsKeys());
    EXPECT_EQ(recorder.messages.back().frame, restarted);
}

TEST_F(NotesOfAHostedInstrument, EndInABlockWhileItIsNotReady)
{
    renderUntilAKeyIsDown();
    instrument.release();
    render(32);
    EXPECT_FALSE(holdsKeys());
}

TEST_F(NotesOfAHostedInstrument, EndInThePauseThatTheirHostMakes)
{
    renderUntilAKeyIsDown();
    const int atPause = played;
    instrument.pause({&recorder, atPause});
    EXPECT_FALSE(holdsKeys());
    EXPECT_EQ(recorder.messages.back().frame, atPause);
    // It plays on where it was.
    const auto before = recorder.messages.size();
    render(48000);
    EXPECT_GT(recorder.messages.size(), before);
}

TEST_F(NotesOfAHostedInstrument, RunToTheirEndsAfterAStop)
{
    renderUntilAKeyIsDown();
    const int atStop = played;
    render(100000, stopped);
    EXPECT_FALSE(holdsKeys());
    EXPECT_GT(recorder.messages.back().frame, atStop + CycleRenderer::defaultCycleFrames);
    const auto all = recorder.messages.size();
    render(100000, stopped);
    EXPECT_EQ(recorder.messages.size(), all);
}

TEST_F(NotesOfAHostedInstrument, EndWhileItRestsIfTheirSoundIsOverBefore)
{
    renderUntilAKeyIsDown();
    instrument.setTransport(stopped);
    render(32);
    instrument.audioUnit()->dspKernel->voicePool->silence();
    render(64);
    render(64);
    ASSERT_TRUE(holdsKeys());
    ASSERT_FALSE(isHeard);
    render(100000);
    EXPECT_FALSE(holdsKeys());
}

TEST_F(NotesOfAHostedInstrument, AreTheSameWhoeverListens)
{
    render(30000, rolling);
    HostedInstrument unheard{host};
    EXPECT_TRUE(unheard.prepare(sampleRate));
    unheard.setTransport(rolling);
    Sound heard(30000);
    unheard.render({heard.left.data(), heard.right.data()}, 30000);
    NoteRecorder later;
    unheard.render({heard.left.data(), heard.right.data()}, 30000, {&later, 30000});
    render(30000);
    const auto strikesAfter = [](const NoteRecorder& each) {
        auto messages = each.messages;
        std::erase_if(messages, [](const auto& message) { return message.frame < 30000 || !message.isOn; });
        return messages;
    };
    EXPECT_EQ(strikesAfter(later), strikesAfter(recorder));
    EXPECT_FALSE(later.messages.empty());
    EXPECT_TRUE(later.messages.front().isOn) << "a note ended that nobody was told of";
}

TEST_F(NotesOfAHostedInstrument, EndWhateverHappensInRandomLives)
{
    for (unsigned seed = 0; seed < 100; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int count) {
            return std::uniform_int_distribution(0, count - 1)(random);
        };
        recorder.messages.clear();
        played = 0;
        for (int step = 0; step < 100; ++step) {
            switch (below(30)) {
            case 0:
                instrument.reset();
                break;
            case 1:
                instrument.release();
                break;
            case 2:
                EXPECT_TRUE(instrument.prepare(8000.0 * (1 + below(12))));
                break;
            case 3:
                instrument.pause({&recorder, played});
                break;
            case 4:
                instrument.choosePreset(static_cast<std::size_t>(below(10)));
                break;
            case 5:
                instrument.audioUnit()->dspKernel->internalPlaying = below(2) == 0;
                break;
            default:
                recorder.room = below(5) == 0 ? below(4) : 1000;
                render(1 + below(3000), below(5) == 0 ? stopped : rolling);
            }
        }
        recorder.room = 1000;
        instrument.audioUnit()->dspKernel->internalPlaying = false;
        EXPECT_TRUE(instrument.prepare(sampleRate));
        render(200000, stopped);
        ASSERT_EQ(mistakeIn(recorder.messages), "") << seed;
    }
}

} // namespace
} // namespace velotrine
