#include "host/Preferences.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::HasSubstr;

class PreferencesTest : public testing::Test
{
protected:
    [[nodiscard]] juce::File file() const { return juce::File(folder.file("Velotrine/Velotrine.settings")); }

    TemporaryFolder folder;
};

TEST_F(PreferencesTest, HelpWasNotShownWithoutAFile)
{
    EXPECT_FALSE(Preferences(file()).hasShownHelp());
    EXPECT_FALSE(file().exists());
}

TEST_F(PreferencesTest, WhatIsStoredIsThereInTheNextRun)
{
    Preferences first(file());
    first.setHasShownHelp(true);
    EXPECT_TRUE(first.hasShownHelp());
    EXPECT_TRUE(Preferences(file()).hasShownHelp());
    EXPECT_THAT(folder.read("Velotrine/Velotrine.settings"), HasSubstr("VelotrineHasShownHelpMac"));

    first.setHasShownHelp(false);
    EXPECT_FALSE(Preferences(file()).hasShownHelp());
}

TEST_F(PreferencesTest, ACorruptFileCountsAsFalseAndIsReplaced)
{
    std::filesystem::create_directory(folder.file("Velotrine"));
    constexpr auto neitherTrueNorFalse =
        R"(<?xml version="1.0"?><PROPERTIES>)"
        R"(<VALUE name="VelotrineHasShownHelpMac" val="perhaps"/></PROPERTIES>)";
    for (const std::string content :
         {"", "true", "<PROPERTIES><VALUE name=\"VelotrineHasShownHelpMac\" val=", neitherTrueNorFalse,
          "PROP\xff\xff\xff\x7f", "CPRP\x01\x02\x03", "\xff\xfe\x01"}) {
        folder.write("Velotrine/Velotrine.settings", content);
        Preferences preferences(file());
        EXPECT_FALSE(preferences.hasShownHelp()) << content;
        preferences.setHasShownHelp(true);
        EXPECT_TRUE(Preferences(file()).hasShownHelp()) << content;
    }
}

/// Even root cannot make a folder where there is a file.
TEST_F(PreferencesTest, AFolderThatCannotBeMadeIsNoError)
{
    folder.write("Velotrine", "in the way");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        Preferences preferences(file());
        EXPECT_FALSE(preferences.hasShownHelp());
        preferences.setHasShownHelp(true);
    }
    EXPECT_FALSE(Preferences(file()).hasShownHelp());
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(folder.read("Velotrine"), "in the way");
}

TEST_F(PreferencesTest, AFolderInTheFilesPlaceIsNoError)
{
    std::filesystem::create_directories(folder.file("Velotrine/Velotrine.settings"));
    Preferences preferences(file());
    EXPECT_FALSE(preferences.hasShownHelp());
    preferences.setHasShownHelp(true);
    EXPECT_FALSE(Preferences(file()).hasShownHelp());
}

TEST_F(PreferencesTest, TheFileIsInTheUsersConfigurationFolder)
{
    const auto kept = juce::SystemStats::getEnvironmentVariable("XDG_CONFIG_HOME", {});
    const auto inHome = juce::File("~/.config/Velotrine/Velotrine.settings");
    ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    EXPECT_EQ(Preferences::defaultFile().getFullPathName(), file().getFullPathName());
    ::setenv("XDG_CONFIG_HOME", "not/absolute", 1);
    EXPECT_EQ(Preferences::defaultFile().getFullPathName(), inHome.getFullPathName());
    ::setenv("XDG_CONFIG_HOME", kept.toRawUTF8(), 1); // empty counts as unset
}

} // namespace
} // namespace velotrine
