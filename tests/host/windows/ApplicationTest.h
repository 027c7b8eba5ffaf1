#pragma once

#include "editor/EditorLayout.h"
#include "editor/FontLoader.h"
#include "tests/host/windows/Desktop.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <csignal>
#include <numbers>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

inline constexpr int menuBarHeight = 24;
inline constexpr int editorTop = menuBarHeight + 44; ///< below the bar with the presets

/// Where the editor's controls are in the application's window, new unless another size is given.
/// @param width, height  of the editor, in points
inline EditorLayout layoutInWindow(double width = 480.0, double height = 360.0)
{
    registerDisplayFont();
    return layOutEditor(width, height, [](std::string_view text, double fontSize) {
        return static_cast<double>(
            displayFont(static_cast<float>(fontSize)).getStringWidthFloat(std::string(text)));
    });
}

inline juce::Rectangle<int> inWindow(const juce::Rectangle<double>& inEditor)
{
    return inEditor.toNearestInt().translated(0, editorTop);
}

/// On the outermost ring, between two spots of the preset "Default", at the lower right.
inline juce::Point<int> pointOnOutermostRing(juce::Rectangle<int> rings)
{
    const auto radius = rings.getWidth() / 2.0 - 16.0;
    const auto diagonal = static_cast<int>(std::lround(radius / std::numbers::sqrt2));
    return rings.getCentre().translated(diagonal, diagonal);
}

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

    void launch(const std::vector<std::string>& options = {})
    {
        std::vector<std::string> commandLine{VELOTRINE_HOST_PROGRAM};
        commandLine.insert(commandLine.end(), options.begin(), options.end());
        ProcessSurroundings surroundings;
        surroundings.environment = environment;
        surroundings.environment.emplace_back("XDG_CONFIG_HOME", folder.path().string());
        surroundings.environment.emplace_back("XDG_STATE_HOME", folder.file("state"));
        application.emplace(commandLine, surroundings);
        ASSERT_TRUE(windowAppears("Velotrine"));
    }

    /// As on every start but the first.
    void launchForUse()
    {
        haveSeenHelp();
        launch();
        ASSERT_TRUE(windowHasKeyboard("Velotrine"));
        runMessagesFor(0.3);
    }

    [[nodiscard]] bool ends()
    {
        return runMessagesUntil([this] { return application->hasEnded(); }, 10.0);
    }

    ProcessResult end()
    {
        const bool endsByItself = ends();
        EXPECT_TRUE(endsByItself);
        if (!endsByItself)
            application->send(SIGKILL);
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

    /// Turns knobs and chooses presets, for a while.
    void turnThings(double seconds)
    {
        std::mt19937 random(7);
        const auto any = [&random](int below) {
            return std::uniform_int_distribution<int>(0, below - 1)(random);
        };
        const auto layout = layoutInWindow();
        const auto knobs = std::array{layout.knobs[0], layout.knobs[1], layout.knobs[2], layout.knobs[3]};
        const auto start = juce::Time::getMillisecondCounterHiRes();
        while (juce::Time::getMillisecondCounterHiRes() - start < 1000.0 * seconds) {
            const auto knob = inWindow(knobs[static_cast<std::size_t>(any(4))]).getCentre();
            xdotool({"mousemove", "--window", window(), std::to_string(knob.x), std::to_string(knob.y)});
            for (int step = 0; step < 10; ++step)
                xdotool({"click", any(2) == 0 ? "4" : "5"});
            if (any(8) == 0) {
                click(240, menuBarHeight + 22);
                xdotool({"key", "Down", "Return"});
            }
        }
        xdotool({"mousemove", "1", "1"});
    }

    [[nodiscard]] juce::Image picture() const
    {
        xdotool({"mousemove", "1", "1"}); // or the control below it would look touched
        runMessagesFor(0.2);
        const auto file = folder.path() / "window.png";
        const auto result =
            runProcess({"/usr/bin/import", "-window", window(), "-depth", "8", "PNG24:" + file.string()});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return juce::ImageFileFormat::loadFrom(juce::File(file.string()));
    }

    TemporaryFolder folder;
    std::vector<std::pair<std::string, std::string>> environment; ///< of the application, beside this one's
    std::optional<ChildProcess> application;
};

} // namespace velotrine
