#include "tests/plugin/ClapHost.h"
#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/Repeatedly.h"
#include "tests/plugin/VirtualDisplay.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

constexpr HostTransport rolling{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};

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

    static void close(ClapHost& host) { gui(host).destroy(&host.plugin()); }

    /// Takes hold of the first knob and turns it up.
    void turnKnob(ClapHost& host) const
    {
        display.act(std::string("mousemove ") + knob + " mousedown 1");
        host.runLoop(50ms);
        display.act("mousemove_relative -- 0 -20 mousemove_relative -- 0 -20");
        host.runLoop(50ms);
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

TEST_F(ClapEditor, ShowsItselfInTheHostsWindow)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    open(host, parent);
    std::uint32_t w = 0;
    std::uint32_t h = 0;
    EXPECT_TRUE(gui(host).get_size(&host.plugin(), &w, &h));
    EXPECT_EQ(w, editorWidth);
    EXPECT_EQ(h, editorHeight);
    host.runLoop(200ms);
    EXPECT_NE(display.childOf(parent), 0u);
    EXPECT_GT(display.coloursIn(parent), manyColours);
    EXPECT_FALSE(host.descriptors.empty());
    close(host);
    EXPECT_TRUE(host.descriptors.empty());
    EXPECT_TRUE(host.timers.empty());
    EXPECT_EQ(display.childOf(parent), 0u);
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

TEST_F(ClapEditor, ShowsItselfTheSecondTimeToo)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    for (int time = 0; time < 2; ++time) {
        open(host, parent);
        host.runLoop(200ms);
        EXPECT_GT(display.coloursIn(parent), manyColours);
        close(host);
    }
}

TEST_F(ClapEditor, OpensAndClosesAnyNumberOfTimesInSeveralInstances)
{
    std::vector<std::unique_ptr<ClapHost>> hosts;
    for (int i = 0; i < 3; ++i)
        hosts.push_back(std::make_unique<ClapHost>(library));
    for (int round = 0; round < 5; ++round) {
        std::vector<XWindow> parents;
        for (auto& host : hosts) {
            parents.push_back(display.makeWindow(editorWidth, editorHeight));
            open(*host, parents.back());
            host->runLoop(20ms);
        }
        for (auto& host : hosts)
            close(*host);
        for (const auto parent : parents)
            display.destroyWindow(parent);
    }
}

TEST_F(ClapEditor, OutlivesTheHostsWindow)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    open(host, parent);
    host.runLoop(100ms);
    display.destroyWindow(parent);
    host.runLoop(100ms);
    gui(host).set_size(&host.plugin(), 700, 500);
    host.runLoop(50ms);
    close(host);

    const auto next = display.makeWindow(700, 500);
    open(host, next);
    host.runLoop(200ms);
    EXPECT_GT(display.coloursIn(next), manyColours);
}

TEST_F(ClapEditor, GoesWithThePluginThoughTheHostForgotToCloseIt)
{
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    {
        ClapHost host(library);
        open(host, parent);
        host.runLoop(50ms);
    }
    EXPECT_EQ(display.childOf(parent), 0u);
}

TEST_F(ClapEditor, FollowsTheHostsWindowAndRemembersItsSize)
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
    host.runLoop(100ms);
    EXPECT_EQ(display.sizeOf(display.childOf(parent)), std::pair(800, 700));
    EXPECT_NE(host.save().find("\"width\": 800"), std::string::npos);

    ClapHost other(library);
    EXPECT_TRUE(other.load(host.save()));
    ASSERT_TRUE(gui(other).create(&other.plugin(), CLAP_WINDOW_API_X11, false));
    EXPECT_TRUE(gui(other).get_size(&other.plugin(), &w, &h));
    EXPECT_EQ(w, 800u);
    EXPECT_EQ(h, 700u);
}

TEST_F(ClapEditor, IsAsManyPixelsAsTheScaleSays)
{
    for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
        ClapHost host(library);
        const auto* const plugin = &host.plugin();
        ASSERT_TRUE(gui(host).create(plugin, CLAP_WINDOW_API_X11, false));
        EXPECT_TRUE(gui(host).set_scale(plugin, scale));
        std::uint32_t w = 0;
        std::uint32_t h = 0;
        EXPECT_TRUE(gui(host).get_size(plugin, &w, &h));
        EXPECT_EQ(w, static_cast<std::uint32_t>(480 * scale));
        EXPECT_EQ(h, static_cast<std::uint32_t>(360 * scale));
        EXPECT_NE(host.save().find("\"width\": 480"), std::string::npos);
        for (const double none : {0.0, -1.0, 1e9, std::nan("")})
            EXPECT_FALSE(gui(host).set_scale(plugin, none));
    }
}

