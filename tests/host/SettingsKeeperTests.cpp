#include "host/SettingsKeeper.h"

#include "takes/SettingsFile.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace velotrine {
namespace {

namespace fs = std::filesystem;

class SettingsKeeperTest : public testing::Test
{
protected:
    SettingsKeeperTest() { now.values[addressOf(GlobalParameter::bpm)] = 120.0f; }

    [[nodiscard]] std::unique_ptr<SettingsKeeper> keep(const std::string& name,
                                                       const std::optional<Settings>& inFile = std::nullopt)
    {
        auto keeper = std::make_unique<SettingsKeeper>(
            juce::File(folder.file(name)), [this] { return now; }, inFile);
        keeper->onFailure = [this](const juce::String& reason) { failures.push_back(reason.toStdString()); };
        return keeper;
    }

    [[nodiscard]] bool comesToHold(const std::string& name, const Settings& settings) const
    {
        return runMessagesUntil([&] { return settingsFromFile(folder.file(name), {}).settings == settings; },
                                5.0);
    }

    TemporaryFolder folder;
    Settings now{.values = {0.25f}, .seed = 7};
    std::vector<std::string> failures;
};

TEST_F(SettingsKeeperTest, WritesAtOnceWhatIsNotInTheFileAndMakesItsFolder)
{
    const auto keeper = keep("some/folder/last.json");
    EXPECT_TRUE(comesToHold("some/folder/last.json", now));
}

TEST_F(SettingsKeeperTest, FollowsTheSettings)
{
    const auto keeper = keep("last.json");
    for (int i = 0; i < 3; ++i) {
        now.values[0] = 0.1f * static_cast<float>(i);
        EXPECT_TRUE(comesToHold("last.json", now));
    }
    EXPECT_THAT(folder.entries(), testing::ElementsAre("last.json"));
    EXPECT_TRUE(failures.empty());
}

TEST_F(SettingsKeeperTest, LeavesAFileAloneThatHasThemAlready)
{
    folder.write("last.json", "something else");
    {
        const auto keeper = keep("last.json", now);
        runMessagesFor(1.2);
    }
    EXPECT_EQ(folder.read("last.json"), "something else");
}

TEST_F(SettingsKeeperTest, WritesTheLastOfThemWhenItGoes)
{
    {
        const auto keeper = keep("last.json", now);
        now.seed = 8;
    }
    EXPECT_EQ(settingsFromFile(folder.file("last.json"), {}).settings, now);
}

TEST_F(SettingsKeeperTest, SaysOnceThatItCannotWriteAndGoesOnTrying)
{
    fs::create_directory(folder.file("last.json"));
    const auto keeper = keep("last.json");
    runMessagesFor(1.7);
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_THAT(failures[0], testing::HasSubstr("it is a folder"));
    fs::remove(folder.file("last.json"));
    EXPECT_TRUE(comesToHold("last.json", now));
}

} // namespace
} // namespace velotrine
