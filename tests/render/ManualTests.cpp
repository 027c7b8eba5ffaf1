#include "tests/render/ProgramTest.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::HasSubstr;

class Manual : public ProgramTest
{
protected:
    void SetUp() override
    {
        std::ifstream file(VELOTRINE_SOURCE_DIR "/docs/manual.md");
        text = std::string(std::istreambuf_iterator<char>(file), {});
        ASSERT_THAT(text, HasSubstr("# Velotrine: the manual"));
    }

    /// What stands between ```sh and ```, each block by itself.
    [[nodiscard]] std::vector<std::string> examples() const
    {
        std::vector<std::string> found;
        std::istringstream lines(text);
        bool within = false;
        for (std::string line; std::getline(lines, line);) {
            if (within && line == "```")
                within = false;
            else if (within)
                found.back() += line + "\n";
            else if (line == "```sh") {
                within = true;
                found.emplace_back();
            }
        }
        return found;
    }

    std::string text;
};

TEST_F(Manual, HasExamplesThatAllRun)
{
    auto where = surroundings();
    const auto programs = std::filesystem::path(VELOTRINE_PROGRAM).parent_path().string();
    where.environment.emplace_back("PATH", programs + ":" + std::getenv("PATH"));
    EXPECT_GT(examples().size(), 10U);
    for (const auto& example : examples()) {
        const auto result = runProcess({"sh", "-e", "-c", example}, where);
        EXPECT_EQ(result.exitCode, 0) << example;
        EXPECT_EQ(result.err, "") << example;
    }
    for (const auto* const file :
         {"drums.wav", "chimes.flac", "preset-9.flac", "activity-0.4.wav", "piece-67.mid", "wobbly.mid",
          "starfish.json", "calm.wav", "loud.wav", "other-100.flac", "grows.wav", "grows-R5.wav", "loop.wav",
          "notes.mid", "again.wav"})
        EXPECT_THAT(folder.entries(), testing::Contains(file));
}

TEST_F(Manual, ExplainsEveryOption)
{
    std::istringstream help(run({"render", "--help"}).out);
    int count = 0;
    for (std::string line; std::getline(help, line);) {
        if (!line.starts_with("  --"))
            continue;
        const auto option = line.substr(2, line.find(' ', 2) - 2);
        EXPECT_THAT(text, HasSubstr("\n| `" + option + "` | "));
        ++count;
    }
    EXPECT_EQ(count, 19);
}

TEST_F(Manual, ExplainsEveryParameterWithItsRange)
{
    for (const auto& parameter : parameterTable()) {
        // A ring's parameters are told once for all five.
        auto identifier = parameter.identifier;
        if (parameter.address >= globalParameterCount)
            identifier.back() = '1';
        const auto row = text.find("\n| `" + identifier + "` | ");
        ASSERT_NE(row, std::string::npos) << identifier;
        const auto range = std::to_string(static_cast<int>(parameter.minValue)) + " to " +
                           std::to_string(static_cast<int>(parameter.maxValue));
        if (parameter.kind != ParameterKind::toggle) {
            EXPECT_THAT(text.substr(row, text.find('\n', row + 1) - row), HasSubstr("| " + range));
        }
    }
}

TEST_F(Manual, NamesEveryPresetWithItsNumber)
{
    for (std::size_t i = 0; i < presetTable().size(); ++i)
        EXPECT_THAT(
            text, HasSubstr("\n| " + std::to_string(i) + " | " + std::string(presetTable()[i].name) + " | "));
}

TEST_F(Manual, QuotesAMessageAsTheProgramGivesIt)
{
    const auto result = run({"render", "--preset", "1", "--set", "activty=0.7", "--out", "a.wav"});
    EXPECT_THAT(text, HasSubstr("\n" + result.err));
}

} // namespace
} // namespace velotrine
