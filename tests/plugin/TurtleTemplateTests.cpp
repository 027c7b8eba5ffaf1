#include "plugin/lv2/TurtleTemplate.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"

#include <stdexcept>
#include <string>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::HasSubstr;

TEST(TurtleTemplate, IsFilledInWhereverANameStandsBetweenTwoSigns)
{
    EXPECT_EQ(filledIn("<@PLUGIN_URI@> doap:name \"@NAME@\" , \"@NAME@\" ."),
              "<https://marrowbeck.example/plugins/velotrine> doap:name \"Velotrine\" , \"Velotrine\" .");
}

TEST(TurtleTemplate, KeepsWhatIsTurtlesOwn)
{
    const std::string turtle = "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n\"Name\"@en , \"@en@\" .\n";
    EXPECT_EQ(filledIn(turtle), turtle);
    EXPECT_EQ(filledIn(""), "");
}

TEST(TurtleTemplate, RefusesANameThatStandsForNothing)
{
    EXPECT_THROW(std::ignore = filledIn("lv2:name \"@NAMES@\" ."), std::invalid_argument);
}

TEST(TurtleTemplate, HasAPortForEachParameterAndAPresetForEachOfTheTable)
{
    const auto ports = filledIn("@CONTROL_PORTS@");
    for (const auto& parameter : parameterTable())
        EXPECT_THAT(ports, HasSubstr("lv2:index " + std::to_string(parameter.address) +
                                     " ;\n\t\tlv2:symbol \"" + std::string(parameter.identifier) + "\""));
    for (const auto* const name : {"@PRESET_LIST@", "@PRESETS@"})
        for (const auto& preset : presetTable())
            EXPECT_THAT(filledIn(name), HasSubstr("rdfs:label \"" + std::string(preset.name) + "\""));
}

} // namespace
} // namespace velotrine
