// The application as its user knows it, from the first sound to the last: by mouse and keyboard, seen on its
// display and heard on the test's own sound server.

#include "editor/Colours.h"
#include "editor/RingEditorViewMac.h"
#include "tests/host/JackListener.h"
#include "tests/host/windows/ApplicationTest.h"
#include "tests/support/JackServer.h"

namespace velotrine {
namespace {

using Point = juce::Point<int>;
using Area = juce::Rectangle<int>;

/// @param levels  of 255, which a difference has to exceed
int differingPixels(const juce::Image& one, const juce::Image& other, Area area, int levels = 0)
{
    const auto differs = [levels](juce::Colour a, juce::Colour b) {
        return std::max({std::abs(a.getRed() - b.getRed()), std::abs(a.getGreen() - b.getGreen()),
                         std::abs(a.getBlue() - b.getBlue())}) > levels;
    };
    int count = 0;
    for (int y = area.getY(); y < area.getBottom(); ++y)
        for (int x = area.getX(); x < area.getRight(); ++x)
            count += differs(one.getPixelAt(x, y), other.getPixelAt(x, y)) ? 1 : 0;
    return count;
}

int pixelsOf(const juce::Image& picture, juce::Colour colour, Area area)
{
    int count = 0;
    for (int y = area.getY(); y < area.getBottom(); ++y)
        for (int x = area.getX(); x < area.getRight(); ++x)
            count += picture.getPixelAt(x, y) == colour ? 1 : 0;
    return count;
}

/// The fraction of an area that has a colour. Edges of other things have it here and there by chance.
double coverage(const juce::Image& picture, juce::Colour colour, Area area)
{
    return static_cast<double>(pixelsOf(picture, colour, area)) / (area.getWidth() * area.getHeight());
}

class PlayingApplication : public ApplicationTest
{
protected:
    void SetUp() override { launchForUse(); }

    void click(Point at) { ApplicationTest::click(at.x, at.y); }

    void drag(Point from, Point by) const
    {
        xdotool({"mousemove", "--window", window(), std::to_string(from.x), std::to_string(from.y)});
        xdotool({"mousedown", "1"});
        xdotool({"mousemove_relative", "--sync", "--", std::to_string(by.x), std::to_string(by.y)});
        runMessagesFor(0.1);
        xdotool({"mouseup", "1"});
        runMessagesFor(0.2);
    }

    void choosePresetBelow()
    {
        click({240, menuBarHeight + 22});
        xdotool({"key", "Down", "Return"});
        runMessagesFor(0.4);
    }

    [[nodiscard]] static bool fallsSilent()
    {
        return runMessagesUntil([] { return peakOnJack(0.2) == 0.0f; }, 30.0);
    }

    JackServer server;
    EditorLayout layout = layoutInWindow();
    Area rings = inWindow(layout.rings);
    Area panel = inWindow(layout.ringEditor);
};

TEST_F(PlayingApplication, SoundsFromPlayToStopAndItsHandTurnsOnlyMeanwhile)
{
    const auto stopped = picture();
    EXPECT_EQ(peakOnJack(0.5), 0.0f);
    EXPECT_EQ(differingPixels(stopped, picture(), rings), 0);

    choosePresetBelow();
    EXPECT_GT(differingPixels(stopped, picture(), rings), 100) << "another preset, other spots";
    EXPECT_EQ(peakOnJack(0.3), 0.0f);

    click(inWindow(layout.playButton).getCentre());
    EXPECT_GT(peakOnJack(2.0), 0.01f);
    const auto playing = picture();
    runMessagesFor(0.2);
    EXPECT_GT(differingPixels(playing, picture(), rings), 100);

    pressKey("space");
    EXPECT_TRUE(fallsSilent());
    runMessagesFor(1.0);
    EXPECT_EQ(differingPixels(picture(), picture(), rings), 0);
}

TEST_F(PlayingApplication, LeavesNoTraceOfWhatMovedWhateverItsSize)
{
    const auto id = window();
    // Of points that are a pixel, and of points that are a pixel and a bit.
    for (const auto& [width, height] : {std::pair{480, 428}, {733, 611}, {1007, 797}}) {
        xdotool({"windowsize", "--sync", id, std::to_string(width), std::to_string(height)});
        runMessagesFor(0.5);
        pressKey("space");
        EXPECT_GT(peakOnJack(1.5), 0.01f);
        pressKey("space");
        EXPECT_TRUE(fallsSilent());
        runMessagesFor(1.0);
        const auto painted = picture();
        xdotool({"windowunmap", "--sync", id});
        xdotool({"windowmap", "--sync", id});
        runMessagesFor(0.5);
        // The corners of knobs that begin within a pixel may be a level off.
        EXPECT_EQ(differingPixels(painted, picture(), painted.getBounds(), 2), 0) << width << " x " << height;
    }
}

TEST_F(PlayingApplication, OnlyTheKnobThatIsDraggedTurns)
{
    const auto before = picture();
    drag(inWindow(layout.knobs[2]).getCentre(), {0, -40});
    const auto after = picture();
    for (std::size_t knob = 0; knob < layout.knobs.size(); ++knob) {
        const auto changed = differingPixels(before, after, inWindow(layout.knobs[knob]));
        EXPECT_EQ(changed > 0, knob == 2) << changed << " pixels of knob " << knob;
    }
}

TEST_F(PlayingApplication, ARingsPanelOpensTakesTypingMovesAndCloses)
{
    const auto black = juce::Colours::black;
    const auto closed = picture();
    ASSERT_EQ(pixelsOf(closed, black, rings), 0);

    click(pointOnOutermostRing(rings));
    const auto open = picture();
    EXPECT_GT(coverage(open, colours::panel, panel), 0.5);
    const auto blackBefore = pixelsOf(open, black, rings);
    EXPECT_GT(blackBefore, 100) << "the ring that the panel is about";

    RingEditorViewMac sameSize;
    sameSize.setBounds(panel);
    const auto stepsField = sameSize.field(RingEditorViewMac::steps).getBounds() + panel.getPosition();
    click(stepsField.getCentre());
    xdotool({"type", "16"});
    pressKey("Return");
    EXPECT_GT(pixelsOf(picture(), black, rings), blackBefore * 5 / 4) << "sixteen spots instead of four";

    const Point move(60, 40);
    drag(panel.getPosition().translated(20, 8), move);
    const auto moved = picture();
    EXPECT_GT(coverage(moved, colours::panel, panel + move), 0.5);
    EXPECT_LT(coverage(moved, colours::panel, panel.withHeight(move.y - 1)), 0.01);

    click({panel.getX() + 2, editorTop + 2}); // on nothing
    const auto shut = picture();
    EXPECT_EQ(pixelsOf(shut, black, rings), 0);
    EXPECT_LT(coverage(shut, colours::panel, panel + move), 0.01);
}

class NewUser : public PlayingApplication
{
protected:
    /// With the help in front, as at the very first start.
    void SetUp() override
    {
        launch();
        ASSERT_TRUE(windowAppears("Velotrine Help"));
        ASSERT_TRUE(windowHasKeyboard("Velotrine Help"));
    }

