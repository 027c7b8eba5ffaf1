#include "tests/render/EngineRun.h"
#include "tests/render/MidiReader.h"
#include "tests/render/ProgramTest.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int ringTracks = 5;
constexpr double ticksPerQuarter = 960.0;

std::size_t timesIn(const std::string& text, const std::string& word)
{
    std::size_t times = 0;
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size()))
        ++times;
    return times;
}

class Midi : public ProgramTest
{
protected:
    static constexpr int sampleRate = 44100;
    static constexpr float tempo = 137.0f;

    void SetUp() override
    {
        render({"--preset", "6", "--set", "activity=0.7", "--set", "probR1=1", "--tempo", "137", "--seconds",
                "5", "--sample-rate", "44100", "--out", "a.wav", "--midi", "a.mid"});
        content = readMidi(folder.read("a.mid"));
        notes = runEngine({.preset = 6,
                           .values = {{"activity", 0.7f}, {"probR1", 1.0f}, {"bpm", tempo}},
                           .sampleRate = sampleRate,
                           .cycleFrames = 32,
                           .playedFrames = std::int64_t{5} * sampleRate})
                    .notes;
    }

    static std::int64_t tickAt(double seconds)
    {
        return std::llround(seconds * static_cast<double>(tempo) / 60.0 * ticksPerQuarter);
    }

    /// The notes of a ring as the engine fired them, each ended where the same key is struck again.
    [[nodiscard]] std::vector<MidiContent::Note> firedNotes(int ring) const
    {
        std::vector<MidiContent::Note> fired;
        for (const auto& [frame, event] : notes) {
            if (event.ring != ring)
                continue;
            const auto start = static_cast<double>(frame) / sampleRate;
            const MidiContent::Note note{
                tickAt(start), tickAt(start + static_cast<double>(event.decaySeconds)), ring, event.note,
                static_cast<int>(std::lround(std::sqrt(event.gain) * 127.0f))};
            for (auto& earlier : fired)
                if (earlier.key == note.key)
                    earlier.end = std::min(earlier.end, note.start);
            fired.push_back(note);
        }
        return fired;
    }

    MidiContent content;
    std::vector<EngineRun::Note> notes;
};

TEST_F(Midi, HasATempoTrackAndOneForEachRing)
{
    EXPECT_EQ(content.format, 1);
    EXPECT_THAT(content.tracks, SizeIs(1 + ringTracks));
    ASSERT_THAT(content.meta(0, 0x51), SizeIs(1));
    EXPECT_THAT(content.meta(0, 0x51)[0].data, ElementsAre(0x06, 0xAE, 0xC4)); // 60e6 / 137 = 437956
    ASSERT_THAT(content.meta(0, 0x58), SizeIs(1));
    EXPECT_THAT(content.meta(0, 0x58)[0].data, ElementsAre(4, 2, 24, 8));
    EXPECT_THAT(content.notes(0), IsEmpty());
}

TEST_F(Midi, HasTheNotesThatTheEngineFiredAtTheirCrossings)
{
    std::size_t count = 0;
    for (int ring = 0; ring < ringTracks; ++ring) {
        const auto written = content.notes(static_cast<std::size_t>(ring) + 1);
        EXPECT_THAT(written, SizeIs(testing::Gt(0U))) << ring;
        EXPECT_TRUE(written == firedNotes(ring)) << ring;
        count += written.size();
    }
    EXPECT_EQ(count, notes.size());
}

TEST_F(Midi, IsReadByAnotherProgramWithAllItsNotes)
{
    const auto read = runProcess({"midicsv", folder.file("a.mid")});
    EXPECT_EQ(read.exitCode, 0);
    EXPECT_EQ(read.err, "");
    EXPECT_EQ(timesIn(read.out, "Note_on_c"), notes.size());
    EXPECT_EQ(timesIn(read.out, "Note_off_c"), notes.size());
}

TEST_F(Midi, IsTheSameForEveryBlockSize)
{
    // Notes are written where the hand crosses, not where the cycle that plays them begins.
    for (const auto* const block : {"1", "17", "4096"}) {
        render({"--preset", "6", "--set", "activity=0.7", "--set", "probR1=1", "--tempo", "137", "--seconds",
                "5", "--sample-rate", "44100", "--out", "b.wav", "--midi", "b.mid", "--block", block});
        EXPECT_TRUE(folder.read("b.mid") == folder.read("a.mid")) << block;
    }
}

} // namespace
} // namespace velotrine
