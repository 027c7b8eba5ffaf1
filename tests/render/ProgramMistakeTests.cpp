#include "tests/render/ProgramTest.h"

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

struct Typed
{
    const char* name;
    std::vector<std::string> arguments;
    std::string beginning; ///< of the answer, with the argument that is wrong
};

std::ostream& operator<<(std::ostream& stream, const Typed& typed)
{
    return stream << typed.name;
}

std::string nameOf(const testing::TestParamInfo<Typed>& tested)
{
    return tested.param.name;
}

class ProgramMistake : public ProgramTest, public testing::WithParamInterface<Typed>
{};

TEST_P(ProgramMistake, GivesOneLineThatNamesTheArgumentAndNoFile)
{
    const auto result = run(GetParam().arguments);
    expectOneComplaint(result, 2);
    EXPECT_THAT(result.err, StartsWith("velotrine: " + GetParam().beginning));
    EXPECT_THAT(folder.entries(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Command, ProgramMistake,
    testing::Values(
        Typed{"None",
              {},
              "command: is missing; say render, list or show (\"velotrine --help\" shows what there is)\n"},
        Typed{"Misspelt",
              {"rendr"},
              "rendr: is not known here; did you mean \"render\"? (\"velotrine --help\""},
        Typed{"Empty", {""}, "\"\": is not known here (\"velotrine --help\" shows what there is)\n"},
        Typed{"UnknownOption", {"--loud"}, "--loud: is not known here (\"velotrine --help\""},
        Typed{"OptionBeforeTheCommand",
              {"--quiet", "render", "--preset", "1", "--out", "a.wav"},
              "--quiet: belongs behind \"velotrine render\"\n"},
        Typed{"TwoCommands", {"render", "--preset", "1", "--out", "a.wav", "list", "presets"}, "list: "},
        Typed{"SameCommandTwice", {"render", "render", "--preset", "1", "--out", "a.wav"}, "render: "},
        Typed{"ListWithoutWhat", {"list"}, "list: say what to list: presets or parameters\n"},
        Typed{"ListOfSomethingElse",
              {"list", "voices"},
              "list: there is no list of \"voices\"; say presets or parameters\n"},
        Typed{"TwoLists", {"list", "presets", "parameters"}, "parameters: is not known here"},
        Typed{"ListWithAnOptionOfRender", {"list", "presets", "--bars", "4"}, "--bars: is not known here"},
        Typed{"HelpOnNoCommand",
              {"help", "rendr"},
              "help: there is no command \"rendr\"; did you mean \"render\"? (\"velotrine --help\""},
        Typed{"ShowWithoutWhat", {"show"}, "show: say which file: a WAV, FLAC or MIDI file\n"},
        Typed{"ShowOfNothing", {"show", "b.wav"}, "b.wav: it could not be read: No such file or directory\n"},
        Typed{"ShowOfAFolder", {"show", "."}, ".: it could not be read: Is a directory\n"},
        Typed{"ShowOfSomethingElse", {"show", "/dev/null"}, "/dev/null: it does not say what made it\n"},
        Typed{"FlagWithAValue", {"list", "presets", "--json=maybe"}, "--json: takes no value"}),
    nameOf);

Typed rendering(const char* name, std::vector<std::string> more, const std::string& beginning)
{
    more.insert(more.begin(), {"render", "--preset", "1", "--out", "a.wav"});
    return {name, std::move(more), beginning};
}

INSTANTIATE_TEST_SUITE_P(
    Option, ProgramMistake,
    testing::Values(
        rendering("Misspelt", {"--tmpo", "90"},
                  "--tmpo: is not known here; did you mean \"--tempo\"? (\"velotrine render --help\""),
        rendering("MisspeltWithEquals", {"--tmpo=90"},
                  "--tmpo=90: is not known here; did you mean \"--tempo\"?"),
        rendering("Unknown", {"--reverb"}, "--reverb: is not known here (\"velotrine render --help\""),
        rendering("LooseWord", {"loudly"}, "loudly: is not known here"),
        rendering("LooseEmptyWord", {""}, "\"\": is not known here"),
        rendering("LooseWordBehindASetting", {"--set", "activity=0.5", "volume=1"},
                  "volume=1: is not known here"),
        rendering("Repeated", {"--tempo", "90", "--tempo", "91"}, "--tempo: can be given only once"),
        rendering("ValueMissingAtTheEnd", {"--tempo"}, "--tempo: needs a value behind it"),
        rendering("ValueMissingBeforeAnOption", {"--tempo", "--bars", "4"},
                  "--tempo: needs a value behind it"),
        rendering("ValueMissingBeforeAnOptionWithEquals", {"--tempo", "--bars=4"},
                  "--tempo: needs a value behind it"),
        rendering("ValueMissingBehindEquals", {"--tempo=", "--bars", "4"},
                  "--tempo: needs a value behind it"),
        rendering("SettingMissing", {"--set", "--bars", "4"}, "--set: needs a value behind it"),
        rendering("EmptyTempo", {"--tempo", ""}, "--tempo: needs a value behind it"),
        rendering("EmptySeconds", {"--seconds", ""}, "--seconds: needs a value behind it"),
        rendering("EmptySetting", {"--set", ""}, "--set: needs a value behind it"),
        rendering("EmptyMidi", {"--midi", ""}, "--midi: needs a value behind it"),
        rendering("FlagWithAValue", {"--quiet=no"}, "--quiet: takes no value"),
        rendering("UnknownPreset", {"--preset=Drum"}, "--preset: can be given only once")),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Value, ProgramMistake,
    testing::Values(
        rendering("OfAnUnknownParameter", {"--set", "activty=0.7"}, "--set activty=0.7: there is no"),
        rendering("OfASetting", {"--set", "activity=2"}, "--set activity=2: \"2\" will not do"),
        rendering("OfBars", {"--bars", "-4"}, "--bars: \"-4\" will not do; give "),
        rendering("OfSeconds", {"--seconds", "nan"}, "--seconds: \"nan\" will not do; give "),
        rendering("OfTempo", {"--tempo", "1e999"}, "--tempo: \"1e999\" will not do; give "),
        rendering("OfSampleRate", {"--sample-rate", "44.1"}, "--sample-rate: \"44.1\" will not do"),
        rendering("OfBlock", {"--block", "0"}, "--block: \"0\" will not do; give "),
        rendering("OfTail", {"--tail", "some"}, "--tail: \"some\" will not do; give "),
        rendering("OfFormat", {"--format", "mp3"}, "--format: \"mp3\" is not a format; give "),
        rendering("OfMidi", {"--midi", "a.wav"}, "--midi: \"a.wav\" is already the name"),
        rendering("OfSaveState", {"--save-state", "-"}, "--save-state: only --out can be "),
        rendering("WithALineBreak", {"--bars", "4\n5"}, "--bars: \"4?5\" will not do"),
        rendering("WithAnEscapeSequence", {"--bars", "\x1b[2J\x7f"}, "--bars: \"?[2J?\" will not do"),
        rendering("OfAMissingState", {"--state", "b.json"},
                  "--state b.json: it could not be read: No such file or directory\n"),
        rendering("OfAFolderAsState", {"--state", "."}, "--state .: it could not be read: Is a directory\n"),
        rendering("OfAnEmptyState", {"--state", "/dev/null"}, "--state /dev/null: it is not valid JSON: "),
        rendering("OfAnEndlessState", {"--state", "/dev/zero"},
                  "--state /dev/zero: it is larger than 1 MiB\n"),
        rendering("OfSeed", {"--seed", "4294967296"}, "--seed: \"4294967296\" will not do; give a whole"),
        rendering("OfFrom", {"--from", "-1"}, "--from: \"-1\" will not do; give "),
        rendering("OfATakeBesideAPreset", {"--take", "a.velotrine-take"},
                  "--take: says itself how it begins"),
        Typed{"OfAMissingTake",
              {"render", "--take", "b.velotrine-take", "--out", "a.wav"},
              "--take b.velotrine-take: it could not be read: No such file or directory\n"},
        Typed{"OfAnEndlessTake",
              {"render", "--take", "/dev/zero", "--out", "a.wav"},
              "--take /dev/zero: it is larger than 64 MiB\n"},
        Typed{"OfAnEmptyTake",
              {"render", "--take", "/dev/null", "--out", "a.wav"},
              "--take /dev/null: it is not valid JSON: "},
        Typed{"OfStemsWithoutAName",
              {"render", "--preset", "1", "--stems", "--out", "-"},
              "--stems: needs a file name behind --out"},
        Typed{"OfStemsWithoutASound",
              {"render", "--preset", "1", "--stems", "--midi", "a.mid"},
              "--out: is missing; say where the sound goes"},
        Typed{"OfAStemsNameForTheNotes",
              {"render", "--preset", "1", "--stems", "--out", "a.wav", "--midi", "a-R3.wav"},
              "--stems: \"a-R3.wav\" is already the name of another output\n"},
        Typed{"OfPreset",
              {"render", "--preset", "Drum Cirlce", "--out", "a.wav"},
              "--preset: there is no preset \"Drum Cirlce\"; did you mean \"Drum Circle\"?"},
        Typed{"OfOut", {"render", "--preset", "1", "--out", "a.mp3"}, "--out: \"a.mp3\" must end in "},
        Typed{"NoPreset", {"render", "--out", "a.wav"}, "--preset: is missing; say what to play"},
        Typed{"NoOut", {"render", "--preset", "1"}, "--out: is missing; say where"}),
    nameOf);

class BadState : public ProgramTest
{};

TEST_F(BadState, IsRefusedWithAWordOnWhatIsWrong)
{
    const std::vector<std::pair<std::string, std::string>> cases{
        {"activity=0.5", "it is not valid JSON: "},
        {"[1, 2]", "it must be a JSON object"},
        {R"({"parameters": {}})", "\"version\" is missing"},
        {R"({"version": 2, "parameters": {}})", "\"version\" is 2, but this program reads version 1"},
        {R"({"version": 1})", "\"parameters\" is missing"},
        {R"({"version": 1, "parameters": {"activity": "high"}})",
         "the value of \"activity\" in \"parameters\" must be a number"},
        {R"({"version": 1, "parameters": {"line\nbreak": null}})", "the value of \"line"},
        {R"({"version": 1, "parameters": {"activity": 1e999}})", "it is not valid JSON: "},
        {R"({"version": 1, "preset": 3, "parameters": {}})", "\"preset\" must be an object or null"},
        {std::string(std::size_t{2} << 20, ' '), "it is larger than 1 MiB"}};
    for (const auto& [text, problem] : cases) {
        folder.write("mine.json", text);
        const auto result = run({"render", "--state", "mine.json", "--out", "a.wav"});
        expectOneComplaint(result, 2);
        EXPECT_THAT(result.err, StartsWith("velotrine: --state mine.json: " + problem));
        EXPECT_THAT(folder.entries(), testing::ElementsAre("mine.json"));
    }
}

class LongArgument : public ProgramTest
{};

TEST_F(LongArgument, IsCutShortInTheAnswer)
{
    const auto result =
        run({"render", "--preset", "1", "--out", "a.wav", "--bars", std::string(100000, 'x')});
    expectOneComplaint(result, 2);
    EXPECT_LT(result.err.size(), 1100U);
    EXPECT_THAT(result.err, StartsWith("velotrine: --bars: \"xxx"));
    EXPECT_THAT(result.err, EndsWith("xxx\" will not do; give a number above 0, at most 43200\n"));
}

class OldFile : public ProgramTest
{};

TEST_F(OldFile, IsLeftAloneByAMistake)
{
    folder.write("a.wav", "older");
    expectOneComplaint(run({"render", "--preset", "1", "--bars", "x", "--out", "a.wav"}), 2);
    EXPECT_EQ(folder.read("a.wav"), "older");
}

} // namespace
} // namespace velotrine
