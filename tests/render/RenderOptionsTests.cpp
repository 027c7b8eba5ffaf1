#include "render/RenderOptions.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "tests/support/TemporaryFolder.h"

#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace velotrine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// The fewest arguments that will do.
RenderArguments enough()
{
    RenderArguments arguments;
    arguments.preset = "1";
    arguments.out = "a.wav";
    return arguments;
}

RenderOptions with(std::string RenderArguments::*argument, const std::string& text)
{
    auto arguments = enough();
    arguments.*argument = text;
    return renderOptions(arguments);
}

float setTo(const std::string& setting)
{
    auto arguments = enough();
    arguments.settings = {setting};
    return renderOptions(arguments).settings.at(0).second;
}

TEST(RenderOptions, WhatIsNotTypedHasADefault)
{
    const auto options = renderOptions(enough());
    EXPECT_EQ(options.presetNumber, 1);
    EXPECT_EQ(options.statePath, "");
    EXPECT_THAT(options.settings, IsEmpty());
    EXPECT_EQ(options.tempo, std::nullopt);
    EXPECT_EQ(options.bars, 16.0);
    EXPECT_EQ(options.seconds, std::nullopt);
    EXPECT_EQ(options.sampleRate, 48000);
    EXPECT_EQ(options.blockFrames, 32);
    EXPECT_EQ(options.tail, RenderOptions::Tail::untilSilent);
    EXPECT_EQ(options.container, AudioContainer::wav);
    EXPECT_EQ(options.format, SampleFormat::s24);
    EXPECT_EQ(options.midiPath, "");
    EXPECT_EQ(options.saveStatePath, "");
    EXPECT_EQ(options.outPath, "a.wav");
    EXPECT_FALSE(options.quiet);
}

TEST(RenderOptions, FindPresetsByNumberAndByNameInAnyCase)
{
    for (std::size_t i = 0; i < presetTable().size(); ++i) {
        std::string name(presetTable()[i].name);
        EXPECT_EQ(with(&RenderArguments::preset, std::to_string(i)).presetNumber, i);
        EXPECT_EQ(with(&RenderArguments::preset, name).presetNumber, i);
        for (auto& character : name)
            character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
        EXPECT_EQ(with(&RenderArguments::preset, name).presetNumber, i);
    }
}

TEST(RenderOptions, NeedNoPresetWhenThereIsAState)
{
    RenderArguments arguments;
    arguments.state = "mine.json";
    arguments.out = "a.wav";
    EXPECT_EQ(renderOptions(arguments).presetNumber, std::nullopt);
    EXPECT_EQ(renderOptions(arguments).statePath, "mine.json");
}

TEST(RenderOptions, TakeEveryParameterUpToItsLimits)
{
    for (const auto& parameter : parameterTable()) {
        for (const float value : {parameter.minValue, parameter.maxValue}) {
            auto arguments = enough();
            arguments.settings = {parameter.identifier + "=" + std::to_string(value)};
            EXPECT_THAT(renderOptions(arguments).settings, ElementsAre(Pair(parameter.address, value)))
                << parameter.identifier;
        }
    }
}

TEST(RenderOptions, TakeSettingsAsMusiciansWriteThem)
{
    EXPECT_EQ(setTo("activity=75%"), 0.75f);
    EXPECT_EQ(setTo("activity=75 %"), 0.75f);
    EXPECT_EQ(setTo("activity=+.5"), 0.5f);
    EXPECT_EQ(setTo("activity=5e-1"), 0.5f);
    EXPECT_EQ(setTo("activity= 0.5 "), 0.5f);
    EXPECT_EQ(setTo("rootNote=F#"), 6.0f);
    EXPECT_EQ(setTo("rootNote=f#"), 6.0f);
    EXPECT_EQ(setTo("scaleType=minor pentatonic"), 3.0f);
    EXPECT_EQ(setTo("sync=on"), 1.0f);
    EXPECT_EQ(setTo("sync=Off"), 0.0f);
    EXPECT_EQ(setTo("spotsR5=7 spots"), 7.0f);
    EXPECT_EQ(setTo("spotsR5=1 spot"), 1.0f);
    EXPECT_EQ(setTo("octaveR3=7"), 7.0f);
    EXPECT_EQ(setTo("phaseR2=0.0935"), 0.0935f);
    EXPECT_EQ(setTo("bpm=96.5"), 96.5f);
}

TEST(RenderOptions, KeepSettingsInTheOrderTyped)
{
    auto arguments = enough();
    arguments.settings = {"volume=1", "activity=0.5", "volume=0.25"};
    EXPECT_THAT(renderOptions(arguments).settings,
                ElementsAre(Pair(addressOf(GlobalParameter::volume), 1.0f),
                            Pair(addressOf(GlobalParameter::activity), 0.5f),
                            Pair(addressOf(GlobalParameter::volume), 0.25f)));
}

