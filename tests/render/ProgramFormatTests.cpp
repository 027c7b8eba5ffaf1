#include "tests/render/EngineRun.h"
#include "tests/render/ProgramTest.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sndfile.h>
#include <sys/stat.h>

namespace velotrine {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::FloatNear;
using testing::Pointwise;

/// "Wobbly Bits": chance, wobble, feedback, and five different timbres.
EngineRun wobblyBits(int cycleFrames)
{
    return runEngine({.preset = 6,
                      .values = {{"activity", 0.7f}},
                      .cycleFrames = cycleFrames,
                      .playedFrames = 100000,
                      .tailFrames = 12345});
}

std::vector<std::string> wobblyBitsArguments(const std::string& cycleFrames, const std::string& format)
{
    return {"--preset", "6",         "--set",    "activity=0.7", "--seconds", "2.0833333333",
            "--block",  cycleFrames, "--format", format,         "--tail",    "0.2571875"};
}

class Samples : public ProgramTest
{};

TEST_F(Samples, OfFloatFilesAreTheEnginesOwn)
{
    for (const int cycleFrames : {1, 17, 32, 512}) {
        const auto file = sound(wobblyBitsArguments(std::to_string(cycleFrames), "f32"));
        EXPECT_EQ(file.format, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
        EXPECT_TRUE(file.samples == wobblyBits(cycleFrames).interleaved()) << cycleFrames;
    }
}

TEST_F(Samples, DependOnTheBlock)
{
    const auto fine = sound(wobblyBitsArguments("1", "f32"));
    const auto coarse = sound(wobblyBitsArguments("512", "f32"));
    EXPECT_EQ(fine.frames(), coarse.frames());
    EXPECT_FALSE(fine.samples == coarse.samples);
}

TEST_F(Samples, OfWholeNumbersAreWithinHalfAStepOfTheEngines)
{
    const auto engine = wobblyBits(32).interleaved();
    const auto s16 = sound(wobblyBitsArguments("32", "s16"));
    EXPECT_EQ(s16.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_THAT(s16.samples, Pointwise(FloatNear(0.5f / 32768.0f), engine));
    const auto s24 = sound(wobblyBitsArguments("32", "s24"));
    EXPECT_EQ(s24.format, SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    EXPECT_THAT(s24.samples, Pointwise(FloatNear(0.5f / 8388608.0f), engine));
}

TEST_F(Samples, OfFlacAreThoseOfWav)
{
    for (const auto* const format : {"s16", "s24"}) {
        const auto wav = sound(wobblyBitsArguments("32", format));
        auto arguments = wobblyBitsArguments("32", format);
        arguments.insert(arguments.end(), {"--out", "a.flac"});
        render(arguments);
        const auto flac = readAudioFile(folder.file("a.flac"));
        EXPECT_EQ(flac.format & SF_FORMAT_TYPEMASK, SF_FORMAT_FLAC);
        EXPECT_EQ(flac.format & SF_FORMAT_SUBMASK, wav.format & SF_FORMAT_SUBMASK);
        EXPECT_EQ(flac.sampleRate, wav.sampleRate);
        EXPECT_TRUE(flac.whole == wav.whole) << format;
    }
}

TEST_F(Samples, AreThoseOfTheAskedRate)
{
    const auto engine =
        runEngine({.preset = 2, .values = {}, .sampleRate = 22050, .cycleFrames = 32, .playedFrames = 22050});
    const auto file = sound(
        {"--preset", "2", "--seconds", "1", "--sample-rate", "22050", "--tail", "none", "--format", "f32"});
    EXPECT_EQ(file.sampleRate, 22050);
    EXPECT_TRUE(file.samples == engine.interleaved());
}

TEST_F(Samples, OfEveryPresetAreTheEnginesOwn)
{
    for (int preset = 0; preset < 10; ++preset) {
        const auto engine =
            runEngine({.preset = preset, .values = {}, .cycleFrames = 32, .playedFrames = 24000});
        const auto file = sound(
            {"--preset", std::to_string(preset), "--seconds", "0.5", "--tail", "none", "--format", "f32"});
        EXPECT_TRUE(file.samples == engine.interleaved()) << preset;
    }
}

class Output : public ProgramTest
{};

TEST_F(Output, ToStandardOutputIsTheSameAsToAFile)
{
    for (const auto* const format : {"s16", "s24", "f32"}) {
        render({"--preset", "1", "--bars", "0.5", "--format", format, "--out", "a.wav"});
        const auto piped =
            run({"render", "--preset", "1", "--bars", "0.5", "--format", format, "--out", "-"});
        EXPECT_EQ(piped.exitCode, 0);
        EXPECT_EQ(piped.err, "");
        EXPECT_TRUE(piped.out == folder.read("a.wav")) << format;
    }
}

TEST_F(Output, OfTwoRunsIsTheSameByteForByte)
{
    const auto renderTo = [this](const char* out, const char* midi, const char* state) {
        render({"--preset", "6", "--bars", "0.5", "--out", out, "--midi", midi, "--save-state", state});
    };
    renderTo("a.wav", "a.mid", "a.json");
    renderTo("b.wav", "b.mid", "b.json");
    renderTo("a.flac", "a.mid", "a.json");
    renderTo("b.flac", "b.mid", "b.json");
    for (const auto& [one, other] :
         {std::pair{"a.wav", "b.wav"}, {"a.flac", "b.flac"}, {"a.mid", "b.mid"}, {"a.json", "b.json"}})
        EXPECT_TRUE(folder.read(one) == folder.read(other)) << one;
}

TEST_F(Output, IsAllThatAppears)
{
    render({"--preset", "1", "--bars", "0.1", "--out", "a.wav", "--midi", "a.mid", "--save-state", "a.json"});
    EXPECT_THAT(folder.entries(), ElementsAre("a.json", "a.mid", "a.wav"));
}

TEST_F(Output, ReplacesAnOlderFileAndKeepsItsPermissions)
{
    folder.write("a.wav", "older");
    ASSERT_EQ(::chmod(folder.file("a.wav").c_str(), 0640), 0);
    EXPECT_EQ(sound({"--preset", "1", "--seconds", "0.1", "--tail", "none"}).frames(), 4800);
    struct stat status = {};
    ASSERT_EQ(::stat(folder.file("a.wav").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

class State : public ProgramTest
{
protected:
    /// The values by identifier after these arguments.
    [[nodiscard]] json valuesAfter(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), {"--seconds", "0.001", "--out", "a.wav", "--save-state", "s.json"});
        render(std::move(arguments));
        return json::parse(folder.read("s.json")).at("parameters");
    }
};

TEST_F(State, ThatWasSavedGivesTheSameFileAsThePresetAndSettings)
{
    render({"--preset", "7", "--set", "activity=0.31", "--tempo", "133.7", "--bars", "0.5", "--out", "a.wav",
            "--midi", "a.mid", "--save-state", "a.json"});
    render({"--state", "a.json", "--bars", "0.5", "--out", "b.wav", "--midi", "b.mid", "--save-state",
            "b.json"});
    EXPECT_TRUE(folder.read("a.wav") == folder.read("b.wav"));
    EXPECT_TRUE(folder.read("a.mid") == folder.read("b.mid"));
    EXPECT_EQ(folder.read("a.json"), folder.read("b.json"));
}

TEST_F(State, SaysWhichPresetItCameFrom)
{
    (void)valuesAfter({"--preset", "Lazy 8"});
    const auto state = json::parse(folder.read("s.json"));
    EXPECT_EQ(state.at("version"), 1);
    EXPECT_EQ(state.at("preset").at("number"), 9);
    EXPECT_EQ(state.at("preset").at("name"), "Lazy 8");
}

TEST_F(State, BeatsThePresetAndIsBeatenBySettingsAndThoseByTheTempo)
{
    folder.write("mine.json",
                 R"({"version": 1, "parameters": {"volume": 0.5, "activity": 0.25, "bpm": 60}})");
    const auto values = valuesAfter({"--tempo", "150", "--set", "activity=0.75", "--set", "bpm=90", "--state",
                                     "mine.json", "--preset", "Drum Circle"});
    EXPECT_EQ(values.at("spotsR4"), 6.0);   // the preset's alone
    EXPECT_EQ(values.at("volume"), 0.5);    // the state's
    EXPECT_EQ(values.at("activity"), 0.75); // the setting's
    EXPECT_EQ(values.at("bpm"), 150.0);     // the tempo's
}

TEST_F(State, TakesTheLastOfSeveralSettingsOfOneParameter)
{
    EXPECT_EQ(valuesAfter({"--preset", "1", "--set", "volume=0.5", "--set", "volume=0.25"}).at("volume"),
              0.25);
}

TEST_F(State, KeepsSyncAsItIsThoughTheRenderingFollowsNoHost)
{
    EXPECT_EQ(valuesAfter({"--preset", "1"}).at("sync"), 1.0);
    EXPECT_EQ(valuesAfter({"--preset", "1", "--set", "sync=off"}).at("sync"), 0.0);
}

TEST_F(State, SetsTheTempoByWhichBarsAreCounted)
{
    folder.write("slow.json", R"({"version": 1, "parameters": {"bpm": 60}})");
    EXPECT_EQ(sound({"--state", "slow.json", "--bars", "0.25", "--tail", "none"}).frames(), 48000);
}

TEST_F(State, LeavesWhatItDoesNotNameAtTheInitialValues)
{
    folder.write("little.json", R"({"version": 1, "parameters": {"volume": 2.5}})");
    const auto values = valuesAfter({"--state", "little.json"});
    EXPECT_EQ(values.at("volume"), 1.0); // bounded
    EXPECT_EQ(values.at("spotsR5"), 8.0);
    EXPECT_EQ(values.at("probR1"), 0.75);
}

} // namespace
} // namespace velotrine
