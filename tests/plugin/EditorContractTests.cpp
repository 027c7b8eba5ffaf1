#include "plugin/ThreadChecks.h"
#include "tests/plugin/EditorInUse.h"
#include "tests/plugin/PluginContract.h"
#include "tests/plugin/Repeatedly.h"
#include "tests/support/ForkCounter.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

template <typename Plugin>
class EditorContract : public testing::Test
{
protected:
    EditorContract() { display.giveKeyboardTo(parent); }

    ~EditorContract() override { display.act("mousemove 1500 1100"); }

    [[nodiscard]] bool waitFor(PluginUnderTest& plugin, const std::function<bool()>& condition) const
    {
        for (int i = 0; i < 1000 && !condition(); ++i)
            plugin.runLoop(10ms);
        return condition();
    }

    const VirtualDisplay& display = VirtualDisplay::shared();
    const XWindow parent = display.makeWindow(editorWidth, editorHeight);
};

TYPED_TEST_SUITE(EditorContract, EveryFormat, FormatNames);

/// Whether the edits are one gesture of one parameter, with at least one value in it.
testing::AssertionResult isOneGesture(const std::vector<std::string>& edits, int parameter)
{
    const auto name = std::to_string(parameter);
    const auto isValue = [&name](const std::string& edit) { return edit.starts_with(name + " = "); };
    if (edits.size() >= 3 && edits.front() == "begin " + name && edits.back() == "end " + name &&
        std::all_of(edits.begin() + 1, edits.end() - 1, isValue))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << testing::PrintToString(edits);
}

TYPED_TEST(EditorContract, ShowsItselfInTheHostsWindowWithoutAWindowManager)
{
    TypeParam plugin;
    {
        EditorInUse editor(plugin, this->parent);
        EXPECT_TRUE(editor.shows());
        const auto child = this->display.childOf(this->parent);
        EXPECT_EQ(this->display.sizeOf(child), std::pair(int{editorWidth}, int{editorHeight}));
    }
    EXPECT_EQ(this->display.childOf(this->parent), 0u);
    EXPECT_TRUE(plugin.edits().empty());
}

TYPED_TEST(EditorContract, ShowsItselfTheSecondTimeToo)
{
    TypeParam plugin;
    for (int time = 0; time < 2; ++time) {
        EditorInUse editor(plugin, this->parent);
        EXPECT_TRUE(editor.shows());
    }
}

TYPED_TEST(EditorContract, OpensAndClosesAnyNumberOfTimesInSeveralInstances)
{
    std::vector<std::unique_ptr<TypeParam>> plugins(3);
    for (auto& plugin : plugins)
        plugin = std::make_unique<TypeParam>();
    for (int round = 0; round < 5; ++round) {
        std::vector<XWindow> parents;
        parents.reserve(plugins.size());
        for (auto& plugin : plugins) {
            parents.push_back(this->display.makeWindow(editorWidth, editorHeight));
            ASSERT_TRUE(plugin->openEditor(parents.back()));
            plugin->runLoop(20ms);
        }
        for (auto& plugin : plugins) {
            plugin->runLoop(20ms);
            plugin->closeEditor();
        }
        for (const auto window : parents)
            this->display.destroyWindow(window);
    }
}

TYPED_TEST(EditorContract, OutlivesTheHostsWindow)
{
    TypeParam plugin;
    const auto window = this->display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(plugin.openEditor(window));
    plugin.runLoop(100ms);
    this->display.destroyWindow(window);
    plugin.runLoop(100ms);
    plugin.resizeEditor(700, 500);
    plugin.runLoop(50ms);
    plugin.closeEditor();

    EditorInUse again(plugin, this->display.makeWindow(700, 500));
    EXPECT_TRUE(again.shows());
}

TYPED_TEST(EditorContract, ClosesRightAfterTheHostsWindowIsGone)
{
    for (int round = 0; round < 5; ++round) {
        TypeParam plugin;
        const auto window = this->display.makeWindow(editorWidth, editorHeight);
        ASSERT_TRUE(plugin.openEditor(window));
        plugin.runLoop(20ms);
        this->display.destroyWindow(window);
        plugin.closeEditor();
    }
}

