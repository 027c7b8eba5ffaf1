#include "tests/render/EngineRun.h"
#include "tests/render/MidiReader.h"
#include "tests/render/ProgramTest.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// In the program that is about to start.
void readFromStandardInput(const char* file)
{
    if (std::freopen(file, "r", stdin) == nullptr)
        std::abort();
}

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int rate = 48000;
constexpr std::int64_t barFrames = 96000; ///< at 120 quarters a minute
constexpr int tempoType = 0x51;

class ATakesRendering : public ProgramTest
{
protected:
    void writeTake(const std::string& text) { folder.write("a.velotrine-take", text); }

    /// Played from a preset's values, with these changes.
    void writeChanges(const std::string& changes)
    {
        writeTake(R"({"version": 1, "start": {"preset": 6}, "changes": [)" + changes + "]}");
    }

    /// Renders the take without a tail, in samples that are the engine's own.
    [[nodiscard]] AudioFile soundOfTake(std::vector<std::string> more = {}) const
    {
        more.insert(more.end(), {"--take", "a.velotrine-take", "--tail", "none", "--format", "f32"});
        return sound(more);
    }
};

TEST_F(ATakesRendering, InWhichTheClockOnlyStartsIsThatOfThePreset)
{
    writeChanges(R"({"bar": 0, "play": true}, {"bar": 2, "play": false})");
    const auto engine = runEngine({.preset = 6, .values = {}, .playedFrames = 2 * barFrames});
    EXPECT_TRUE(soundOfTake().samples == engine.interleaved());
    EXPECT_TRUE(soundOfTake({"--bars", "1"}).samples ==
                runEngine({.preset = 6, .values = {}, .playedFrames = barFrames}).interleaved());
    EXPECT_EQ(soundOfTake({"--bars", "3"}).frames(), 3 * barFrames);
    EXPECT_EQ(soundOfTake({"--seconds", "1.5"}).frames(), rate * 3 / 2);
}

TEST_F(ATakesRendering, TakesOtherBeginningsFromTheCommandLine)
{
    writeChanges(R"({"bar": 0, "play": true}, {"bar": 1, "end": true})");
    const auto engine = runEngine(
        {.preset = 6, .values = {{"boredom", 1.0f}, {"bpm", 240.0f}}, .playedFrames = barFrames / 2});
    EXPECT_TRUE(soundOfTake({"--set", "boredom=1", "--tempo", "240"}).samples == engine.interleaved());
    EXPECT_FALSE(soundOfTake({"--seed", "7"}).samples == soundOfTake().samples);
    EXPECT_TRUE(soundOfTake({"--seed", "12345"}).samples == soundOfTake().samples);
}

TEST_F(ATakesRendering, HasItsOwnRateAndCyclesUnlessToldOtherwise)
{
    writeTake(R"({"version": 1, "start": {"preset": 6, "sampleRate": 44100, "cycleFrames": 17}, "changes":
                 [{"frame": 0, "play": true}, {"frame": 44100, "end": true}]})");
    const auto file = soundOfTake();
    EXPECT_EQ(file.sampleRate, 44100);
    EXPECT_TRUE(
        file.samples ==
        runEngine({.preset = 6, .values = {}, .sampleRate = 44100, .cycleFrames = 17, .playedFrames = 44100})
            .interleaved());
    EXPECT_TRUE(
        soundOfTake({"--sample-rate", "22050", "--block", "64"}).samples ==
        runEngine({.preset = 6, .values = {}, .sampleRate = 22050, .cycleFrames = 64, .playedFrames = 22050})
            .interleaved());
}

TEST_F(ATakesRendering, LastsToItsLastChangeAndToTheEndOfItsRamps)
{
    writeChanges(R"({"bar": 0, "play": true}, {"bar": 0.3, "seed": 3})");
    EXPECT_EQ(soundOfTake().frames(), std::llround(0.3 * barFrames));
    writeChanges(R"({"bar": 0, "play": true, "set": {"activity": 1}, "over": 1.7}, {"bar": 1, "seed": 3})");
    EXPECT_EQ(soundOfTake().frames(), std::llround(1.7 * barFrames));
}

TEST_F(ATakesRendering, FollowsTheMetreOfItsHost)
{
    writeTake(R"({"version": 1, "start": {"host": {"tempo": 105, "beatsPerBar": 7, "beatUnit": 8}}, "changes":
                 [{"bar": 0, "host": {"playing": true}}, {"bar": 2, "end": true}]})");
    const auto file = soundOfTake();
    EXPECT_EQ(file.frames(), 2 * barFrames);
    EXPECT_TRUE(std::ranges::any_of(file.samples, [](float sample) { return std::abs(sample) > 0.01f; }));
}

