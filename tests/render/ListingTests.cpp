#include "render/Listing.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace velotrine {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

TEST(PresetListing, HasALineForEachPresetWithItsNumberAndName)
{
    const auto lines = linesOf(presetListing(false));
    ASSERT_THAT(lines, SizeIs(presetTable().size()));
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(lines[i], std::to_string(i) + "  " + std::string(presetTable()[i].name));
}

TEST(PresetListing, AsJsonEqualsTheTable)
{
    const auto listed = json::parse(presetListing(true));
    ASSERT_THAT(listed, SizeIs(presetTable().size()));
    for (std::size_t i = 0; i < listed.size(); ++i) {
        const auto& preset = presetTable()[i];
        EXPECT_EQ(listed[i].at("number"), i);
        EXPECT_EQ(listed[i].at("name"), preset.name);
        const auto& values = listed[i].at("values");
        ASSERT_THAT(values, SizeIs(parameterTable().size()));
        for (const auto& parameter : parameterTable())
            EXPECT_EQ(values.at(parameter.identifier).get<float>(), preset.values[parameter.address])
                << preset.name << " " << parameter.identifier;
    }
}

TEST(ParameterListing, HasALineForEachParameter)
{
    const auto lines = linesOf(parameterListing(false));
    ASSERT_THAT(lines, SizeIs(1 + parameterTable().size()));
    EXPECT_THAT(lines[0], StartsWith("identifier"));
    for (const auto& parameter : parameterTable()) {
        const auto range = shortestText(parameter.minValue) + " to " + shortestText(parameter.maxValue);
        EXPECT_THAT(lines[parameter.address + 1],
                    AllOf(StartsWith(parameter.identifier + " "), HasSubstr(" " + parameter.name + " "),
                          HasSubstr(" " + range + " ")));
        EXPECT_TRUE(
            lines[parameter.address + 1].ends_with("  " + parameterText(parameter, parameter.initialValue)));
    }
}

TEST(ParameterListing, LinesUpItsColumns)
{
    const auto lines = linesOf(parameterListing(false));
    for (const auto* const title : {"name", "range", "initial"}) {
        const auto column = lines[0].find(title);
        for (const auto& line : lines) {
            EXPECT_EQ(line.substr(column - 2, 2), "  ");
            EXPECT_NE(line[column], ' ');
        }
    }
}

TEST(ParameterListing, AsJsonEqualsTheTable)
{
    const auto listed = json::parse(parameterListing(true));
    ASSERT_THAT(listed, SizeIs(parameterTable().size()));
    for (const auto& parameter : parameterTable()) {
        const auto& entry = listed[parameter.address];
        EXPECT_EQ(entry.at("address"), parameter.address);
        EXPECT_EQ(entry.at("identifier"), parameter.identifier);
        EXPECT_EQ(entry.at("name"), parameter.name);
        EXPECT_EQ(entry.at("min").get<float>(), parameter.minValue);
        EXPECT_EQ(entry.at("max").get<float>(), parameter.maxValue);
        EXPECT_EQ(entry.at("initial").get<float>(), parameter.initialValue);
        EXPECT_EQ(entry.at("canRamp"), (parameter.flags & kAudioUnitParameterFlag_CanRamp) != 0);
    }
}

TEST(ParameterListing, AsJsonNamesTheUnits)
{
    const auto listed = json::parse(parameterListing(true));
    const auto unitOf = [&listed](std::string_view identifier) {
        return listed[parameterWithIdentifier(identifier)->address].at("unit");
    };
    EXPECT_EQ(unitOf("activity"), "generic");
    EXPECT_EQ(unitOf("spotsR1"), "indexed");
    EXPECT_EQ(unitOf("bpm"), "bpm");
    EXPECT_EQ(unitOf("sync"), "boolean");
}

TEST(ParameterListing, AsJsonNamesTheValuesOfRootAndScaleOnly)
{
    std::set<std::string> named;
    for (const auto& entry : json::parse(parameterListing(true)))
        if (entry.contains("values"))
            named.insert(entry.at("identifier"));
    EXPECT_THAT(named, ElementsAre("rootNote", "scaleType"));

    const auto listed = json::parse(parameterListing(true));
    EXPECT_EQ(listed[addressOf(GlobalParameter::rootNote)].at("values"), json(rootNames));
    EXPECT_EQ(listed[addressOf(GlobalParameter::scaleType)].at("values"), json(scaleNames));
}

TEST(ParameterListing, AsJsonWritesNumbersInAsFewDigitsAsGiveThemBack)
{
    EXPECT_THAT(parameterListing(true), HasSubstr("\"initial\": 0.7,\n"));
    EXPECT_THAT(presetListing(true), HasSubstr("\"drudgery\": 0.2086,\n"));
}

} // namespace
} // namespace velotrine
