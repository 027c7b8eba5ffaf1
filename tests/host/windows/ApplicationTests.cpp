#include "tests/host/windows/ApplicationTest.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace velotrine {
namespace {

TEST_F(ApplicationTest, ShowsHelpInFrontOnceForEachUser)
{
    launch();
    EXPECT_TRUE(windowAppears("Velotrine Help"));
    EXPECT_TRUE(windowHasKeyboard("Velotrine Help"));
    pressKey("ctrl+q");
    EXPECT_EQ(end().exitCode, 0);

    launch();
    EXPECT_TRUE(windowHasKeyboard("Velotrine"));
    runMessagesFor(0.5);
    EXPECT_TRUE(windowsTitled("Velotrine Help").empty());
}

TEST_F(ApplicationTest, OpensInTheMiddleAt480By404BelowItsMenuBarAndGetsNoSmaller)
{
    haveSeenHelp();
    launch();
    const auto bounds = boundsOfWindow(window());
    EXPECT_EQ(bounds.getWidth(), 480);
    EXPECT_EQ(bounds.getHeight(), 404 + menuBarHeight);
    EXPECT_NEAR(bounds.getCentreX(), 1280 / 2.0, 8.0);
    EXPECT_NEAR(bounds.getCentreY(), 960 / 2.0, 48.0);

    xdotool({"windowsize", "--sync", window(), "700", "600"});
    EXPECT_EQ(boundsOfWindow(window()).getWidth(), 700);
    xdotool({"windowsize", window(), "100", "100"});
    runMessagesFor(0.5);
    EXPECT_EQ(boundsOfWindow(window()).getWidth(), 480);
    EXPECT_EQ(boundsOfWindow(window()).getHeight(), 404 + menuBarHeight);
}

TEST_F(ApplicationTest, QuitsWhenItsLastWindowClosesHoweverItIsClosed)
{
    haveSeenHelp();
    for (const auto* keys : {"ctrl+w", "ctrl+q", "alt+F4"}) {
        launch();
        ASSERT_TRUE(windowHasKeyboard("Velotrine"));
        pressKey(keys);
        EXPECT_EQ(end().exitCode, 0) << keys;
    }
}

TEST_F(ApplicationTest, KeepsRunningWhileHelpIsOpen)
{
    launch();
    ASSERT_TRUE(windowHasKeyboard("Velotrine Help"));
    xdotool({"windowactivate", "--sync", window()});
    pressKey("ctrl+w");
    EXPECT_TRUE(windowGoes("Velotrine"));
    EXPECT_FALSE(application->hasEnded());
    xdotool({"windowactivate", "--sync", window("Velotrine Help")});
    pressKey("Escape");
    EXPECT_EQ(end().exitCode, 0);
}

TEST_F(ApplicationTest, TheQuestionMarkOpensHelpAgainAndAgain)
{
    haveSeenHelp();
    launch();
    for (int time = 0; time < 2; ++time) {
        click(480 - 30, menuBarHeight + 22);
        ASSERT_TRUE(windowAppears("Velotrine Help"));
        EXPECT_TRUE(windowHasKeyboard("Velotrine Help"));
        EXPECT_EQ(windowsTitled("Velotrine Help").size(), 1u);
        pressKey("Escape");
        EXPECT_TRUE(windowGoes("Velotrine Help"));
    }
    EXPECT_FALSE(application->hasEnded());
}

TEST_F(ApplicationTest, AModifierThatIsReleasedInAnotherWindowIsNotHeldFromThenOn)
{
    haveSeenHelp();
    launch();
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    const ChildProcess other({"/usr/bin/xev"}, {});
    ASSERT_TRUE(windowAppears("Event Tester"));
    xdotool({"windowactivate", "--sync", window("Velotrine")});
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    // Over the window, it would tell of the keys, too.
    xdotool({"mousemove", "2", "2"});
    xdotool({"keydown", "ctrl"});
    xdotool({"windowactivate", "--sync", window("Event Tester")});
    ASSERT_TRUE(windowHasKeyboard("Event Tester"));
    xdotool({"keyup", "ctrl"});
    xdotool({"windowactivate", "--sync", window("Velotrine")});
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    pressKey("question");
    EXPECT_TRUE(windowAppears("Velotrine Help"));
    pressKey("ctrl+q");
    EXPECT_EQ(end().exitCode, 0);
}

TEST_F(ApplicationTest, HideMinimisesItsWindows)
{
    haveSeenHelp();
    launch();
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    pressKey("ctrl+h");
    EXPECT_TRUE(windowGoes("Velotrine"));
    EXPECT_FALSE(application->hasEnded());
}

TEST_F(ApplicationTest, SaysOnOneLineThatThereIsNoDevice)
{
    haveSeenHelp();
    launch();
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    pressKey("ctrl+q");
    const auto result = end();
    EXPECT_THAT(result.out, testing::MatchesRegex("Engine start error: [^\n]+\n"));
    EXPECT_EQ(result.err, "");
}

TEST_F(ApplicationTest, AnswersHelpAndVersionWithoutAWindow)
{
    const ProcessSurroundings nowhere{.folder = {}, .environment = {{"DISPLAY", ":none"}}, .beforeStart = {}};
    for (const auto* option : {"--help", "--version", "--list-devices"}) {
        const auto result = runProcess({VELOTRINE_HOST_PROGRAM, option}, nowhere);
        EXPECT_EQ(result.exitCode, 0) << option;
    }
    EXPECT_THAT(runProcess({VELOTRINE_HOST_PROGRAM, "--version"}, nowhere).out,
                testing::MatchesRegex("Velotrine [0-9.]+\n"));
}

TEST_F(ApplicationTest, RefusesADeviceThatIsNotThereBeforeItOpensAWindow)
{
    const auto result = runProcess({VELOTRINE_HOST_PROGRAM, "--device", "kazoo"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, testing::HasSubstr("kazoo"));
    EXPECT_EQ(result.out, "");
}

TEST_F(ApplicationTest, StartsNoOtherProgram)
{
    ASSERT_TRUE(std::filesystem::exists("/usr/bin/gsettings")); // or it could not
    haveSeenHelp();
    const auto log = folder.path() / "forks";
    std::ofstream(log).close();
    environment = {{"LD_PRELOAD", VELOTRINE_FORK_COUNTER},
                   {"VELOTRINE_FORK_LOG", log.string()},
                   {"ASAN_OPTIONS", "verify_asan_link_order=0"}}; // its library is not the first then
    launch();
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    pressKey("ctrl+q");
    EXPECT_EQ(end().exitCode, 0);
    std::ostringstream started;
    started << std::ifstream(log).rdbuf();
    EXPECT_EQ(started.str(), "");
}

TEST_F(ApplicationTest, WithoutADisplayItSaysSo)
{
    ProcessSurroundings surroundings;
    surroundings.environment = {{"DISPLAY", ":no-such-display"}};
    const auto result = runProcess({VELOTRINE_HOST_PROGRAM}, surroundings);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, testing::HasSubstr("no display"));
    EXPECT_EQ(result.out, "");
}

} // namespace
} // namespace velotrine
