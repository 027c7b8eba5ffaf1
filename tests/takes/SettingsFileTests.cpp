#include "takes/SettingsFile.h"

#include "audiounit/Parameters.h"
#include "commandline/Errors.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr auto boredom = addressOf(GlobalParameter::boredom);

class SettingsFile : public testing::Test
{
protected:
    std::string write(const std::string& name, const std::string& text)
    {
        std::ofstream(folder.file(name)) << text;
        return folder.file(name);
    }

    void expectRefusal(const std::string& path, const std::string& reason)
    {
        const auto read = settingsFromFile(path, base);
        EXPECT_FALSE(read.settings) << path;
        EXPECT_THAT(read.error, HasSubstr(reason));
        EXPECT_EQ(read.error.find('\n'), std::string::npos);
    }

    TemporaryFolder folder;
    Settings base{.values = {0.5f, 0.25f}, .seed = 3};
};

TEST_F(SettingsFile, ComesBackAsItWasWritten)
{
    auto settings = base;
    settings.preset = AUAudioUnitPreset{7, "Wind Chimes"};
    settings.values[addressOf(GlobalParameter::bpm)] = 97.3f;
    writeSettings(settings, folder.file("a.json"));
    const auto read = settingsFromFile(folder.file("a.json"), {});
    EXPECT_EQ(read.settings, settings) << read.error;
    EXPECT_FALSE(read.areOfATake);
    EXPECT_THAT(folder.entries(), testing::ElementsAre("a.json"));
}

TEST_F(SettingsFile, WhatAStateDoesNotNameStays)
{
    const auto read = settingsFromText(R"({"version": 1, "parameters": {"boredom": 0.75}})", base);
    auto expected = base;
    expected.values[boredom] = 0.75f;
    expected.seed = defaultSeed;
    EXPECT_EQ(read.settings, expected);
}

TEST_F(SettingsFile, OfATakeAreThoseOfItsBeginning)
{
    const auto path = write("grows.velotrine-take",
                            R"({"version": 1, "start": {"seed": 7, "parameters": {"boredom": 0.1}},
                                "changes": [{"bar": 0, "play": true}, {"bar": 1, "set": {"boredom": 0.9}}]})");
    const auto read = settingsFromFile(path, base);
    ASSERT_TRUE(read.settings) << read.error;
    EXPECT_TRUE(read.areOfATake);
    EXPECT_EQ(read.settings->values[boredom], 0.1f);
    EXPECT_EQ(read.settings->values[addressOf(GlobalParameter::bpm)], 120.0f) << "as an instrument is made";
    EXPECT_EQ(read.settings->seed, 7u);
}

TEST_F(SettingsFile, IsRefusedWithOneReason)
{
    expectRefusal(folder.file("missing.json"), "No such file");
    expectRefusal(folder.path().string(), "it is a folder");
    expectRefusal("/dev/null", "it is no file");
    expectRefusal(write("text.json", "good morning"), "JSON");
    expectRefusal(write("half.json", R"({"version": 1, "param)"), "JSON");
    expectRefusal(write("other.json", R"({"version": 1})"), "\"parameters\" is missing");
    expectRefusal(write("large.json", std::string(2000000, ' ')), "1 MiB");
    expectRefusal(write("bad.velotrine-take", R"({"version": 1})"), "\"changes\" is missing");
}

TEST_F(SettingsFile, ThatCannotBeWrittenLeavesTheOneBefore)
{
    EXPECT_THROW(writeSettings(base, folder.file("no/such/folder.json")), WorkError);
    fs::create_directory(folder.file("a.json"));
    EXPECT_THROW(writeSettings(base, folder.file("a.json")), WorkError);
    EXPECT_TRUE(fs::is_directory(folder.file("a.json")));
}

} // namespace
} // namespace velotrine
