#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/Lv2Host.h"
#include "tests/support/VirtualDisplay.h"

#include <lv2/instance-access/instance-access.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

class Lv2Editor : public testing::Test
{
protected:
    [[nodiscard]] std::vector<unsigned long> knobPixels(XWindow parent) const
    {
        return display.pixelsOf(parent, knobsLeft);
    }

    /// Presses the mouse on the first knob and turns the knob up.
    void turnKnob(Lv2Host& host) const
    {
        display.act(std::string("mousemove ") + knob + " mousedown 1");
        host.idle(50ms);
        display.act("mousemove_relative -- 0 -20 mousemove_relative -- 0 -20");
        host.idle(50ms);
    }

    const VirtualDisplay& display = VirtualDisplay::shared();
    Lv2Library library;
};

TEST_F(Lv2Editor, ShowsItselfInTheHostsWindowAndAsksForItsSize)
{
    Lv2Host host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.openUi(parent));
    EXPECT_EQ(host.wantedSizes, (std::vector<std::pair<int, int>>{{editorWidth, editorHeight}}));
    host.idle(200ms);
    EXPECT_EQ(display.childOf(parent), host.uiWindow);
    EXPECT_GT(display.coloursIn(parent), manyColours);
    host.closeUi();
    EXPECT_EQ(display.childOf(parent), 0u);
    EXPECT_TRUE(host.told.empty());
    EXPECT_TRUE(host.logged.empty());
}

TEST_F(Lv2Editor, IsNotShownInAHostThatLacksWhatItNeedsAndSaysWhy)
{
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    for (const auto* const feature : {LV2_INSTANCE_ACCESS_URI, LV2_UI__parent}) {
        Lv2Host host(library, 48000.0, {feature});
        EXPECT_FALSE(host.openUi(parent));
        ASSERT_EQ(host.logged.size(), 1u);
        EXPECT_TRUE(
            host.logged[0].starts_with("Velotrine: The editor cannot be shown: the host does not offer "))
            << host.logged[0];
    }
}

TEST_F(Lv2Editor, NeedsNeitherResizingNorGesturesNorOptions)
{
    Lv2Host host(library, 48000.0, {LV2_UI__resize, LV2_UI__touch, LV2_OPTIONS__options});
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.openUi(parent));
    host.idle(100ms);
    display.act(std::string("mousemove ") + knob + " mousedown 1 mousemove_relative -- 0 -20");
    host.idle(50ms);
    display.act("mouseup 1");
    host.idle(50ms);
    EXPECT_GT(host.controls[0], 0.5f);
    EXPECT_TRUE(std::ranges::all_of(host.told, [](const auto& edit) { return edit.starts_with("0 = "); }));
}

TEST_F(Lv2Editor, BoundsTheHostsResizeAndAsksForTheSavedSize)
{
    Lv2Host host(library);
    const auto parent = display.makeWindow(800, 700);
    ASSERT_TRUE(host.openUi(parent));
    for (const auto& [wanted, given] : {std::pair{std::pair{10, 10}, std::pair{360, 320}},
                                        {{100000, 100000}, {1600, 1200}},
                                        {{800, 700}, {800, 700}}}) {
        EXPECT_TRUE(host.resizeUi(wanted.first, wanted.second));
        host.idle(100ms);
        EXPECT_EQ(display.sizeOf(host.uiWindow), given);
    }
    EXPECT_NE(host.save().find("\"width\": 800"), std::string::npos);

    Lv2Host other(library);
    EXPECT_EQ(other.restore(host.save()), LV2_STATE_SUCCESS);
    ASSERT_TRUE(other.openUi(parent));
    EXPECT_EQ(other.wantedSizes.back(), std::pair(800, 700));
}

TEST_F(Lv2Editor, FollowsAHostThatResizesItsWindowWithoutAsking)
{
    Lv2Host host(library);
    const auto parent = display.makeWindow(900, 800);
    ASSERT_TRUE(host.openUi(parent));
    host.idle(100ms);
    display.resizeWindow(host.uiWindow, 880, 780);
    host.idle(200ms);
    EXPECT_EQ(display.sizeOf(host.uiWindow), std::pair(880, 780));
    EXPECT_NE(host.save().find("\"width\": 880"), std::string::npos);
    EXPECT_NE(host.save().find("\"height\": 780"), std::string::npos);
    // The knobs are where the right edge is now.
    display.act("mousemove 832 62 click 5");
    host.idle(100ms);
    EXPECT_LT(host.controls[0], 0.5f);
    // A window smaller than the editor can be cuts it off.
    display.resizeWindow(host.uiWindow, 100, 100);
    host.idle(100ms);
    EXPECT_EQ(display.sizeOf(host.uiWindow), std::pair(100, 100));
    EXPECT_NE(host.save().find("\"width\": 360"), std::string::npos);
}