TYPED_TEST(EditorContract, DoesNotEndAHostWhoseWindowIsAlreadyGone)
{
    TypeParam plugin;
    const auto gone = this->display.makeWindow(editorWidth, editorHeight);
    this->display.destroyWindow(gone);
    if (plugin.openEditor(gone))
        plugin.runLoop(50ms);
    plugin.closeEditor();
    EditorInUse again(plugin, this->parent);
    EXPECT_TRUE(again.shows());
}

TYPED_TEST(EditorContract, FollowsTheHostsResizeAndRemembersTheSize)
{
    const auto window = this->display.makeWindow(800, 700);
    const auto size = [&] { return this->display.sizeOf(this->display.childOf(window)); };
    TypeParam plugin;
    ASSERT_TRUE(plugin.openEditor(window));
    const auto resizedTo = [&](std::pair<int, int> wanted, std::pair<int, int> given) {
        return plugin.resizeEditor(wanted.first, wanted.second) &&
               this->waitFor(plugin, [&] { return size() == given; });
    };
    EXPECT_TRUE(resizedTo({10, 10}, {360, 320}));
    EXPECT_TRUE(resizedTo({600, 500}, {600, 500}));
    EXPECT_TRUE(resizedTo({800, 700}, {800, 700}));
    const auto saved = plugin.save();
    EXPECT_NE(saved.find("\"width\": 800"), std::string::npos);
    EXPECT_NE(saved.find("\"height\": 700"), std::string::npos);
    plugin.closeEditor();

    TypeParam other;
    EXPECT_TRUE(other.load(saved));
    ASSERT_TRUE(other.openEditor(window));
    EXPECT_TRUE(this->waitFor(other, [&] { return size() == std::pair(800, 700); }));
}

TYPED_TEST(EditorContract, AKnobTurnedWithTheMouseReachesTheHostAsOneGesture)
{
    TypeParam plugin;
    EditorInUse editor(plugin, this->parent);
    ASSERT_TRUE(editor.shows());
    editor.turnKnob();
    editor.act("mouseup 1");
    EXPECT_TRUE(
        editor.comesTrue([&] { return !plugin.edits().empty() && plugin.edits().back() == "end 0"; }));
    EXPECT_TRUE(isOneGesture(plugin.edits(), 0));
    EXPECT_GT(plugin.value(0), 0.5);
}

TYPED_TEST(EditorContract, AnEditorThatIsClosedEndsTheGestureThatItWasIn)
{
    TypeParam plugin;
    {
        EditorInUse editor(plugin, this->parent);
        ASSERT_TRUE(editor.shows());
        editor.turnKnob();
        ASSERT_TRUE(editor.comesTrue([&] { return plugin.edits().size() >= 2; }));
        EXPECT_EQ(std::ranges::count(plugin.edits(), "end 0"), 0);
    }
    this->display.act("mouseup 1");
    EditorInUse again(plugin, this->parent);
    EXPECT_TRUE(again.comesTrue([&] { return plugin.edits().back() == "end 0"; }));
    EXPECT_TRUE(isOneGesture(plugin.edits(), 0));
}

TYPED_TEST(EditorContract, ATypedTempoReachesTheHostAsOneGesture)
{
    TypeParam plugin;
    EditorInUse editor(plugin, this->parent);
    ASSERT_TRUE(editor.shows());
    ASSERT_TRUE(editor.type(tempoField, "97.5"));
    EXPECT_TRUE(plugin.edits().empty());
    editor.act("key Return");
    EXPECT_TRUE(
        editor.comesTrue([&] { return !plugin.edits().empty() && plugin.edits().back() == "end 6"; }));
    EXPECT_TRUE(isOneGesture(plugin.edits(), 6));
    EXPECT_EQ(plugin.edits().size(), 3u);
    EXPECT_NEAR(plugin.value(6), 97.5, 1e-5);
}