TEST_F(ClapEditor, AKnobTurnedWithTheMouseReachesTheHostAsOneGesture)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    open(host, parent);
    host.runLoop(100ms);
    turnKnob(host);
    host.flush({});
    display.act("mouseup 1");
    host.runLoop(50ms);
    host.flush({});
    EXPECT_GT(host.flushRequests, 0);
    ASSERT_GE(host.told.size(), 3u);
    EXPECT_EQ(host.told.front(), "begin 0");
    EXPECT_EQ(host.told.back(), "end 0");
    EXPECT_EQ(std::ranges::count(host.told, "begin 0"), 1);
    EXPECT_EQ(std::ranges::count(host.told, "end 0"), 1);
    EXPECT_GT(host.value(0), 0.5);
}

TEST_F(ClapEditor, ShowsWhatTheHostSetsAndDoesNotSendItBack)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    open(host, parent);
    host.runLoop(200ms);
    const auto knobPixels = [&] { return display.pixelsOf(parent, knobsLeft); };
    const auto before = knobPixels();
    host.flush({{0, 0, 0.9}});
    host.runLoop(100ms);
    EXPECT_TRUE(knobPixels() != before);
    host.flush({});
    EXPECT_TRUE(host.told.empty());
}

TEST_F(ClapEditor, LeavesTheKeyboardToTheHost)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    display.giveKeyboardTo(parent);
    open(host, parent);
    host.runLoop(100ms);
    // A click on a knob, and then a key with the mouse still above the editor.
    display.act(std::string("mousemove ") + knob + " click 1");
    host.runLoop(100ms);
    display.act("key space");
    host.runLoop(50ms);
    EXPECT_TRUE(display.takeKeyPress(parent));
}

TEST_F(ClapEditor, HasTheKeyboardWhileSomebodyTypesIntoItsTempo)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    display.giveKeyboardTo(parent);
    open(host, parent);
    host.runLoop(100ms);
    display.act(std::string("mousemove ") + tempoField + " click 1");
    host.runLoop(100ms);
    display.act("key ctrl+a type 97.5");
    host.runLoop(100ms);
    EXPECT_FALSE(display.takeKeyPress(parent));
    display.act("key Return");
    host.runLoop(100ms);
    host.flush({});
    EXPECT_EQ(host.told, (std::vector<std::string>{"begin 6", "6 = 97.5", "end 6"}));
    EXPECT_EQ(host.value(6), 97.5);

    display.act(std::string("mousemove ") + knob + " click 1");
    host.runLoop(100ms);
    display.act("key space");
    host.runLoop(50ms);
    EXPECT_TRUE(display.takeKeyPress(parent));
}

TEST_F(ClapEditor, IsOpenWhileItPlaysAndLoadsStates)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.start(48000.0, 512));
    open(host, parent);
    const auto saved = host.save();
    Sound sound(512);
    for (int block = 0; block < 40; ++block) {
        host.process(sound.left.data(), sound.right.data(), 512, rolling,
                     {{0, 9, static_cast<double>(block % 17)}});
        if (block % 10 == 9) {
            EXPECT_TRUE(host.load(saved));
        }
        host.runLoop(5ms);
    }
    EXPECT_GT(display.coloursIn(parent), manyColours);
    EXPECT_TRUE(host.told.empty());
}

TEST_F(ClapEditor, OpensAndClosesWhileItPlaysAndIsSavedAndLoadedOnOtherThreads)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.start(48000.0, 512));
    const auto saved = host.save();
    std::atomic<int> soundingBlocks{0};
    const Repeatedly player([&] {
        Sound sound(512);
        host.process(sound.left.data(), sound.right.data(), 512, rolling, {{40, 0, 0.75}});
        soundingBlocks += sound.isSilent() ? 0 : 1;
        std::this_thread::sleep_for(1ms);
    });
    const Repeatedly keeper([&] {
        EXPECT_FALSE(host.save().empty());
        EXPECT_TRUE(host.load(saved));
        std::this_thread::sleep_for(1ms);
    });
    for (int round = 0; round < 5; ++round) {
        open(host, parent);
        host.runLoop(60ms);
        EXPECT_GT(display.coloursIn(parent), manyColours);
        close(host);
    }
    EXPECT_GT(soundingBlocks, 10);
}

TEST_F(ClapEditor, AKnobIsTurnedWhileTheHostAutomatesOtherControlsOnItsRenderThread)
{
    ClapHost host(library);
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.start(48000.0, 512));
    open(host, parent);
    host.runLoop(100ms);
    {
        const Repeatedly player([&, block = 0]() mutable {
            Sound sound(512);
            const auto id = static_cast<clap_id>(1 + block % 38);
            host.process(sound.left.data(), sound.right.data(), 512, rolling, {{0, id, block % 5 / 4.0}});
            ++block;
            std::this_thread::sleep_for(1ms);
        });
        turnKnob(host);
        display.act("mouseup 1");
        host.runLoop(50ms);
    }
    ASSERT_GE(host.told.size(), 3u);
    EXPECT_EQ(host.told.front(), "begin 0");
    EXPECT_EQ(host.told.back(), "end 0");
    EXPECT_TRUE(std::ranges::all_of(host.told, [](const std::string& edit) {
        return edit == "begin 0" || edit == "end 0" || edit.starts_with("0 = ");
    }));
    EXPECT_GT(host.value(0), 0.5);
}

} // namespace
} // namespace velotrine