TEST_F(Lv2Editor, AsksForItsSizeAtEveryScaleAndPassesOverAScaleThatNoScreenHas)
{
    const auto parent = display.makeWindow(1500, 1100);
    for (const float scale : {1.0f, 1.5f, 2.0f, 3.0f}) {
        Lv2Host host(library);
        ASSERT_TRUE(host.openUi(parent, scale));
        EXPECT_EQ(host.wantedSizes.back(),
                  std::pair(static_cast<int>(480 * scale), static_cast<int>(360 * scale)));
        host.idle(50ms);
        EXPECT_EQ(display.sizeOf(host.uiWindow), host.wantedSizes.back());
        EXPECT_NE(host.save().find("\"width\": 480"), std::string::npos);
    }
    for (const float none : {0.0f, -1.0f, 1e9f, std::numeric_limits<float>::quiet_NaN()}) {
        Lv2Host host(library);
        ASSERT_TRUE(host.openUi(parent, none));
        EXPECT_EQ(host.wantedSizes.back(), std::pair(480, 360)) << none;
    }
}

TEST_F(Lv2Editor, PortAndInstrumentAgreeAfterAGesture)
{
    Lv2Host host(library);
    host.start();
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.openUi(parent));
    host.idle(100ms);
    turnKnob(host);
    display.act("mouseup 1");
    host.idle(100ms);
    ASSERT_GE(host.told.size(), 3u);
    EXPECT_EQ(host.told.front(), "begin 0");
    EXPECT_EQ(host.told.back(), "end 0");
    EXPECT_GT(host.controls[0], 0.5f);
    // A host that reads the value back and sets it changes nothing.
    const auto saved = host.save();
    Lv2Host other(library);
    other.start();
    other.controls = host.controls;
    other.runUnheard(32);
    EXPECT_EQ(other.save(), saved);
}

TEST_F(Lv2Editor, AControlThatIsHeldDoesNotFollowTheHost)
{
    Lv2Host host(library);
    host.start();
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.openUi(parent));
    host.idle(100ms);
    turnKnob(host);
    const auto turned = host.save();
    // A host that is late shows what the editor wrote some moments ago.
    host.controls[0] = 0.55f;
    host.idle(50ms);
    EXPECT_EQ(host.save(), turned);
    display.act("mouseup 1");
    host.idle(50ms);
    host.controls[0] = 0.125f;
    host.idle(50ms);
    EXPECT_NE(host.save().find("0.125"), std::string::npos);
}

TEST_F(Lv2Editor, AHeldControlFollowsTheHostAgainOnceTheEditorIsClosed)
{
    Lv2Host host(library);
    host.start();
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.openUi(parent));
    host.idle(100ms);
    turnKnob(host);
    ASSERT_EQ(std::ranges::count(host.told, "begin 0"), 1);
    ASSERT_EQ(std::ranges::count(host.told, "end 0"), 0);
    host.closeUi();
    display.act("mouseup 1");
    EXPECT_EQ(host.told.back(), "end 0");
    host.controls[0] = 0.125f;
    host.runUnheard(32);
    EXPECT_NE(host.save().find("0.125"), std::string::npos);
}

TEST_F(Lv2Editor, ShowsThePortsOfAHostThatDoesNotRunThePlugin)
{
    Lv2Host host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.openUi(parent));
    host.idle(200ms);
    const auto before = knobPixels(parent);
    host.showPort(0, 0.9f);
    host.showPort(parameterCount, 1.0f);
    host.showPort(4000000000U, 1.0f);
    host.showPort(1, std::numeric_limits<float>::quiet_NaN());
    host.idle(100ms);
    EXPECT_TRUE(knobPixels(parent) != before);
    EXPECT_TRUE(host.told.empty());
}

TEST_F(Lv2Editor, WritesARestoredStateToPortsThatStillShowTheOldValues)
{
    Lv2Host first(library);
    first.start();
    first.controls[7] = 0.25f;
    first.runUnheard(32);
    const auto saved = first.save();

    Lv2Host host(library);
    host.start();
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.openUi(parent));
    host.idle(50ms);
    ASSERT_EQ(host.restore(saved), LV2_STATE_SUCCESS);
    host.idle(100ms);
    EXPECT_EQ(host.told, std::vector<std::string>{"7 = 0.25"});
    EXPECT_EQ(host.save(), saved);
    host.closeUi();
    ASSERT_TRUE(host.openUi(parent));
    host.idle(100ms);
    EXPECT_EQ(host.told.size(), 1u);
}

TEST_F(Lv2Editor, DoesNotWriteBoundedValuesBackToThePorts)
{
    Lv2Host host(library);
    host.start();
    host.controls[9] = 4.4f; // spots
    host.controls[7] = 1.5f; // volume
    host.runUnheard(32);
    ASSERT_EQ(host.restore(host.save()), LV2_STATE_SUCCESS);
    ASSERT_TRUE(host.openUi(display.makeWindow(editorWidth, editorHeight)));
    host.idle(100ms);
    EXPECT_TRUE(host.told.empty());
}

} // namespace
} // namespace velotrine
