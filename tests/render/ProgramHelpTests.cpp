#include "tests/render/ProgramTest.h"

#include "render/Listing.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Help : public ProgramTest
{
protected:
    /// What the program prints, and nothing else happens.
    [[nodiscard]] std::string printed(const std::vector<std::string>& arguments) const
    {
        const auto result = run(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_TRUE(folder.entries().empty());
        return result.out;
    }
};

TEST_F(Help, IsThereForTheProgramAndForEachCommandWithExamples)
{
    for (const auto& command : {std::vector<std::string>{}, {"render"}, {"list"}, {"show"}, {"help"}})
        for (const auto* const option : {"--help", "-h"}) {
            auto arguments = command;
            arguments.emplace_back(option);
            EXPECT_THAT(printed(arguments), HasSubstr("\nExamples:\n  velotrine "));
        }
}

TEST_F(Help, MentionsEveryCommand)
{
    EXPECT_THAT(printed({"--help"}),
                testing::AllOf(HasSubstr("\n  render "), HasSubstr("\n  list "), HasSubstr("\n  show "),
                               HasSubstr("\n  help "), HasSubstr("\n  --version ")));
}

TEST_F(Help, MentionsEveryOptionOfRender)
{
    const auto text = printed({"render", "--help"});
    for (const auto* const option :
         {"--preset NAME|NUMBER", "--state FILE.json|-", "--take FILE.velotrine-take|-",
          "--set IDENTIFIER=VALUE", "--seed N", "--bars N", "--seconds S", "--from BAR", "--tempo BPM",
          "--sample-rate HZ", "--block FRAMES", "--tail auto|none|SECONDS", "--format s16|s24|f32",
          "--midi FILE.mid", "--save-state FILE.json", "--stems", "--no-clobber", "--quiet",
          "--out FILE.wav|FILE.flac|-"})
        EXPECT_TRUE(text.find("\n  " + std::string(option) + ' ') != std::string::npos ||
                    text.find("\n  " + std::string(option) + '\n') != std::string::npos)
            << option;
}

TEST_F(Help, MentionsEveryListAndItsOption)
{
    const auto text = printed({"list", "--help"});
    EXPECT_THAT(text, HasSubstr("presets|parameters"));
    EXPECT_THAT(text, HasSubstr("\n  --json "));
}

TEST_F(Help, IsACommandToo)
{
    EXPECT_EQ(printed({"help"}), printed({"--help"}));
    for (const auto* const command : {"render", "list", "show", "help"})
        EXPECT_EQ(printed({"help", command}), printed({command, "--help"}));
}

TEST_F(Help, ComesBeforeAnyWork)
{
    EXPECT_THAT(printed({"render", "--preset", "1", "--out", "a.wav", "--help"}),
                StartsWith("Render a piece"));
    EXPECT_THAT(printed({"list", "presets", "--help"}), StartsWith("List the presets"));
}

TEST_F(Help, SaysTheVersion)
{
    EXPECT_EQ(printed({"--version"}), "Velotrine " VELOTRINE_VERSION "\n");
}

TEST_F(Help, ListsPresetsAndParameters)
{
    EXPECT_EQ(printed({"list", "presets"}), presetListing(false));
    EXPECT_EQ(printed({"list", "parameters"}), parameterListing(false));
    EXPECT_EQ(printed({"list", "presets", "--json"}), presetListing(true));
    EXPECT_EQ(printed({"list", "--json", "parameters"}), parameterListing(true));
}

} // namespace
} // namespace velotrine
