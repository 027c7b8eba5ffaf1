#include "tests/plugin/ClapHost.h"
#include "tests/plugin/EditorPlaces.h"
#include "tests/support/VirtualDisplay.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

class ClapEditor : public testing::Test
{
protected:
    static const clap_plugin_gui_t& gui(const ClapHost& host)
    {
        return host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
    }

    static void open(ClapHost& host, XWindow parent)
    {
        const auto* const plugin = &host.plugin();
        ASSERT_TRUE(gui(host).create(plugin, CLAP_WINDOW_API_X11, false));
        clap_window_t window{};
        window.api = CLAP_WINDOW_API_X11;
        window.x11 = parent;
        ASSERT_TRUE(gui(host).set_parent(plugin, &window));
        ASSERT_TRUE(gui(host).show(plugin));
    }

    const VirtualDisplay& display = VirtualDisplay::shared();
    ClapLibrary library;
};

TEST_F(ClapEditor, SaysWhatItCanDo)
{
    ClapHost host(library);
    const auto* const plugin = &host.plugin();
    EXPECT_TRUE(gui(host).is_api_supported(plugin, CLAP_WINDOW_API_X11, false));
    EXPECT_FALSE(gui(host).is_api_supported(plugin, CLAP_WINDOW_API_X11, true));
    EXPECT_FALSE(gui(host).is_api_supported(plugin, CLAP_WINDOW_API_WIN32, false));
    const char* api = nullptr;
    bool isFloating = true;
    EXPECT_TRUE(gui(host).get_preferred_api(plugin, &api, &isFloating));
    EXPECT_STREQ(api, CLAP_WINDOW_API_X11);
    EXPECT_FALSE(isFloating);
    EXPECT_FALSE(gui(host).create(plugin, CLAP_WINDOW_API_X11, true));
    EXPECT_FALSE(gui(host).show(plugin));
    clap_window_t window{};
    EXPECT_FALSE(gui(host).set_parent(plugin, &window));
}

TEST_F(ClapEditor, LeavesTheHostNothingToWatchOnceItIsClosed)
{
    ClapHost host(library);
    open(host, display.makeWindow(editorWidth, editorHeight));
    EXPECT_FALSE(host.descriptors.empty());
    EXPECT_FALSE(host.timers.empty());
    gui(host).destroy(&host.plugin());
    EXPECT_TRUE(host.descriptors.empty());
    EXPECT_TRUE(host.timers.empty());
}

TEST_F(ClapEditor, SendsEditsAndNotesInTheOrderOfTheirFrames)
{
    ClapHost host(library);
    open(host, display.makeWindow(editorWidth, editorHeight));
    host.runLoop(100ms);
    display.act(std::string("mousemove ") + knob + " click 5");
    host.runLoop(50ms);
    ASSERT_TRUE(host.start(48000.0, 48000));
    Sound sound(48000);
    const HostTransport rolling{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};
    host.process(sound.left.data(), sound.right.data(), 48000, rolling);
    EXPECT_FALSE(host.notes.empty());
    EXPECT_FALSE(host.told.empty());
    EXPECT_TRUE(std::ranges::is_sorted(host.eventFrames));
}

TEST_F(ClapEditor, AsksForAFlushWhereNothingRenders)
{
    ClapHost host(library);
    open(host, display.makeWindow(editorWidth, editorHeight));
    host.runLoop(100ms);
    display.act(std::string("mousemove ") + knob + " click 5");
    host.runLoop(50ms);
    EXPECT_GT(host.flushRequests, 0);
    EXPECT_TRUE(host.told.empty());
    host.flush({});
    EXPECT_FALSE(host.told.empty());
}

TEST_F(ClapEditor, DoesNotReportALoadedStateAsEdits)
{
    ClapHost first(library);
    first.flush({{0, 7, 0.25}});
    ClapHost host(library);
    open(host, display.makeWindow(editorWidth, editorHeight));
    host.runLoop(50ms);
    ASSERT_TRUE(host.load(first.save()));
    host.runLoop(100ms);
    host.flush({});
    EXPECT_EQ(host.value(7), 0.25);
    EXPECT_TRUE(host.told.empty());
}

TEST_F(ClapEditor, ShowsItselfInAHostThatOnlyHasTimers)
{
    ClapHost host(library);
    host.watchesDescriptors = false;
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    open(host, parent);
    host.runLoop(300ms);
    EXPECT_TRUE(host.descriptors.empty());
    EXPECT_GT(display.coloursIn(parent), manyColours);
}

TEST_F(ClapEditor, ClosesWithThePluginIfTheHostForgotTo)
{
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    {
        ClapHost host(library);
        open(host, parent);
        host.runLoop(50ms);
    }
    EXPECT_EQ(display.childOf(parent), 0u);
}

TEST_F(ClapEditor, SaysWhichSizesItCanHaveAndThatItsSizeIsSaved)
{
    ClapHost host(library);
    const auto* const plugin = &host.plugin();
    const auto parent = display.makeWindow(800, 700);
    open(host, parent);
    EXPECT_TRUE(gui(host).can_resize(plugin));
    std::uint32_t w = 10;
    std::uint32_t h = 10;
    EXPECT_TRUE(gui(host).adjust_size(plugin, &w, &h));
    EXPECT_EQ(w, 360u);
    EXPECT_EQ(h, 320u);
    w = h = 4000000000U;
    EXPECT_TRUE(gui(host).adjust_size(plugin, &w, &h));
    EXPECT_EQ(w, 1600u);
    EXPECT_EQ(h, 1200u);
    EXPECT_TRUE(gui(host).set_size(plugin, 800, 700));
    EXPECT_EQ(host.dirtyMarks, 1);
    EXPECT_TRUE(gui(host).get_size(plugin, &w, &h));
    EXPECT_EQ(w, 800u);
    EXPECT_EQ(h, 700u);
}

TEST_F(ClapEditor, ThrownDiceMarkTheSessionAsChanged)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    open(host, parent);
    host.runLoop(500ms);
    display.act(std::string("mousemove ") + bareGround + " click 3");
    host.runLoop(500ms);
    display.act("key Up key Up key Up key Return"); // above the presets and the switch
    for (int i = 0; i < 500 && host.dirtyMarks == 0; ++i)
        host.runLoop(10ms);
    EXPECT_EQ(host.dirtyMarks, 1);
}

TEST_F(ClapEditor, TellsItsSizeAtEveryScaleAndRefusesAScaleThatNoScreenHas)
{
    for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
        ClapHost host(library);
        const auto* const plugin = &host.plugin();
        ASSERT_TRUE(gui(host).create(plugin, CLAP_WINDOW_API_X11, false));
        EXPECT_TRUE(gui(host).set_scale(plugin, scale));
        for (const double none : {0.0, -1.0, 1e9, std::nan("")})
            EXPECT_FALSE(gui(host).set_scale(plugin, none));
        std::uint32_t w = 0;
        std::uint32_t h = 0;
        EXPECT_TRUE(gui(host).get_size(plugin, &w, &h));
        EXPECT_EQ(w, static_cast<std::uint32_t>(editorWidth * scale));
        EXPECT_EQ(h, static_cast<std::uint32_t>(editorHeight * scale));
    }
}

} // namespace
} // namespace velotrine
