#include "render/MidiFile.h"

#include "tests/render/MidiReader.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int trackNameType = 0x03;
constexpr int tempoType = 0x51;
constexpr int timeSignatureType = 0x58;

MidiContent contentOf(const MidiFile& file)
{
    return readMidi(file.bytes());
}

TEST(MidiFile, IsOfFormatOneWithATrackForTheTempoAndOneForEachRing)
{
    const auto content = contentOf(MidiFile(120.0));
    EXPECT_EQ(content.format, 1);
    EXPECT_EQ(content.ticksPerQuarter, MidiFile::ticksPerQuarter);
    EXPECT_THAT(content.tracks, SizeIs(6));
}

TEST(MidiFile, NamesItsTracks)
{
    const auto content = contentOf(MidiFile(120.0));
    std::vector<std::string> names;
    for (std::size_t track = 0; track < content.tracks.size(); ++track)
        for (const auto& event : content.meta(track, trackNameType))
            names.emplace_back(event.data.begin(), event.data.end());
    EXPECT_THAT(names, ElementsAre("Velotrine", "Ring 1", "Ring 2", "Ring 3", "Ring 4", "Ring 5"));
}

TEST(MidiFile, SaysTempoAndMetreOnceAtTheStartOfTheFirstTrack)
{
    const auto content = contentOf(MidiFile(120.0));
    const auto tempo = content.meta(0, tempoType);
    ASSERT_THAT(tempo, SizeIs(1));
    EXPECT_EQ(tempo[0].tick, 0);
    EXPECT_THAT(tempo[0].data, ElementsAre(0x07, 0xA1, 0x20)); // 500000 microseconds a quarter
    const auto metre = content.meta(0, timeSignatureType);
    ASSERT_THAT(metre, SizeIs(1));
    EXPECT_EQ(metre[0].tick, 0);
    EXPECT_THAT(metre[0].data, ElementsAre(4, 2, 24, 8)); // 4 over 2 to the 2nd, a click a quarter
    for (std::size_t track = 1; track < content.tracks.size(); ++track) {
        EXPECT_THAT(content.meta(track, tempoType), IsEmpty());
        EXPECT_THAT(content.meta(track, timeSignatureType), IsEmpty());
    }
}

TEST(MidiFile, RoundsTheTempoToAMicrosecondAQuarter)
{
    const auto microseconds = [](double bpm) {
        const auto data = contentOf(MidiFile(bpm)).meta(0, tempoType).at(0).data;
        return data.at(0) * 65536 + data.at(1) * 256 + data.at(2);
    };
    EXPECT_EQ(microseconds(40.0), 1500000);
    EXPECT_EQ(microseconds(300.0), 200000);
    EXPECT_EQ(microseconds(96.5), 621762); // 621761.66
}

TEST(MidiFile, PutsEachRingOnATrackAndAChannelOfItsOwn)
{
    MidiFile file(120.0);
    for (int ring = 0; ring < MidiFile::ringTracks; ++ring)
        file.addNote(0.0, {static_cast<std::uint8_t>(ring), static_cast<std::uint8_t>(60 + ring), 127, 0.5});
    const auto content = contentOf(file);
    EXPECT_THAT(content.notes(0), IsEmpty());
    for (int ring = 0; ring < MidiFile::ringTracks; ++ring)
        EXPECT_THAT(content.notes(static_cast<std::size_t>(ring) + 1),
                    ElementsAre(MidiContent::Note{0, 960, ring, 60 + ring, 127}));
}

TEST(MidiFile, CountsTicksInTheTempo)
{
    MidiFile file(90.0);
    file.addNote(2.0, {0, 60, 127, 1.0}); // three quarters in, one and a half long
    EXPECT_THAT(contentOf(file).notes(1), ElementsAre(MidiContent::Note{2880, 4320, 0, 60, 127}));
}

TEST(MidiFile, RoundsToTheNearestTick)
{
    MidiFile file(60.0); // 960 ticks a second
    file.addNote(10.4 / 960.0, {0, 60, 127, 10.2 / 960.0});
    EXPECT_THAT(contentOf(file).notes(1), ElementsAre(MidiContent::Note{10, 21, 0, 60, 127}));
}

TEST(MidiFile, GivesEvenTheShortestNoteATick)
{
    MidiFile file(120.0);
    file.addNote(1.0, {0, 60, 127, 0.0});
    EXPECT_THAT(contentOf(file).notes(1), ElementsAre(MidiContent::Note{1920, 1921, 0, 60, 127}));
}

