// How large the application is, in pixels, on desktops that want things larger, and when it is enlarged.

#include "host/DesktopScale.h"
#include "host/MainMenu.h"
#include "host/MainWindow.h"
#include "tests/host/XSettingsText.h"
#include "tests/host/windows/ApplicationTest.h"
#include "tests/host/windows/SettingsManager.h"

namespace velotrine {
namespace {

constexpr int width = 480;
constexpr int height = 404 + menuBarHeight;

/// The X server's resources, as they are set for a session.
class Resources
{
public:
    explicit Resources(const std::string& text)
    {
        xprop({"-f", "RESOURCE_MANAGER", "8s", "-set", "RESOURCE_MANAGER", text});
    }

    ~Resources() { xprop({"-remove", "RESOURCE_MANAGER"}); }

    Resources(const Resources&) = delete;
    Resources& operator=(const Resources&) = delete;

private:
    static void xprop(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"/usr/bin/xprop", "-root"});
        EXPECT_EQ(runProcess(arguments).exitCode, 0);
    }
};

class ScaledApplication : public ApplicationTest
{
protected:
    void SetUp() override { haveSeenHelp(); }

    void launchScaled(const std::vector<std::string>& options = {})
    {
        launch(options);
        ASSERT_TRUE(windowHasKeyboard("Velotrine"));
        runMessagesFor(0.3);
    }

    void expectScale(double scale) const
    {
        EXPECT_EQ(boundsOfWindow(window()).getWidth(), juce::roundToInt(scale * width));
        EXPECT_EQ(boundsOfWindow(window()).getHeight(), juce::roundToInt(scale * height));
    }
};

TEST_F(ScaledApplication, IsUnscaledWhereNothingAsksForMore)
{
    launchScaled();
    expectScale(1.0);
}

TEST_F(ScaledApplication, FollowsTheFactorOfTheSettingsManagerOnce)
{
    const SettingsManager manager(
        XSettingsText().integer("Gdk/WindowScalingFactor", 2).integer("Xft/DPI", 192 * 1024).bytes());
    launchScaled();
    expectScale(2.0);
}

TEST_F(ScaledApplication, FollowsTheDpiOfTheSettingsManager)
{
    const SettingsManager manager(
        XSettingsText().integer("Gdk/WindowScalingFactor", 1).integer("Xft/DPI", 144 * 1024).bytes());
    launchScaled();
    expectScale(1.5);
}

TEST_F(ScaledApplication, FollowsTheResources)
{
    const Resources resources("Xft.dpi:\t192\n");
    launchScaled();
    expectScale(2.0);
}

TEST_F(ScaledApplication, FollowsTheVariable)
{
    environment = {{"GDK_SCALE", "2"}};
    launchScaled();
    expectScale(2.0);
}

TEST_F(ScaledApplication, TheSettingsManagerOverridesTheResourcesAndTheyTheVariable)
{
    const Resources resources("Xft.dpi: 120\n");
    environment = {{"GDK_SCALE", "2"}};
    launchScaled();
    expectScale(1.25);
    pressKey("ctrl+q");
    ASSERT_TRUE(ends());

    const SettingsManager manager(XSettingsText().integer("Xft/DPI", 168 * 1024).bytes());
    launchScaled();
    expectScale(1.75);
}

TEST_F(ScaledApplication, TheOptionOverridesAll)
{
    const SettingsManager manager(XSettingsText().integer("Gdk/WindowScalingFactor", 2).bytes());
    const Resources resources("Xft.dpi: 192\n");
    environment = {{"GDK_SCALE", "2"}};
    launchScaled({"--scale", "1.5"});
    expectScale(1.5);
}

TEST_F(ScaledApplication, GetsNoSmallerThanItsScaledSizeAndItsControlsAreWhereTheyLook)
{
    launchScaled({"--scale=2"});
    xdotool({"windowsize", window(), "100", "100"});
    runMessagesFor(0.5);
    expectScale(2.0);
    click(2 * (width - 36), 2 * (menuBarHeight + 22)); // "?"
    EXPECT_TRUE(windowAppears("Velotrine Help"));
}

