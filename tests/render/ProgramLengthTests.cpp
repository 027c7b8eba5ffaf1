#include "tests/render/EngineRun.h"
#include "tests/render/ProgramTest.h"

#include <cmath>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::Each;

struct Length
{
    const char* name;
    std::vector<std::string> arguments;
    std::int64_t frames;
};

std::ostream& operator<<(std::ostream& stream, const Length& length)
{
    return stream << length.name;
}

std::string nameOf(const testing::TestParamInfo<Length>& tested)
{
    return tested.param.name;
}

class RenderedLength : public ProgramTest, public testing::WithParamInterface<Length>
{};

TEST_P(RenderedLength, IsExact)
{
    auto arguments = GetParam().arguments;
    arguments.insert(arguments.end(), {"--preset", "Default"});
    EXPECT_EQ(sound(arguments).frames(), GetParam().frames);
}

INSTANTIATE_TEST_SUITE_P(
    All, RenderedLength,
    testing::Values(
        Length{"OneBarAt120", {"--bars", "1", "--tail", "none"}, 96000},
        Length{"OneBarAt120At44100Hz", {"--bars", "1", "--sample-rate", "44100", "--tail", "none"}, 88200},
        Length{"OneBarAt300", {"--bars", "1", "--tempo", "300", "--tail", "none"}, 38400},
        Length{"OneBarAt40", {"--bars", "1", "--tempo", "40", "--tail", "none"}, 288000},
        // 0.37 bars x 240 / 97 x 44100 Hz = 40371.96
        Length{"PartOfABarAtAnOddTempo",
               {"--bars", "0.37", "--tempo", "97", "--sample-rate", "44100", "--tail", "none"},
               40372},
        Length{"TempoFromASetting", {"--bars", "1", "--set", "bpm=240", "--tail", "none"}, 48000},
        Length{
            "LengthInSecondsIgnoresTheTempo", {"--seconds", "1", "--tempo", "300", "--tail", "none"}, 48000},
        Length{"NoMultipleOfTheCycle", {"--seconds", "0.0123", "--tail", "none"}, 590},              // 590.4
        Length{"RoundedUp", {"--seconds", "0.01", "--sample-rate", "44150", "--tail", "none"}, 442}, // 441.5
        Length{"ShorterThanACycle", {"--seconds", "0.0002", "--tail", "none"}, 10},                  // 9.6
        Length{"LongCycle", {"--seconds", "0.5", "--block", "8192", "--tail", "none"}, 24000},
        Length{"OneFrameCycle", {"--seconds", "0.1", "--block", "1", "--tail", "none"}, 4800},
        Length{"HighRate", {"--seconds", "0.01", "--sample-rate", "768000", "--tail", "none"}, 7680},
        Length{"LowRate", {"--seconds", "0.5", "--sample-rate", "8000", "--tail", "none"}, 4000},
        Length{"TailInSeconds", {"--seconds", "0.1", "--tail", "0.25"}, 4800 + 12000},
        Length{"TailNoMultipleOfTheCycle", {"--seconds", "0.0123", "--tail", "0.0123"}, 590 + 590},
        Length{"TailOfNoSeconds", {"--seconds", "0.1", "--tail", "0"}, 4800},
        Length{"TailBeyondTheLastNote", {"--seconds", "0.1", "--tail", "5"}, 4800 + 240000}),
    nameOf);

class Tail : public ProgramTest
{};

TEST_F(Tail, GoesOnInWholeCyclesUntilTheLastVoiceIsSilent)
{
    for (const int cycleFrames : {32, 500}) {
        const auto engine = runEngine({.preset = 1,
                                       .values = {},
                                       .cycleFrames = cycleFrames,
                                       .playedFrames = 48000,
                                       .untilSilent = true});
        const auto file = sound({"--preset", "1", "--seconds", "1", "--block", std::to_string(cycleFrames)});
        EXPECT_EQ(file.frames(), static_cast<std::int64_t>(engine.left.size()));
        EXPECT_EQ((file.frames() - 48000) % cycleFrames, 0);
        const auto last = file.channel(0).back();
        EXPECT_LT(std::abs(last), 0.001f);
    }
}

TEST_F(Tail, IsNotThereWhenNothingSounds)
{
    const auto file = sound({"--preset", "1", "--seconds", "0.001", "--tail", "auto"});
    EXPECT_EQ(file.frames(), 48);
    EXPECT_THAT(file.samples, Each(0.0f));
}

TEST_F(Tail, IsAutomaticByDefault)
{
    render({"--preset", "1", "--seconds", "0.5", "--out", "default.wav"});
    render({"--preset", "1", "--seconds", "0.5", "--tail", "auto", "--out", "auto.wav"});
    EXPECT_TRUE(folder.read("default.wav") == folder.read("auto.wav"));
}

TEST_F(Tail, HasNoNewNotes)
{
    // The next crossing, at a quarter of the bar, is half a second in.
    const auto file = sound({"--preset", "1", "--seconds", "0.4", "--tail", "3"});
    const auto left = file.channel(0);
    EXPECT_THAT(std::vector<float>(left.end() - 48000, left.end()), Each(0.0f));
}

} // namespace
} // namespace velotrine