TEST(MidiFile, EndsANoteWhereTheSameRingStartsItAgain)
{
    MidiFile file(120.0);
    file.addNote(0.0, {0, 60, 127, 1.0});
    file.addNote(0.1, {0, 62, 127, 1.0});
    file.addNote(0.5, {0, 60, 64, 1.0});
    file.addNote(0.25, {1, 60, 127, 1.0});
    const auto content = contentOf(file);
    EXPECT_THAT(content.notes(1),
                ElementsAre(MidiContent::Note{0, 960, 0, 60, 127}, MidiContent::Note{192, 2112, 0, 62, 127},
                            MidiContent::Note{960, 2880, 0, 60, 64}));
    EXPECT_THAT(content.notes(2), ElementsAre(MidiContent::Note{480, 2400, 1, 60, 127}));
}

TEST(MidiFile, KeepsOnlyTheLastOfNotesThatStartAtTheSameTickOnTheSameKey)
{
    MidiFile file(120.0);
    file.addNote(0.0, {0, 60, 127, 1.0});
    file.addNote(0.0, {0, 60, 64, 0.5});
    EXPECT_THAT(contentOf(file).notes(1), ElementsAre(MidiContent::Note{0, 960, 0, 60, 64}));
}

TEST(MidiFile, EndsWhatEndsAtATickBeforeItStartsWhatStartsThere)
{
    MidiFile file(120.0);
    file.addNote(0.0, {0, 60, 127, 0.5});
    file.addNote(0.5, {0, 60, 127, 0.5});
    EXPECT_THAT(contentOf(file).notes(1),
                ElementsAre(MidiContent::Note{0, 960, 0, 60, 127}, MidiContent::Note{960, 1920, 0, 60, 127}));
}

TEST(MidiFile, WritesLongPausesInAsManyBytesAsTheyNeed)
{
    for (const std::int64_t ticks : {127, 128, 16383, 16384, 2097151, 2097152, 50000000}) {
        MidiFile file(60.0);
        file.addNote(static_cast<double>(ticks) / 960.0, {0, 60, 127, 1.0});
        EXPECT_THAT(contentOf(file).notes(1), ElementsAre(MidiContent::Note{ticks, ticks + 960, 0, 60, 127}));
    }
}

TEST(MidiFile, SplitsPausesThatANumberOfFourBytesDoesNotHold)
{
    constexpr std::int64_t most = (1 << 28) - 1;
    constexpr int textType = 0x01;
    for (const auto& [ticks, splits] :
         {std::pair{most, 0}, {most + 1, 1}, {2 * most, 1}, {2 * most + 1, 2}}) {
        SCOPED_TRACE(ticks);
        MidiFile file(60.0);
        const double seconds = static_cast<double>(ticks) / 960.0;
        file.addNote(seconds, {0, 60, 127, seconds});
        const auto content = contentOf(file);
        EXPECT_THAT(content.notes(1), ElementsAre(MidiContent::Note{ticks, 2 * ticks, 0, 60, 127}));
        EXPECT_THAT(content.meta(1, textType), SizeIs(2 * splits));

        const auto bytes = file.bytes();
        const TemporaryFolder folder;
        folder.write("notes.mid", std::string(bytes.begin(), bytes.end()));
        const auto read = runProcess({"midicsv", folder.file("notes.mid")});
        EXPECT_EQ(read.exitCode, 0);
        EXPECT_EQ(read.err, "");
        EXPECT_THAT(read.out, HasSubstr("2, " + std::to_string(ticks) + ", Note_on_c, 0, 60, 127\n"));
    }
}

TEST(MidiFile, IsTheSameFileForTheSameNotes)
{
    const auto bytes = [] {
        MidiFile file(120.0);
        file.addNote(0.25, {3, 60, 90, 1.0});
        return file.bytes();
    };
    EXPECT_EQ(bytes(), bytes());
}

TEST(MidiFile, IsReadByAnotherProgram)
{
    MidiFile file(96.0);
    file.addNote(0.0, {0, 60, 127, 0.625});
    file.addNote(0.625, {4, 71, 64, 1.25});
    const auto bytes = file.bytes();
    const TemporaryFolder folder;
    folder.write("notes.mid", std::string(bytes.begin(), bytes.end()));

    const auto read = runProcess({"midicsv", folder.file("notes.mid")});
    EXPECT_EQ(read.exitCode, 0);
    EXPECT_EQ(read.err, "");
    EXPECT_THAT(read.out, HasSubstr("0, 0, Header, 1, 6, 960\n"));
    EXPECT_THAT(read.out, HasSubstr("1, 0, Tempo, 625000\n"));
    EXPECT_THAT(read.out, HasSubstr("1, 0, Time_signature, 4, 2, 24, 8\n"));
    EXPECT_THAT(read.out, HasSubstr("2, 0, Note_on_c, 0, 60, 127\n2, 960, Note_off_c, 0, 60, 0\n"));
    EXPECT_THAT(read.out, HasSubstr("6, 960, Note_on_c, 4, 71, 64\n6, 2880, Note_off_c, 4, 71, 0\n"));
}

} // namespace
} // namespace velotrine
