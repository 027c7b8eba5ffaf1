#include "takes/TakeText.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::HasSubstr;
using Unit = TakeTime::Unit;

TakeTarget target(const char* identifier)
{
    return takeTarget(parameterWithIdentifier(identifier)->address);
}

std::string withStart(const std::string& start)
{
    return R"({"version": 1, "start": )" + start + R"(, "changes": []})";
}

std::string withChanges(const std::string& changes)
{
    return R"({"version": 1, "changes": [)" + changes + "]}";
}

Take reading(const std::string& text)
{
    auto read = takeFromText(text);
    EXPECT_TRUE(read.take) << read.error;
    EXPECT_EQ(read.error, "");
    return read.take.value_or(Take{});
}

TEST(TakeText, SaysAllThatATakeIs)
{
    Take take;
    take.start.sampleRate = 44100.0;
    take.start.cycleFrames = 64;
    take.start.seed = 7;
    take.start.generator = 0x1234;
    take.start.sameMusicAtEveryStart = true;
    take.start.host = TakeHost{.tempo = 99.5, .beatsPerBar = 7, .beatUnit = 8, .isPlaying = true};
    const TakeTime atBar{2.5, Unit::bars};
    take.changes = {
        {.time = {.amount = 0}, .value = 1, .target = TakeTarget::play},
        {.time = {.amount = 640}, .value = 0.25, .target = target("activity")},
        {.time = {.amount = 640}, .value = 5, .target = target("spotsR2")},
        {.time = atBar, .value = 0.75, .overBars = 8, .target = target("boredom")},
        {.time = atBar, .value = 4294967295.0, .target = TakeTarget::seed},
        {.time = atBar, .value = 0, .target = TakeTarget::sameMusicAtEveryStart},
        {.time = atBar, .value = 128, .target = TakeTarget::cycleFrames},
        {.time = atBar, .value = 120.5, .target = TakeTarget::hostTempo},
        {.time = atBar, .value = 3, .target = TakeTarget::hostBeatsPerBar},
        {.time = atBar, .value = 4, .target = TakeTarget::hostBeatUnit},
        {.time = atBar, .value = 0, .target = TakeTarget::hostPlaying},
        {.time = {.amount = 9e9}, .target = TakeTarget::end},
    };
    const auto text = textFromTake(take);
    EXPECT_THAT(text, HasSubstr(R"(  "start": {
    "sampleRate": 44100,
    "cycleFrames": 64,
    "seed": 7,
    "generator": "0000000000001234",
    "sameMusicAtEveryStart": true,
    "host": {"tempo": 99.5, "beatsPerBar": 7, "beatUnit": 8, "playing": true},
    "parameters": {
      "activity": 0.5,
)"));
    EXPECT_THAT(text, testing::EndsWith(R"(  "changes": [
    {"frame": 0, "play": true},
    {"frame": 640, "set": {"activity": 0.25, "spotsR2": 5}},
    {"bar": 2.5, "set": {"boredom": 0.75}, "over": 8, "seed": 4294967295, "sameMusicAtEveryStart": false, )"
                                        R"("cycleFrames": 128, "host": {"tempo": 120.5, "beatsPerBar": 3, )"
                                        R"("beatUnit": 4, "playing": false}},
    {"frame": 9000000000, "end": true}
  ]
}
)"));
    EXPECT_EQ(reading(text), take);
}

TEST(TakeText, PutsIntoOneObjectOnlyWhatIsReadBackInItsOrder)
{
    Take take;
    take.changes = {{.value = 0.25, .target = target("activity")},
                    {.value = 0.5, .target = target("activity")},
                    {.value = 0.25, .overBars = 2, .target = target("boredom")},
                    {.value = 1, .target = TakeTarget::play},
                    {.value = 0.25, .overBars = 3, .target = target("calories")},
                    {.value = 0.25, .overBars = 3, .target = target("boredom")}};
    const auto text = textFromTake(take);
    EXPECT_THAT(text, HasSubstr(R"("changes": [
    {"frame": 0, "set": {"activity": 0.25}},
    {"frame": 0, "set": {"activity": 0.5}},
    {"frame": 0, "set": {"boredom": 0.25}, "over": 2, "play": true},
    {"frame": 0, "set": {"calories": 0.25}, "over": 3},
    {"frame": 0, "set": {"boredom": 0.25}, "over": 3}
  ])"));
    EXPECT_EQ(reading(text), take);
}

TEST(TakeText, OfTheEmptyTakeIsAnInstrumentAsItIsMade)
{
    EXPECT_EQ(reading(R"({"version": 1, "changes": []})"), Take{});
    EXPECT_EQ(reading(withStart("{}")), Take{});
    const auto start = Take{}.start;
    for (const auto& info : parameterTable())
        EXPECT_EQ(start.values[info.address], info.initialValue);
    EXPECT_EQ(reading(textFromTake({})), Take{});
}

TEST(TakeText, MayBeginWithAPresetByNameOrNumber)
{
    auto expected = Take{}.start;
    expected.values = presetTable()[7].values;
    for (const auto* const preset : {"\"Wind Chimes\"", "\"wind chimes\"", "7", "\"7\""})
        EXPECT_EQ(reading(withStart(std::string(R"({"preset": )") + preset + "}")).start, expected) << preset;
    expected.values[addressOf(GlobalParameter::bpm)] = 60.0f;
    EXPECT_EQ(reading(withStart(R"({"parameters": {"bpm": 60}, "preset": 7})")).start, expected);
}

TEST(TakeText, TakesValuesAsPeopleWriteThemAndBoundsThem)
{
    const auto take = reading(withChanges(R"({"bar": 0, "comment": "F sharp, and loud", "set":
        {"rootNote": "F#", "scaleType": "minor pentatonic", "volume": "60 %", "bpm": 1000, "activity": -1}})"));
    std::vector<std::pair<TakeTarget, double>> values;
    for (const auto& change : take.changes)
        values.emplace_back(change.target, change.value);
    EXPECT_EQ(values, (std::vector<std::pair<TakeTarget, double>>{{target("activity"), 0.0},
                                                                  {target("rootNote"), 6.0},
                                                                  {target("scaleType"), 3.0},
                                                                  {target("bpm"), 300.0},
                                                                  {target("volume"), 0.6f}}));
}

TEST(TakeText, OfAChangeOfTheHostIsATakeWithAHost)
{
    EXPECT_FALSE(reading(withChanges("")).start.host);
    EXPECT_EQ(reading(withChanges(R"({"bar": 0, "host": {"playing": true}})")).start.host, TakeHost{});
}

TEST(TakeText, MayMixBarsAndFramesEachInTheirOrder)
{
    const auto take = reading(withChanges(R"({"bar": 2, "seed": 1}, {"frame": 100, "seed": 2},
                                             {"bar": 2, "seed": 3}, {"frame": 100, "seed": 4})"));
    EXPECT_EQ(take.changes.size(), 4U);
}

struct Refusal
{
    std::string text;
    std::string error;
};

class RefusedTakeText : public testing::TestWithParam<Refusal>
{};

TEST_P(RefusedTakeText, IsRefusedWithASentenceThatSaysWhatAndWhere)
{
    const auto read = takeFromText(GetParam().text);
    EXPECT_FALSE(read.take);
    EXPECT_THAT(read.error, testing::StartsWith(GetParam().error)) << GetParam().text;
    EXPECT_EQ(read.error.find('\n'), std::string::npos);
}

const std::string change = "change 2: ";

std::string second(const std::string& members)
{
    return withChanges(R"({"bar": 4, "play": true}, )" + members);
}

INSTANTIATE_TEST_SUITE_P(
    NoTake, RefusedTakeText,
    testing::Values(
        Refusal{"", "it is not valid JSON: parse error at line 1"}, Refusal{"[1, 2]", "it must be an object"},
        Refusal{"7", "it must be an object"}, Refusal{"{}", "\"version\" is missing"},
        Refusal{R"({"version": 2, "music": [7]})", "\"version\" is 2, but this program reads version 1"},
        Refusal{R"({"version": "1"})", "\"version\" must be a whole number"},
        Refusal{R"({"version": 1})", "\"changes\" is missing"},
        Refusal{R"({"version": 1, "parameters": {}})", "\"parameters\" is not known here"},
        Refusal{R"({"version": 1, "chnages": []})", "there is a list, but only \"changes\" is one"},
        Refusal{R"({"version": 1, "changes": {"bar": 0}})", "\"changes\" must be a list"},
        Refusal{R"({"version": 1, "changes": 7})", "\"changes\" must be a list"},
        Refusal{R"({"version": 1, "changes": [], "changes": []})", "\"changes\" is there twice"},
        Refusal{withChanges("") + "x", "it is not valid JSON: parse error at line 1"},
        Refusal{std::string("{\0}", 3), "it is not valid JSON: there is a zero byte at line 1, column 2"}));

INSTANTIATE_TEST_SUITE_P(
    Start, RefusedTakeText,
    testing::Values(
        Refusal{withStart("7"), "\"start\": it must be an object"},
        Refusal{withStart(R"({"sede": 7})"), R"("start": "sede" is not known here; did you mean "seed"?)"},
        Refusal{withStart(R"({"parameters": {"activty": 1}})"),
                R"("start", "parameters": there is no parameter "activty"; did you mean "activity"?)"},
        Refusal{withStart(R"({"parameters": {"activity": true}})"),
                R"("start", "parameters": the value of "activity" must be a number)"},
        Refusal{withStart(R"({"parameters": {"rootNote": "H"}})"),
                R"("start", "parameters": the value of "rootNote" must be a number)"},
        Refusal{withStart(R"({"parameters": {"activity": 1e999}})"), "it is not valid JSON: number overflow"},
        Refusal{withStart(R"({"preset": "Drum Cycle"})"),
                R"("start": there is no preset "Drum Cycle"; did you mean "Drum Circle"?)"},
        Refusal{withStart(R"({"preset": 10})"), R"("start": there is no preset "10")"},
        Refusal{withStart(R"({"seed": 4294967296})"),
                R"("start": "seed" must be a whole number from 0 to 4294967295)"},
        Refusal{withStart(R"({"seed": -1})"), R"("start": "seed" must be)"},
        Refusal{withStart(R"({"seed": 1.5})"), R"("start": "seed" must be)"},
        Refusal{withStart(R"({"generator": "0"})"), R"("start": "generator" must be)"},
        Refusal{withStart(R"({"generator": "12345678901234567"})"), R"("start": "generator" must be)"},
        Refusal{withStart(R"({"generator": 17})"), R"("start": "generator" must be)"},
        Refusal{withStart(R"({"sampleRate": 7999})"), R"("start": "sampleRate" must be)"},
        Refusal{withStart(R"({"cycleFrames": 0})"), R"("start": "cycleFrames" must be)"},
        Refusal{withStart(R"({"sameMusicAtEveryStart": 1})"),
                R"("start": "sameMusicAtEveryStart" must be true or false)"},
        Refusal{withStart(R"({"host": {"tempo": 0.5}})"), R"("start", "host": "tempo" must be)"},
        Refusal{withStart(R"({"host": {"beatsPerBar": 257}})"), R"("start", "host": "beatsPerBar" must be)"},
        Refusal{withStart(R"({"a": {"b": {"c": {"d": 1}}}})"),
                "there are objects within each other that nobody reads"}));

INSTANTIATE_TEST_SUITE_P(
    Changes, RefusedTakeText,
    testing::Values(
        Refusal{second("7"), change + "it must be an object"},
        Refusal{second("[7]"), change + "there is a list, but only \"changes\" is one"},
        Refusal{second("{}"), change + R"(it must say when: give either "bar" or "frame")"},
        Refusal{second(R"({"bar": 5, "frame": 9})"), change + "it must say when"},
        Refusal{second(R"({"bar": 3.5})"), change + "bar 3.5 lies before 4, which is above it"},
        Refusal{withChanges(R"({"frame": 9}, {"bar": 1}, {"frame": 8})"), "change 3: frame 8 lies before 9"},
        Refusal{second(R"({"bar": -1})"), change + "\"bar\" must be"},
        Refusal{second(R"({"bar": "5"})"), change + "\"bar\" must be"},
        Refusal{second(R"({"frame": 0.5})"), change + "\"frame\" must be a whole number"},
        Refusal{second(R"({"bar": 5, "ovr": 4})"),
                change + R"("ovr" is not known here; did you mean "over"?)"},
        Refusal{second(R"({"bar": 5, "over": 4})"), change + "\"over\" says how long \"set\" takes"},
        Refusal{second(R"({"bar": 5, "set": 4})"), change.substr(0, 8) + ", \"set\": it must be an object"},
        Refusal{second(R"({"bar": 5, "set": {"actvity": 1}})"),
                R"(change 2, "set": there is no parameter "actvity"; did you mean "activity"?)"},
        Refusal{second(R"({"bar": 5, "play": 1})"), change + "\"play\" must be true or false"},
        Refusal{second(R"({"bar": 5, "seed": 0.5})"), change + "\"seed\" must be"},
        Refusal{second(R"({"bar": 5, "cycleFrames": 9999})"), change + "\"cycleFrames\" must be"},
        Refusal{second(R"({"bar": 5, "host": {"metre": 1}})"), R"(change 2, "host": "metre" is not known)"},
        Refusal{second(R"({"bar": 5, "end": true}, {"bar": 6})"),
                "change 3: it comes behind the take's \"end\""},
        Refusal{second(R"({"bar": 5, "set": {"activity": {}}})"),
                change + "there are objects within each other that nobody reads"}));

TEST(TakeText, OverItsSizeIsRefused)
{
    std::string text = withChanges("");
    text.resize((maxTakeMebibytes << 20) + 1, ' ');
    EXPECT_EQ(takeFromText(text).error, "it is larger than 64 MiB");
    text.pop_back();
    EXPECT_TRUE(takeFromText(text).take);
}

TEST(TakeText, HoldsAMillionChangesAndNoMore)
{
    std::string changes;
    for (std::size_t i = 0; i < Take::maxChanges; ++i)
        changes += R"({"bar":1,"play":true},)";
    changes.pop_back();
    EXPECT_EQ(reading(withChanges(changes)).changes.size(), Take::maxChanges);
    EXPECT_EQ(takeFromText(withChanges(changes + R"(,{"bar":1})")).error,
              "change 1000001: a take has at most 1000000 changes");
}

TEST(TakeText, OfMoreNamesThanThereAreIsRefusedBeforeItFillsTheMemory)
{
    std::string members;
    for (int i = 0; i < 2000; ++i)
        members += (i == 0 ? "\"x" : ", \"x") + std::to_string(i) + "\": 0";
    EXPECT_EQ(takeFromText(withStart("{" + members + "}")).error, "there are more names than anything has");
    EXPECT_EQ(takeFromText(withChanges("{" + members + "}")).error,
              "change 1: there are more names than anything has");
}

} // namespace
} // namespace velotrine