TYPED_TEST(EditorContract, ShowsWhatTheHostSetsAndDoesNotSendItBack)
{
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    EditorInUse editor(plugin, this->parent);
    ASSERT_TRUE(editor.shows());
    plugin.runLoop(200ms);
    const auto knobPixels = [&] { return this->display.pixelsOf(this->parent, knobsLeft); };
    const auto before = knobPixels();
    plugin.setValue(0, 0.9);
    playedBy(plugin, 512);
    EXPECT_TRUE(editor.comesTrue([&] { return knobPixels() != before; }));
    playedBy(plugin, 512);
    EXPECT_TRUE(plugin.edits().empty());
}

TYPED_TEST(EditorContract, IsOpenWhileItPlaysAndLoadsStates)
{
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    EditorInUse editor(plugin, this->parent);
    const auto saved = plugin.save();
    for (int block = 0; block < 40; ++block) {
        plugin.setValue(addressOf(RingParameter::spots, 0), block % 17);
        EXPECT_TRUE(playedBy(plugin, 512, rolling).isInBounds());
        if (block % 10 == 9) {
            EXPECT_TRUE(plugin.load(saved));
        }
        plugin.runLoop(5ms);
    }
    EXPECT_TRUE(editor.shows());
}

TYPED_TEST(EditorContract, OpensAndClosesWhileItPlaysAndIsSavedAndLoadedOnOtherThreads)
{
    if (checksThreads)
        GTEST_SKIP() << "a debug build stops a host that handles states on another thread than its main one";
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    plugin.setTransport(rolling);
    const auto saved = plugin.save();
    std::atomic<int> soundingBlocks{0};
    const Repeatedly player([&] {
        soundingBlocks += playedBy(plugin, 512).isSilent() ? 0 : 1;
        std::this_thread::sleep_for(1ms);
    });
    const Repeatedly keeper([&] {
        EXPECT_FALSE(plugin.save().empty());
        EXPECT_TRUE(plugin.load(saved));
        std::this_thread::sleep_for(1ms);
    });
    for (int round = 0; round < 5; ++round) {
        EditorInUse editor(plugin, this->parent);
        EXPECT_TRUE(editor.shows());
    }
    EXPECT_TRUE(this->waitFor(plugin, [&] { return soundingBlocks > 10; }));
}

TYPED_TEST(EditorContract, AKnobIsTurnedWhileTheHostAutomatesOtherControlsOnItsRenderThread)
{
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    plugin.setTransport(rolling);
    EditorInUse editor(plugin, this->parent);
    ASSERT_TRUE(editor.shows());
    {
        const Repeatedly player([&, block = 0]() mutable {
            plugin.setValue(static_cast<ParameterAddress>(1 + block % 38), block % 5 / 4.0);
            playedBy(plugin, 512);
            ++block;
            std::this_thread::sleep_for(1ms);
        });
        editor.turnKnob();
        editor.act("mouseup 1");
        plugin.runLoop(50ms);
    }
    playedBy(plugin, 512);
    EXPECT_TRUE(isOneGesture(plugin.edits(), 0));
    EXPECT_GT(plugin.value(0), 0.5);
}

/// A forked host shares its memory, locks and devices with the child for a moment; one with hundreds of
/// plug-ins must not be forked by each.
TYPED_TEST(EditorContract, StartsNoProcess)
{
    // Where it is missing, nothing could start it.
    EXPECT_TRUE(std::filesystem::exists("/usr/bin/gsettings"));
    const int before = processesStarted();
    constexpr int editors = 11;
    for (int i = 0; i < editors; ++i) {
        TypeParam plugin;
        ASSERT_TRUE(plugin.openEditor(this->parent));
        plugin.runLoop(20ms);
    }
    EXPECT_EQ(processesStarted() - before, 0);
}

TEST(ForkCounter, CountsAProcessThatIsStarted)
{
    const int before = processesStarted();
    ASSERT_EQ(std::system("true"), 0);
    EXPECT_EQ(processesStarted() - before, 1);
}

} // namespace
} // namespace velotrine