TEST_F(ScaledApplication, ItsMenusAreScaledLikeTheWindow)
{
    const auto menuSize = [this](const std::string& scale) {
        launchScaled({"--scale", scale});
        const auto points = std::stoi(scale);
        click(points * 240, points * (menuBarHeight + 22)); // the presets
        EXPECT_TRUE(windowAppears("menu"));
        const auto bounds = boundsOfWindow(windowsTitled("menu").at(0));
        pressKey("Escape");
        EXPECT_TRUE(windowGoes("menu"));
        pressKey("ctrl+q");
        EXPECT_TRUE(ends());
        return bounds;
    };
    const auto plain = menuSize("1");
    const auto large = menuSize("2");
    EXPECT_NEAR(large.getWidth(), 2 * plain.getWidth(), 2);
    EXPECT_NEAR(large.getHeight(), 2 * plain.getHeight(), 2);
}

/// A main window with a menu and a box that opens another.
class EnlargedWindow : public testing::Test
{
protected:
    EnlargedWindow()
    {
        box.addItem("One", 1);
        box.setBounds(10, 10, 200, 28);
        content.addAndMakeVisible(box);
        window.setMenuBar(&menu);
        window.setContentSize(width, height - menuBarHeight);
        window.setMinimumContentSize(width, height - menuBarHeight);
        window.show();
        EXPECT_TRUE(windowHasKeyboard("Enlarged"));
        runMessagesFor(0.3);
    }

    /// Drags the window's edge to a size: asks for it until it has come, for the toolkit may miss one while
    /// the window manager is still busy with the window.
    /// @return whether the content, in points, comes to have this size
    bool contentAt(int windowWidth, int windowHeight, int contentWidth, int contentHeight)
    {
        const auto number = windowsTitled("Enlarged").at(0);
        for (int tries = 0; tries < 10; ++tries) {
            xdotool({"windowsize", number, std::to_string(windowWidth), std::to_string(windowHeight)});
            if (runMessagesUntil(
                    [&] {
                        return content.getWidth() == contentWidth && content.getHeight() == contentHeight;
                    },
                    1.0))
                return true;
        }
        return false;
    }

    /// Of a menu that the box opens, in pixels.
    int menuHeight()
    {
        box.showPopup();
        EXPECT_TRUE(windowAppears("menu"));
        const auto pixels = boundsOfWindow(windowsTitled("menu").at(0)).getHeight();
        box.hidePopup();
        EXPECT_TRUE(windowGoes("menu"));
        return pixels;
    }

    juce::ComboBox box;
    juce::Component content;
    MainMenu menu{{}};
    MainWindow window{"Enlarged", juce::Colours::black, content};
};

TEST_F(EnlargedWindow, GrowsInPointsUntilItIsHalfAsLargeAgainAndThenThePointsGrowToo)
{
    EXPECT_TRUE(contentAt(700, 600, 700, 600 - menuBarHeight));
    EXPECT_TRUE(contentAt(720, 642, 576, 514 - menuBarHeight)) << "a point is 1.25 pixels";
    EXPECT_TRUE(contentAt(960, 856, 640, 571 - menuBarHeight)) << "1.5 pixels";
    EXPECT_TRUE(contentAt(480, 428, 480, 404)) << "and 1 again";
}

TEST_F(EnlargedWindow, StretchingOneSideAloneEnlargesNothing)
{
    EXPECT_TRUE(contentAt(1200, 428, 1200, 404));
    EXPECT_TRUE(contentAt(480, 900, 480, 900 - menuBarHeight));
}

TEST_F(EnlargedWindow, ItsMenusGrowWithIt)
{
    const auto before = menuHeight();
    ASSERT_TRUE(contentAt(960, 856, 640, 571 - menuBarHeight));
    EXPECT_NEAR(menuHeight(), 1.5 * before, 2);
}

} // namespace
} // namespace velotrine