TEST(RenderOptions, TakeLengthsUpToTheirLimits)
{
    EXPECT_EQ(with(&RenderArguments::bars, "43200").bars, 43200.0);
    EXPECT_EQ(with(&RenderArguments::bars, "0.25").bars, 0.25);
    EXPECT_EQ(with(&RenderArguments::bars, "0.000001").bars, 1.0e-6);
    EXPECT_EQ(with(&RenderArguments::seconds, "86400").seconds, 86400.0);
    EXPECT_EQ(with(&RenderArguments::seconds, "0.000001").seconds, 1.0e-6);
}

TEST(RenderOptions, TakeTemposFrom40To300)
{
    EXPECT_EQ(with(&RenderArguments::tempo, "40").tempo, 40.0f);
    EXPECT_EQ(with(&RenderArguments::tempo, "96.5").tempo, 96.5f);
    EXPECT_EQ(with(&RenderArguments::tempo, "300").tempo, 300.0f);
}

TEST(RenderOptions, TakeSampleRatesFrom8To768Kilohertz)
{
    EXPECT_EQ(with(&RenderArguments::sampleRate, "8000").sampleRate, 8000);
    EXPECT_EQ(with(&RenderArguments::sampleRate, "44100").sampleRate, 44100);
    EXPECT_EQ(with(&RenderArguments::sampleRate, "96e3").sampleRate, 96000);
    EXPECT_EQ(with(&RenderArguments::sampleRate, "768000").sampleRate, 768000);
}

TEST(RenderOptions, TakeBlocksFrom1To8192Frames)
{
    EXPECT_EQ(with(&RenderArguments::block, "1").blockFrames, 1);
    EXPECT_EQ(with(&RenderArguments::block, "8192").blockFrames, 8192);
}

TEST(RenderOptions, TakeATailUntilSilenceNoneOrUpToAnHour)
{
    EXPECT_EQ(with(&RenderArguments::tail, "auto").tail, RenderOptions::Tail::untilSilent);
    EXPECT_EQ(with(&RenderArguments::tail, "none").tail, RenderOptions::Tail::none);
    for (const auto& [text, seconds] : {std::pair{"0", 0.0}, {"1.5", 1.5}, {"3600", 3600.0}}) {
        EXPECT_EQ(with(&RenderArguments::tail, text).tail, RenderOptions::Tail::fixed);
        EXPECT_EQ(with(&RenderArguments::tail, text).tailSeconds, seconds);
    }
}

TEST(RenderOptions, TakeThreeSampleFormats)
{
    EXPECT_EQ(with(&RenderArguments::format, "s16").format, SampleFormat::s16);
    EXPECT_EQ(with(&RenderArguments::format, "s24").format, SampleFormat::s24);
    EXPECT_EQ(with(&RenderArguments::format, "f32").format, SampleFormat::f32);
}

TEST(RenderOptions, TakeTheContainerFromTheEndingOfTheName)
{
    EXPECT_EQ(with(&RenderArguments::out, "a.wav").container, AudioContainer::wav);
    EXPECT_EQ(with(&RenderArguments::out, "a.WAV").container, AudioContainer::wav);
    EXPECT_EQ(with(&RenderArguments::out, "music/a.flac").container, AudioContainer::flac);
    EXPECT_EQ(with(&RenderArguments::out, "a.wav.Flac").container, AudioContainer::flac);
}

TEST(RenderOptions, SendWavToStandardOutputToDevicesAndToNamedPipes)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    for (const auto& path : {std::string("-"), std::string("/dev/null"), folder.file("pipe")}) {
        EXPECT_EQ(with(&RenderArguments::out, path).container, AudioContainer::wav);
        EXPECT_EQ(with(&RenderArguments::out, path).outPath, path);
    }
}

TEST(RenderOptions, KeepThePathsOfTheOtherOutputs)
{
    auto arguments = enough();
    arguments.midi = "notes.mid";
    arguments.saveState = "state.json";
    arguments.quiet = true;
    const auto options = renderOptions(arguments);
    EXPECT_EQ(options.midiPath, "notes.mid");
    EXPECT_EQ(options.saveStatePath, "state.json");
    EXPECT_TRUE(options.quiet);
}

TEST(RenderOptions, MayReadAndWriteTheSameState)
{
    auto arguments = enough();
    arguments.state = "mine.json";
    arguments.saveState = "mine.json";
    EXPECT_EQ(renderOptions(arguments).saveStatePath, "mine.json");
}

} // namespace
} // namespace velotrine