TEST_F(ATakesRendering, OfATakeThatNeverPlaysIsRefused)
{
    writeChanges(R"({"bar": 0, "set": {"activity": 1}})");
    const auto result = run({"render", "--take", "a.velotrine-take", "--out", "a.wav"});
    expectOneComplaint(result, 2);
    EXPECT_THAT(result.err, HasSubstr("nothing in it plays"));
    EXPECT_THAT(folder.entries(), ElementsAre("a.velotrine-take"));
}

TEST_F(ATakesRendering, OfADamagedTakeSaysWhere)
{
    writeChanges(R"({"bar": 0, "play": true}, {"bar": 1, "set": {"activty": 1}})");
    const auto result = run({"render", "--take", "a.velotrine-take", "--out", "a.wav"});
    expectOneComplaint(result, 2);
    EXPECT_THAT(result.err, StartsWith("velotrine: --take a.velotrine-take: change 2, \"set\": there is no "
                                       "parameter \"activty\"; did you mean \"activity\"?"));
}

TEST_F(ATakesRendering, OfMoreThanADayOrOfABarThatNeverComesIsRefused)
{
    writeChanges(R"({"bar": 0, "play": true}, {"bar": 900000, "play": false})");
    const auto tooLong = run({"render", "--take", "a.velotrine-take", "--out", "a.wav"});
    expectOneComplaint(tooLong, 2);
    EXPECT_THAT(tooLong.err, HasSubstr("longer than a day"));

    writeTake(R"({"version": 1, "start": {"host": {}}, "changes": [{"bar": 0, "host": {"playing": true}}]})");
    const auto never = run({"render", "--take", "a.velotrine-take", "--bars", "4", "--out", "a.wav"});
    expectOneComplaint(never, 2);
    EXPECT_THAT(never.err, HasSubstr("--bars: this bar never comes"));
}

TEST_F(ATakesRendering, ComesFromStandardInputToo)
{
    writeChanges(R"({"bar": 0, "play": true}, {"bar": 1, "end": true})");
    render({"--take", "a.velotrine-take", "--out", "a.wav"});
    auto where = surroundings();
    where.beforeStart = [] { readFromStandardInput("a.velotrine-take"); };
    const auto result = runVelotrine({"render", "--take", "-", "--out", "b.wav"}, where);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(folder.read("a.wav") == folder.read("b.wav"));
}

TEST_F(ATakesRendering, WritesItsTempoIntoTheNotes)
{
    writeTake(R"({"version": 1, "start": {"preset": 6, "parameters": {"bpm": 60}}, "changes":
                 [{"bar": 0, "play": true}, {"bar": 1, "set": {"bpm": 120}}, {"bar": 2, "end": true}]})");
    render({"--take", "a.velotrine-take", "--midi", "a.mid"});
    const auto content = readMidi(folder.read("a.mid"));
    const auto tempos = content.meta(0, tempoType);
    ASSERT_EQ(tempos.size(), 2U);
    EXPECT_EQ(tempos[0].tick, 0);
    EXPECT_THAT(tempos[0].data, ElementsAre(0x0F, 0x42, 0x40)); // a second a quarter
    EXPECT_EQ(tempos[1].tick, 4 * 960);
    EXPECT_THAT(tempos[1].data, ElementsAre(0x07, 0xA1, 0x20));
}

class Seeds : public ProgramTest
{};

TEST_F(Seeds, AreOtherMusicThatComesAgain)
{
    const auto piece = [this](const std::string& seed) {
        return sound({"--preset", "6", "--bars", "1", "--seed", seed}).samples;
    };
    EXPECT_TRUE(piece("7") == piece("7"));
    EXPECT_FALSE(piece("7") == piece("8"));
    EXPECT_TRUE(piece("12345") == sound({"--preset", "6", "--bars", "1"}).samples);
}

TEST_F(Seeds, StandInTheStateThatIsSaved)
{
    render({"--preset", "6", "--bars", "1", "--seed", "7", "--save-state", "a.json", "--out", "a.wav"});
    EXPECT_THAT(folder.read("a.json"), HasSubstr("\n  \"seed\": 7\n"));
    render({"--state", "a.json", "--bars", "1", "--out", "b.wav"});
    EXPECT_TRUE(folder.read("a.wav") == folder.read("b.wav"));
    render({"--state", "a.json", "--bars", "1", "--seed", "12345", "--out", "c.wav"});
    EXPECT_FALSE(folder.read("a.wav") == folder.read("c.wav"));
}

class Beginning : public ProgramTest
{};

