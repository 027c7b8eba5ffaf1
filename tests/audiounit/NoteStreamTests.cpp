#include "audiounit/NoteStream.h"

#include "tests/support/AllocationCounter.h"
#include "tests/support/NoteRecorder.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double sampleRate = 1000.0; // a frame is a millisecond
constexpr int ring = 2;

NoteEvent fired(int frame, int note, float seconds, int ofRing = ring)
{
    return {.frame = frame, .ring = ofRing, .spot = 0, .note = note, .gain = 0.25f, .decaySeconds = seconds};
}

NoteMessage on(int frame, std::uint8_t key)
{
    return {.frame = frame, .isOn = true, .channel = ring, .key = key, .velocity = 64};
}

NoteMessage off(int frame, std::uint8_t key)
{
    return {.frame = frame, .isOn = false, .channel = ring, .key = key, .velocity = 0};
}

class NoteStreamTest : public testing::Test
{
protected:
    NoteStreamTest() { stream.setup(sampleRate); }

    void play(const std::vector<NoteEvent>& cycle, int cycleFrame, int frames)
    {
        stream.play(cycle, cycleFrame, frames, {&recorder, played});
        played += frames;
    }

    void play(int frames) { play({}, 0, frames); }

    NoteStream stream;
    NoteRecorder recorder;
    int played = 0;
};

using Messages = std::vector<NoteMessage>;

TEST(NoteMessage, IsThreeBytesInMidi)
{
    EXPECT_EQ(on(0, 60).bytes(), (std::array<std::uint8_t, 3>{0x92, 60, 64}));
    EXPECT_EQ(off(0, 60).bytes(), (std::array<std::uint8_t, 3>{0x82, 60, 0}));
}

TEST(NoteOutput, CountsFramesFromThoseOfItsReceiver)
{
    NoteRecorder recorder;
    const NoteOutput output{&recorder, 100};
    EXPECT_TRUE(output.from(20).take(on(3, 60)));
    EXPECT_EQ(recorder.messages, (Messages{on(123, 60)}));
}

TEST(NoteOutput, TakesNothingWithoutAReceiver)
{
    EXPECT_FALSE(NoteOutput().take(on(0, 60)));
}

TEST_F(NoteStreamTest, HoldsAKeyFromItsCrossingForTheNotesLength)
{
    play({fired(7, 60, 0.05f)}, 0, 32);
    EXPECT_FALSE(stream.isSilent());
    play(100);
    EXPECT_EQ(recorder.messages, (Messages{on(7, 60), off(57, 60)}));
    EXPECT_TRUE(stream.isSilent());
}

TEST_F(NoteStreamTest, HoldsTheShortestNoteForAFrame)
{
    play({fired(31, 60, 0.0f)}, 0, 32);
    play(1);
    EXPECT_EQ(recorder.messages, (Messages{on(31, 60), off(32, 60)}));
}

TEST_F(NoteStreamTest, SaysOnlyWhatLiesInTheFramesThatArePlayed)
{
    const std::vector cycle{fired(3, 60, 1.0f), fired(9, 61, 1.0f), fired(10, 62, 1.0f), fired(31, 63, 1.0f)};
    play(cycle, 0, 9);
    EXPECT_EQ(recorder.messages, (Messages{on(3, 60)}));
    play(cycle, 9, 1);
    EXPECT_EQ(recorder.messages, (Messages{on(3, 60), on(9, 61)}));
    play(cycle, 10, 22);
    EXPECT_EQ(recorder.messages, (Messages{on(3, 60), on(9, 61), on(10, 62), on(31, 63)}));
}

TEST_F(NoteStreamTest, EndsAKeyThatIsStruckAgainFirst)
{
    play({fired(2, 60, 0.02f), fired(10, 60, 0.02f)}, 0, 32);
    EXPECT_EQ(recorder.messages, (Messages{on(2, 60), off(10, 60), on(10, 60), off(30, 60)}));
}

TEST_F(NoteStreamTest, EndsAKeyOnceThatIsStruckAgainAsItEnds)
{
    play({fired(2, 60, 0.02f), fired(22, 60, 0.005f)}, 0, 32);
    EXPECT_EQ(recorder.messages, (Messages{on(2, 60), off(22, 60), on(22, 60), off(27, 60)}));
}

TEST_F(NoteStreamTest, KeepsTheSameKeyOfTwoRingsApart)
{
    play({fired(2, 60, 0.02f), fired(4, 60, 0.05f, 3)}, 0, 32);
    play(100);
    ASSERT_EQ(recorder.messages.size(), 4u);
    EXPECT_EQ(recorder.messages[2], off(22, 60));
    EXPECT_EQ(mistakeIn(recorder.messages), "");
}

TEST_F(NoteStreamTest, LeavesOutWhatMidiCannotSay)
{
    auto silent = fired(2, 60, 0.02f);
    silent.gain = 0.0f;
    play({silent, fired(3, 128, 0.02f), fired(4, -1, 0.02f)}, 0, 32);
    play(100);
    EXPECT_TRUE(recorder.messages.empty());
}

TEST_F(NoteStreamTest, EndsAllKeysAtTheNextFrame)
{
    play({fired(2, 60, 1.0f), fired(2, 70, 1.0f)}, 0, 32);
    stream.endAll();
    play(5);
    EXPECT_EQ(recorder.messages, (Messages{on(2, 60), on(2, 70), off(32, 60), off(32, 70)}));
}