    static void keys(const std::vector<std::string>& names)
    {
        for (const auto& name : names) {
            pressKey(name);
            runMessagesFor(0.1);
        }
    }
};

TEST_F(NewUser, PlaysAndSetsItUpByKeysAlone)
{
    keys({"Escape"});
    ASSERT_TRUE(windowGoes("Velotrine Help"));
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    const auto fresh = picture();

    keys({"Tab", "Down"}); // to the second preset
    EXPECT_GT(differingPixels(fresh, picture(), rings), 100) << "another preset, other spots";
    EXPECT_EQ(peakOnJack(0.3), 0.0f);
    keys({"Tab", "Tab", "Tab", "Tab", "Tab", "Tab"}); // help, root, scale, tempo, its stepper, play
    const auto marked = picture();
    EXPECT_GT(differingPixels(fresh, marked, inWindow(layout.playButton)), 20) << "the keyboard's mark";
    keys({"space"});
    EXPECT_GT(peakOnJack(2.0), 0.01f);

    keys({"Tab", "Tab", "End", "Tab", "Home"}); // the rings, two knobs
    const auto turned = picture();
    for (const auto knob : {0u, 1u, 2u, 3u})
        EXPECT_EQ(differingPixels(marked, turned, inWindow(layout.knobs[knob])) > 0, knob < 2) << knob;
    EXPECT_GT(peakOnJack(1.0), 0.01f) << "it plays on";

    keys({"shift+Tab", "shift+Tab", "Up", "Up", "Return"}); // ring 3
    const auto open = picture();
    EXPECT_GT(coverage(open, colours::panel, panel), 0.5);
    xdotool({"type", "16"});
    keys({"Return", "Escape"});
    const auto shut = picture();
    EXPECT_LT(coverage(shut, colours::panel, panel), 0.01);

    keys({"space"});
    EXPECT_TRUE(fallsSilent());
    keys({"ctrl+q"});
    EXPECT_EQ(end().exitCode, 0);
}

TEST_F(PlayingApplication, ARingsPanelStaysUnderTheMouseThatDragsItInAnEnlargedWindowToo)
{
    constexpr double pixelsPerPoint = 1.5;
    xdotool({"windowsize", "--sync", window(), "960", "856"});
    runMessagesFor(0.5);
    const auto enlarged = layoutInWindow(640, 571 - editorTop);
    const auto inPixels = [](Area points) { return (points.toDouble() * pixelsPerPoint).toNearestInt(); };
    click((pointOnOutermostRing(inWindow(enlarged.rings)).toDouble() * pixelsPerPoint).roundToInt());
    const auto largePanel = inPixels(inWindow(enlarged.ringEditor));
    EXPECT_GT(coverage(picture(), colours::panel, largePanel), 0.5);
    const Point move(90, 60);
    drag(largePanel.getPosition().translated(30, 12), move);
    const auto moved = picture();
    EXPECT_GT(coverage(moved, colours::panel, largePanel.reduced(2) + move), 0.5);
    EXPECT_LT(coverage(moved, colours::panel, largePanel.withHeight(move.y - 3)), 0.01);
    EXPECT_GT(coverage(moved, colours::panel, largePanel.withHeight(8).translated(0, 3) + move), 0.5);
}

TEST_F(PlayingApplication, KeepsPlayingWhileHelpOpensUntilTheApplicationQuits)
{
    pressKey("space");
    EXPECT_GT(peakOnJack(2.0), 0.01f);
    click({480 - 30, menuBarHeight + 22});
    ASSERT_TRUE(windowHasKeyboard("Velotrine Help"));
    EXPECT_GT(peakOnJack(1.0), 0.01f);
    pressKey("Escape");
    ASSERT_TRUE(windowGoes("Velotrine Help"));
    pressKey("ctrl+q");
    const auto result = end();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    EXPECT_LT(peakOnJack(0.2), 0.0f) << "it has left the sound server";
}

} // namespace
} // namespace velotrine
