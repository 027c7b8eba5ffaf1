#pragma once

#include "tests/host/MessageLoop.h"
#include "tests/host/windows/Desktop.h"
#include "tests/render/ChildProcess.h"
#include "tests/render/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

inline constexpr int menuBarHeight = 24;

/// The application itself, of a user who has not seen it before unless the test says so.
class ApplicationTest : public testing::Test
{
protected:
    ~ApplicationTest() override
    {
        if (application && !application->hasEnded())
            application->send(SIGKILL);
    }

    void haveSeenHelp()
    {
        launch();
        ASSERT_TRUE(windowAppears("Velotrine Help"));
        ASSERT_TRUE(windowHasKeyboard("Velotrine Help"));
        pressKey("ctrl+q");
        ASSERT_EQ(end().exitCode, 0);
    }

    void launch()
    {
        ProcessSurroundings surroundings;
        surroundings.environment = environment;
        surroundings.environment.emplace_back("XDG_CONFIG_HOME", folder.path().string());
        application.emplace(std::vector<std::string>{VELOTRINE_HOST_PROGRAM}, surroundings);
        ASSERT_TRUE(windowAppears("Velotrine"));
    }

    [[nodiscard]] bool ends()
    {
        return runMessagesUntil([this] { return application->hasEnded(); }, 10.0);
    }

    ProcessResult end()
    {
        EXPECT_TRUE(ends());
        return application->finish();
    }

    [[nodiscard]] std::string window(const std::string& title = "Velotrine") const
    {
        return windowsTitled(title).at(0);
    }

    /// @param x, y  from the window's content's corner, the menu bar included
    void click(int x, int y)
    {
        xdotool({"mousemove", "--window", window(), std::to_string(x), std::to_string(y)});
        xdotool({"click", "1"});
        runMessagesFor(0.3);
    }

    TemporaryFolder folder;
    std::vector<std::pair<std::string, std::string>> environment; ///< of the application, beside this one's
    std::optional<ChildProcess> application;
};

} // namespace velotrine