TEST_F(Beginning, FromABarIsWhatThePieceHasFromTheCycleOnInWhichTheBarBegins)
{
    const std::vector<std::string> piece{"--preset", "6", "--tail", "none", "--format", "f32"};
    const auto with = [&](std::vector<std::string> more) {
        more.insert(more.end(), piece.begin(), piece.end());
        return sound(more);
    };
    const auto whole = with({"--bars", "3"});
    const auto part = with({"--from", "1.3", "--bars", "1.7"});
    const auto bar = static_cast<std::size_t>(1.3 * barFrames);
    constexpr std::size_t cycle = 32;
    EXPECT_EQ(part.frames(), 3 * barFrames - static_cast<std::int64_t>(bar));
    EXPECT_TRUE(std::ranges::equal(part.samples,
                                   std::span(whole.samples).subspan(2 * (bar - cycle), part.samples.size())));
    EXPECT_EQ(with({"--from", "1", "--seconds", "0.5"}).frames(), rate / 2);
}

TEST_F(Beginning, FromABarHasTheNotesFromThereOn)
{
    render({"--preset", "1", "--bars", "3", "--midi", "whole.mid"});
    render({"--preset", "1", "--from", "1", "--bars", "2", "--midi", "part.mid"});
    const auto whole = readMidi(folder.read("whole.mid"));
    const auto part = readMidi(folder.read("part.mid"));
    constexpr std::int64_t barTicks = std::int64_t{4} * 960;
    for (std::size_t track = 1; track <= 5; ++track) {
        std::vector<MidiContent::Note> expected;
        for (auto note : whole.notes(track))
            if (note.start >= barTicks) {
                note.start -= barTicks;
                note.end -= barTicks;
                expected.push_back(note);
            }
        ASSERT_FALSE(expected.empty());
        // The bar line at the end belongs to what comes behind it.
        if (expected.back().start == 2 * barTicks)
            expected.pop_back();
        const auto notes = part.notes(track);
        ASSERT_EQ(notes.size(), expected.size()) << "track " << track;
        for (std::size_t i = 0; i < notes.size(); ++i) {
            EXPECT_EQ(notes[i].key, expected[i].key);
            EXPECT_NEAR(static_cast<double>(notes[i].start), static_cast<double>(expected[i].start), 1.0);
            EXPECT_NEAR(static_cast<double>(notes[i].end), static_cast<double>(expected[i].end), 1.0);
        }
    }
}

TEST_F(Beginning, BehindTheEndOfATakeIsRefused)
{
    folder.write("a.velotrine-take", R"({"version": 1, "changes": [{"bar": 0, "play": true}, {"bar": 4}]})");
    const auto result = run({"render", "--take", "a.velotrine-take", "--from", "4", "--out", "a.wav"});
    expectOneComplaint(result, 2);
    EXPECT_THAT(result.err, HasSubstr("--from: the take has ended by then"));
}

class Stems : public ProgramTest
{};

TEST_F(Stems, AreTheRingsAloneAndTogetherTheWhole)
{
    // All spots fire, more notes than voices: what is stolen from whom must be the same in each stem.
    std::vector<std::string> arguments{"--preset", "6",     "--bars",      "2",     "--format", "f32",
                                       "--stems",  "--set", "volume=0.05", "--out", "a.wav"};
    for (const auto* const ring : {"R1", "R2", "R3", "R4", "R5"})
        for (const auto* const set : {"spots", "prob", "timbre"})
            arguments.insert(arguments.end(), {"--set", std::string(set) + ring +
                                                            (*set == 's'   ? "=16"
                                                             : *set == 'p' ? "=1"
                                                                           : "=0")});
    render(arguments);
    EXPECT_THAT(folder.entries(),
                ElementsAre("a-R1.wav", "a-R2.wav", "a-R3.wav", "a-R4.wav", "a-R5.wav", "a.wav"));

    // The clip bends the sum; the mix is what comes before it.
    const auto mixOf = [](const AudioFile& file) {
        std::vector<double> mix;
        for (const auto sample : file.samples)
            mix.push_back(std::atanh(static_cast<double>(sample)));
        return mix;
    };
    const auto whole = mixOf(readAudioFile(folder.file("a.wav")));
    std::vector<double> sum(whole.size());
    for (const auto* const stem : {"a-R1.wav", "a-R2.wav", "a-R3.wav", "a-R4.wav", "a-R5.wav"}) {
        const auto mix = mixOf(readAudioFile(folder.file(stem)));
        ASSERT_EQ(mix.size(), whole.size()) << stem;
        EXPECT_TRUE(std::ranges::any_of(mix, [](double sample) { return std::abs(sample) > 0.001; })) << stem;
        std::ranges::transform(sum, mix, sum.begin(), std::plus<>());
    }
    double worst = 0.0;
    for (std::size_t i = 0; i < sum.size(); ++i)
        worst = std::max(worst, std::abs(sum[i] - whole[i]));
    EXPECT_LT(worst, 1.0e-5);
}