TEST_F(NoteStreamTest, EndsAllKeysAtANewRate)
{
    play({fired(2, 60, 1.0f)}, 0, 32);
    stream.setup(2000.0);
    play({fired(2, 60, 0.01f)}, 0, 32);
    EXPECT_EQ(recorder.messages, (Messages{on(2, 60), off(32, 60), on(34, 60), off(54, 60)}));
}

TEST_F(NoteStreamTest, LeavesOutNotesForWhichThereIsNoRoom)
{
    recorder.room = 1;
    play({fired(2, 60, 0.01f), fired(3, 61, 0.01f)}, 0, 5);
    recorder.room = 100;
    play(100);
    EXPECT_EQ(recorder.messages, (Messages{on(2, 60), off(12, 60)}));
}

TEST_F(NoteStreamTest, KeepsTheEndOfANoteUntilThereIsRoom)
{
    recorder.room = 1;
    play({fired(2, 60, 0.01f)}, 0, 32);
    play(100);
    recorder.room = 100;
    play({fired(1, 61, 0.5f)}, 0, 32);
    EXPECT_EQ(recorder.messages, (Messages{on(2, 60), off(132, 60), on(133, 61)}));
}

TEST_F(NoteStreamTest, KeepsTheEndsOfNotesWhileThereIsNoReceiver)
{
    play({fired(2, 60, 0.01f)}, 0, 5);
    stream.play(1000, {});
    stream.endAll();
    stream.play(std::vector{fired(0, 61, 0.01f)}, 0, 32, {});
    play(1);
    EXPECT_EQ(recorder.messages, (Messages{on(2, 60), off(5, 60)}));
    EXPECT_TRUE(stream.isSilent());
}

TEST_F(NoteStreamTest, DoesNotAllocate)
{
    const std::vector cycle{fired(2, 60, 0.01f), fired(3, 61, 0.01f)};
    recorder.messages.reserve(1000);
    const AllocationCounter counter;
    for (int round = 0; round < 100; ++round)
        play(cycle, 0, 32);
    stream.endAll();
    play(1);
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(recorder.messages.size(), 400u);
}

/// Cycles of notes of all kinds, as a kernel fires them: at most one for each ring and frame.
std::vector<NoteEvent> anyCycle(std::mt19937& random, int frames)
{
    const auto below = [&random](int count) { return std::uniform_int_distribution(0, count - 1)(random); };
    std::vector<NoteEvent> cycle;
    for (int frame = 0; frame < frames; ++frame)
        for (int each = 0; each < ringCount; ++each)
            if (below(20) == 0)
                cycle.push_back({.frame = frame,
                                 .ring = each,
                                 .spot = 0,
                                 .note = 55 + below(8) + (below(50) == 0 ? 100 : 0),
                                 .gain = below(10) == 0 ? 0.0f : 0.01f * static_cast<float>(below(100)),
                                 .decaySeconds = 0.001f * static_cast<float>(below(200))});
    return cycle;
}

TEST_F(NoteStreamTest, EveryKeyThatGoesDownGoesUpOnceInRandomLives)
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int count) {
            return std::uniform_int_distribution(0, count - 1)(random);
        };
        recorder = {};
        played = 0;
        for (int i = 0; i < 100; ++i) {
            const auto cycle = anyCycle(random, 32);
            recorder.room = below(4) == 0 ? below(10) : 1000;
            const auto before = recorder.messages.size();
            for (int done = 0; done < 32;) {
                const int frames = std::min(1 + below(32), 32 - done);
                const int end = played + frames;
                if (below(10) == 0)
                    stream.play(cycle, done, frames, {});
                else
                    play(cycle, done, frames);
                played = end;
                done += frames;
                if (below(20) == 0)
                    stream.endAll();
                if (below(50) == 0)
                    stream.setup(500.0 + below(1000));
            }
            for (auto j = before; j < recorder.messages.size(); ++j)
                ASSERT_LT(recorder.messages[j].frame, played) << seed;
        }
        recorder.room = 10000;
        play(1000);
        ASSERT_EQ(mistakeIn(recorder.messages), "") << seed;
        ASSERT_GT(recorder.messages.size(), 100u) << seed;
        ASSERT_TRUE(stream.isSilent());
    }
}

TEST_F(NoteStreamTest, SaysTheSameHoweverItsCyclesAreCut)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        const auto sayCutBy = [seed](int longest) {
            std::mt19937 random(seed);
            std::mt19937 cuts(seed);
            NoteStream each;
            each.setup(sampleRate);
            NoteRecorder said;
            int frame = 0;
            for (int i = 0; i < 50; ++i) {
                const auto cycle = anyCycle(random, 32);
                for (int done = 0; done < 32;) {
                    const int frames = std::min(std::uniform_int_distribution(1, longest)(cuts), 32 - done);
                    each.play(cycle, done, frames, {&said, frame});
                    done += frames;
                    frame += frames;
                }
            }
            return said.messages;
        };
        const auto whole = sayCutBy(1000000);
        ASSERT_GT(whole.size(), 100u);
        for (const int longest : {1, 2, 17, 31})
            ASSERT_EQ(sayCutBy(longest), whole) << longest;
    }
}

} // namespace
} // namespace velotrine
