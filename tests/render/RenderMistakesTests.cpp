#include "commandline/Errors.h"
#include "render/RenderOptions.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using Argument = std::string RenderArguments::*;

/// What somebody might type, on top of what is enough, and what the answer must be, word for word.
struct Mistake
{
    const char* name;
    std::vector<std::pair<Argument, std::string>> typed;
    std::vector<std::string> settings;
    std::string message;
};

std::ostream& operator<<(std::ostream& stream, const Mistake& mistake)
{
    return stream << mistake.name;
}

std::string messageFor(const RenderArguments& arguments)
{
    try {
        (void)renderOptions(arguments);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "";
}

class RenderMistake : public testing::TestWithParam<Mistake>
{};

TEST_P(RenderMistake, IsAnsweredByOneLineThatNamesTheArgument)
{
    RenderArguments arguments;
    arguments.preset = "1";
    arguments.out = "a.wav";
    for (const auto& [argument, text] : GetParam().typed)
        arguments.*argument = text;
    arguments.settings = GetParam().settings;
    EXPECT_EQ(messageFor(arguments), GetParam().message);
}

std::string nameOf(const testing::TestParamInfo<Mistake>& info)
{
    return info.param.name;
}

const std::string presetHint = " (\"velotrine list presets\" shows all 10)";

INSTANTIATE_TEST_SUITE_P(
    Preset, RenderMistake,
    testing::Values(Mistake{"Missing",
                            {{&RenderArguments::preset, ""}},
                            {},
                            "--preset: is missing; say what to play, for instance --preset \"Drum Circle\""},
                    Mistake{"Misspelt",
                            {{&RenderArguments::preset, "Drum Cirlce"}},
                            {},
                            "--preset: there is no preset \"Drum Cirlce\"; did you mean \"Drum Circle\"?" +
                                presetHint},
                    Mistake{"Unknown",
                            {{&RenderArguments::preset, "Thunderstorm"}},
                            {},
                            "--preset: there is no preset \"Thunderstorm\"" + presetHint},
                    Mistake{"BeyondTheLast",
                            {{&RenderArguments::preset, "10"}},
                            {},
                            "--preset: there is no preset \"10\"" + presetHint},
                    Mistake{"Negative",
                            {{&RenderArguments::preset, "-1"}},
                            {},
                            "--preset: there is no preset \"-1\"" + presetHint},
                    Mistake{"NotWhole",
                            {{&RenderArguments::preset, "1.0"}},
                            {},
                            "--preset: there is no preset \"1.0\"" + presetHint}),
    nameOf);

Mistake setting(const char* name, const std::string& typed, const std::string& problem)
{
    return {name, {}, {typed}, "--set " + typed + ": " + problem};
}

const std::string listHint = " (\"velotrine list parameters\" shows all 39)";

INSTANTIATE_TEST_SUITE_P(
    Set, RenderMistake,
    testing::Values(
        setting("WithoutEquals", "activity", "write IDENTIFIER=VALUE, for instance activity=0.7"),
        setting("WithoutIdentifier", "=1", "write IDENTIFIER=VALUE, for instance activity=0.7"),
        setting("Misspelt", "activty=0.7",
                "there is no parameter \"activty\"; did you mean \"activity\"?" + listHint),
        setting("OfAnotherCase", "Activity=0.7",
                "there is no parameter \"Activity\"; did you mean \"activity\"?" + listHint),
        setting("OfASixthRing", "spotsR6=4",
                "there is no parameter \"spotsR6\"; did you mean \"spotsR1\"?" + listHint),
        setting("Unknown", "reverb=1", "there is no parameter \"reverb\"" + listHint),
        setting("WithoutValue",
                "activity=", "\"\" will not do for Activity; give a number from 0 to 1, or a percentage"),
        setting("OfNoNumber", "activity=much",
                "\"much\" will not do for Activity; give a number from 0 to 1, or a percentage"),
        setting("BeyondThePercentage", "volume=101%",
                "\"101%\" will not do for Volume; give a number from 0 to 1, or a percentage"),
        setting("NotANumber", "activity=nan",
                "\"nan\" will not do for Activity; give a number from 0 to 1, or a percentage"),
        setting("Infinite", "activity=inf",
                "\"inf\" will not do for Activity; give a number from 0 to 1, or a percentage"),
        setting("BeyondADouble", "activity=1e999",
                "\"1e999\" will not do for Activity; give a number from 0 to 1, or a percentage"),
        setting("BeyondAFloat", "spotsR1=1e300",
                "\"1e300\" will not do for Spots R1; give a whole number from 0 to 16"),
        setting("BelowTheRange", "phaseR1=-0.1",
                "\"-0.1\" will not do for Phase R1; give a number from 0 to 1"),
        setting("AboveTheRange", "bpm=300.5", "\"300.5\" will not do for BPM; give a number from 40 to 300"),
        setting("OfAFractionOfASpot", "spotsR1=2.5",
                "\"2.5\" will not do for Spots R1; give a whole number from 0 to 16"),
        setting("OfTooManySpots", "spotsR1=17 spots",
                "\"17 spots\" will not do for Spots R1; give a whole number from 0 to 16"),
        setting("OfAnEighthOctave", "octaveR2=8",
                "\"8\" will not do for Octave R2; give a whole number from 0 to 7"),
        setting(
            "OfNoNote", "rootNote=H",
            "\"H\" will not do for Root Note; give a note name such as F#, or a whole number from 0 to 11"),
        setting("OfNoScale", "scaleType=Dorian",
                "\"Dorian\" will not do for Scale; give a scale such as \"Minor Pentatonic\", or a whole "
                "number from 0 to 3"),
        setting("OfNoSwitch", "sync=maybe", "\"maybe\" will not do for Sync; give on or off"),
        setting("OfHalfASwitch", "sync=0.5", "\"0.5\" will not do for Sync; give on or off")),
    nameOf);

Mistake number(const char* name, Argument argument, const std::string& typed, const std::string& option,
               const std::string& expected)
{
    return {name, {{argument, typed}}, {}, option + ": \"" + typed + "\" will not do; give " + expected};
}

const std::string someBars = "a number above 0, at most 43200";
const std::string someSeconds = "a number above 0, at most 86400";

INSTANTIATE_TEST_SUITE_P(
    Length, RenderMistake,
    testing::Values(number("NoBars", &RenderArguments::bars, "0", "--bars", someBars),
                    number("NegativeBars", &RenderArguments::bars, "-4", "--bars", someBars),
                    number("TooManyBars", &RenderArguments::bars, "43200.1", "--bars", someBars),
                    number("BarsInWords", &RenderArguments::bars, "four", "--bars", someBars),
                    number("BarsWithAUnit", &RenderArguments::bars, "4bars", "--bars", someBars),
                    number("BarsWithAComma", &RenderArguments::bars, "4,5", "--bars", someBars),
                    number("HexadecimalBars", &RenderArguments::bars, "0x10", "--bars", someBars),
                    number("NoSeconds", &RenderArguments::seconds, "-0", "--seconds", someSeconds),
                    number("TooManySeconds", &RenderArguments::seconds, "86400.1", "--seconds", someSeconds),
                    number("EndlessSeconds", &RenderArguments::seconds, "inf", "--seconds", someSeconds),
                    number("NotANumberOfSeconds", &RenderArguments::seconds, "nan", "--seconds", someSeconds),
                    number("VeryManySeconds", &RenderArguments::seconds, "1e999", "--seconds", someSeconds),
                    Mistake{"Twofold",
                            {{&RenderArguments::bars, "4"}, {&RenderArguments::seconds, "4"}},
                            {},
                            "--seconds: the length is already given by --bars; give one of the two"}),
    nameOf);

const std::string someTempo = "40 to 300 beats a minute";
const std::string someRate = "a whole number of Hz from 8000 to 768000";
const std::string someFrames = "a whole number of frames from 1 to 8192";
const std::string someTail = "auto, none, or a number of seconds up to 3600";

INSTANTIATE_TEST_SUITE_P(
    Number, RenderMistake,
    testing::Values(number("SlowTempo", &RenderArguments::tempo, "39.9", "--tempo", someTempo),
                    number("FastTempo", &RenderArguments::tempo, "300.1", "--tempo", someTempo),
                    number("TempoInWords", &RenderArguments::tempo, "allegro", "--tempo", someTempo),
                    number("LowRate", &RenderArguments::sampleRate, "7999", "--sample-rate", someRate),
                    number("HighRate", &RenderArguments::sampleRate, "768001", "--sample-rate", someRate),
                    number("FractionOfAHertz", &RenderArguments::sampleRate, "44100.5", "--sample-rate",
                           someRate),
                    number("RateInKilohertz", &RenderArguments::sampleRate, "48k", "--sample-rate", someRate),
                    number("NoFrames", &RenderArguments::block, "0", "--block", someFrames),
                    number("TooManyFrames", &RenderArguments::block, "8193", "--block", someFrames),
                    number("FractionOfAFrame", &RenderArguments::block, "1.5", "--block", someFrames),
                    number("FramesBeyond64Bits", &RenderArguments::block, "1e30", "--block", someFrames),
                    number("NegativeTail", &RenderArguments::tail, "-1", "--tail", someTail),
                    number("LongTail", &RenderArguments::tail, "3600.1", "--tail", someTail),
                    number("TailInWords", &RenderArguments::tail, "long", "--tail", someTail),
                    number("TailInOtherCase", &RenderArguments::tail, "Auto", "--tail", someTail)),
    nameOf);

Mistake out(const char* name, const std::string& typed)
{
    return {name,
            {{&RenderArguments::out, typed}},
            {},
            "--out: \"" + typed + "\" must end in .wav or .flac, or be - for standard output"};
}

INSTANTIATE_TEST_SUITE_P(
    Output, RenderMistake,
    testing::Values(
        Mistake{"Missing",
                {{&RenderArguments::out, ""}},
                {},
                "--out: is missing; say where the sound goes, for instance --out drums.wav"},
        out("OfAnotherFormat", "a.mp3"), out("WithoutEnding", "music"), out("OnlyAnEnding", ".wav"),
        out("InAFolder", "music.wav/"),
        Mistake{"InNoFormat",
                {{&RenderArguments::format, "s32"}},
                {},
                "--format: \"s32\" is not a format; give s16, s24 or f32"},
        Mistake{"InAFormatInCapitals",
                {{&RenderArguments::format, "F32"}},
                {},
                "--format: \"F32\" is not a format; give s16, s24 or f32"},
        Mistake{"FlacOfFloats",
                {{&RenderArguments::out, "a.flac"}, {&RenderArguments::format, "f32"}},
                {},
                "--format: a FLAC file cannot hold f32; give s16 or s24, or a .wav file"},
        Mistake{"FlacOfAHighRate",
                {{&RenderArguments::out, "a.flac"}, {&RenderArguments::sampleRate, "768000"}},
                {},
                "--sample-rate: a FLAC file cannot hold 768000 Hz; give a whole number of tens up to "
                "655350, or a .wav file"},
        Mistake{"FlacOfAnOddRate",
                {{&RenderArguments::out, "a.flac"}, {&RenderArguments::sampleRate, "96001"}},
                {},
                "--sample-rate: a FLAC file cannot hold 96001 Hz; give a whole number of tens up to "
                "655350, or a .wav file"},
        Mistake{"MidiToStandardOutput",
                {{&RenderArguments::midi, "-"}},
                {},
                "--midi: only --out can be standard output; give a file name"},
        Mistake{"StateToStandardOutput",
                {{&RenderArguments::saveState, "-"}},
                {},
                "--save-state: only --out can be standard output; give a file name"},
        Mistake{"MidiOverTheSound",
                {{&RenderArguments::midi, "./a.wav"}},
                {},
                "--midi: \"./a.wav\" is already the name of another output"},
        Mistake{"StateOverTheNotes",
                {{&RenderArguments::midi, "b"}, {&RenderArguments::saveState, "b"}},
                {},
                "--save-state: \"b\" is already the name of another output"},
        Mistake{"MidiOverTheSoundByItsFullPath",
                {{&RenderArguments::midi, std::filesystem::absolute("a.wav").string()}},
                {},
                "--midi: \"" + std::filesystem::absolute("a.wav").string() +
                    "\" is already the name of another output"}),
    nameOf);

TEST(RenderMistakes, ALinkToAnotherOutputIsTheSameOutput)
{
    const TemporaryFolder folder;
    folder.write("a.wav", "");
    std::filesystem::create_symlink(folder.file("a.wav"), folder.file("notes.mid"));
    RenderArguments arguments;
    arguments.preset = "1";
    arguments.out = folder.file("a.wav");
    arguments.midi = folder.file("notes.mid");
    EXPECT_EQ(messageFor(arguments),
              "--midi: \"" + folder.file("notes.mid") + "\" is already the name of another output");
}

} // namespace
} // namespace velotrine