TEST_F(Stems, OfATakeFollowItsVolumes)
{
    folder.write("a.velotrine-take", R"({"version": 1, "start": {"preset": 1}, "changes": [
        {"bar": 0, "play": true, "set": {"ringVolR1": 0, "ringVolR5": 1}, "over": 1}, {"bar": 2, "end": true}]})");
    render({"--take", "a.velotrine-take", "--stems", "--out", "a.flac"});
    const auto loudest = [this](const char* file, std::int64_t fromFrame) {
        const auto samples = readAudioFile(folder.file(file)).channel(0);
        float most = 0.0f;
        for (auto i = static_cast<std::size_t>(fromFrame); i < samples.size(); ++i)
            most = std::max(most, std::abs(samples[i]));
        return most;
    };
    EXPECT_GT(loudest("a-R1.flac", 0), 0.01f);
    EXPECT_LT(loudest("a-R1.flac", 2 * barFrames), loudest("a-R1.flac", 0));
    EXPECT_GT(loudest("a-R5.flac", 0), 0.01f);
}

class NoClobber : public ProgramTest
{};

TEST_F(NoClobber, KeepsWhatIsThereAndRendersNothing)
{
    folder.write("a-R2.wav", "old");
    folder.write("a.mid", "old");
    for (const auto& more : {std::vector<std::string>{"--stems"}, {"--midi", "a.mid"}}) {
        std::vector<std::string> arguments{"render", "--preset",     "1",     "--bars",
                                           "1",      "--no-clobber", "--out", "a.wav"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const auto result = run(arguments);
        expectOneComplaint(result, 1);
        EXPECT_THAT(result.err, HasSubstr(": could not be written: File exists"));
        EXPECT_THAT(folder.entries(), ElementsAre("a-R2.wav", "a.mid"));
        EXPECT_EQ(folder.read("a.mid"), "old");
    }
}

TEST_F(NoClobber, WritesWhereNothingIs)
{
    render({"--preset", "1", "--bars", "0.1", "--no-clobber", "--out", "a.wav", "--midi", "a.mid"});
    render({"--preset", "1", "--bars", "0.1", "--out", "b.wav"});
    EXPECT_TRUE(folder.read("a.wav") == folder.read("b.wav"));
    EXPECT_THAT(folder.entries(), ElementsAre("a.mid", "a.wav", "b.wav"));
}

class Origin : public ProgramTest
{
protected:
    [[nodiscard]] std::string shown(const char* file) const
    {
        const auto result = run({"show", file});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }
};

TEST_F(Origin, IsInEveryFileAsTheStateThatWasSaved)
{
    const std::vector<std::string> piece{"--preset",     "7",      "--set",  "activity=0.123456789",
                                         "--seed",       "9",      "--bars", "0.5",
                                         "--save-state", "a.json", "--stems"};
    for (const auto* const file : {"a.wav", "a.flac"}) {
        auto arguments = piece;
        arguments.insert(arguments.end(), {"--midi", "a.mid", "--out", file});
        render(arguments);
        EXPECT_EQ(shown(file), folder.read("a.json")) << file;
    }
    EXPECT_EQ(shown("a.mid"), folder.read("a.json"));
    EXPECT_EQ(shown("a-R3.flac"), folder.read("a.json"));
}

TEST_F(Origin, MakesTheSameFileAgain)
{
    render({"--preset", "7", "--set", "rootNote=Bb", "--bars", "0.5", "--seed", "9", "--out", "a.wav"});
    folder.write("a.json", shown("a.wav"));
    auto where = surroundings();
    where.beforeStart = [] { readFromStandardInput("a.json"); };
    const auto again = runVelotrine({"render", "--state", "-", "--bars", "0.5", "--out", "b.wav"}, where);
    EXPECT_EQ(again.exitCode, 0) << again.err;
    EXPECT_TRUE(folder.read("a.wav") == folder.read("b.wav"));
}

TEST_F(Origin, NamesTheProgramAndItsVersion)
{
    render({"--preset", "7", "--bars", "0.5", "--midi", "a.mid", "--out", "a.wav"});
    const std::string words = "Velotrine " VELOTRINE_VERSION ": {\"version\":1,";
    EXPECT_THAT(folder.read("a.wav"), HasSubstr(words));
    EXPECT_THAT(folder.read("a.mid"), HasSubstr(words));
}

TEST_F(Origin, OfAnotherProgramsFileIsNotKnown)
{
    ASSERT_EQ(runProcess({"sox", "-n", "other.wav", "trim", "0", "0.1"}, surroundings()).exitCode, 0);
    folder.write("empty.mid", "MThd");
    for (const auto* const file : {"other.wav", "empty.mid"}) {
        const auto result = run({"show", file});
        expectOneComplaint(result, 2);
        EXPECT_THAT(result.err, HasSubstr("it does not say what made it"));
    }
}

} // namespace
} // namespace velotrine
