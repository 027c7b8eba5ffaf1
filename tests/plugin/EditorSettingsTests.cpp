// The settings as a whole, in the editor of a plug-in: undone, copied, pasted, and chosen from the context
// menu.

#include "audiounit/Parameters.h"
#include "tests/plugin/EditorInUse.h"
#include "tests/plugin/PluginContract.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr auto activity = addressOf(GlobalParameter::activity);
constexpr auto boredom = addressOf(GlobalParameter::boredom);

template <typename Plugin>
class EditorSettings : public testing::Test
{
public:
    EditorSettings() { display.giveKeyboardTo(parent); }

    ~EditorSettings() override { display.act("mousemove 1500 1100"); }

    void SetUp() override
    {
        ASSERT_TRUE(editor.shows());
        editor.click(bareGround); // a press that an editor before did not see end is over
    }

    /// Turns the first knob, activity.
    void turnKnob()
    {
        const auto before = plugin.edits().size();
        editor.turnKnob();
        editor.act("mouseup 1");
        ASSERT_TRUE(editor.comesTrue(
            [&] { return plugin.edits().size() > before && plugin.edits().back() == "end 0"; }));
    }

    /// Clicks a field and goes on by key: the keyboard is the editor's, and no field is edited.
    void takeKeyboard()
    {
        editor.click(tempoField);
        ASSERT_TRUE(editor.comesToHaveKeyboard());
        editor.act("key Tab");
    }

    /// Opens the context menu by mouse and goes to an entry, counted from 0 without those that are greyed
    /// out.
    void chooseFromMenu(int entry)
    {
        editor.act(std::string("mousemove ") + bareGround + " click 3");
        ASSERT_TRUE(editor.comesToHaveKeyboard());
        for (int i = 0; i <= entry; ++i)
            editor.act("key Down");
        editor.act("key Return");
    }

    /// What any other program gets from the clipboard.
    std::string clipboard()
    {
        ChildProcess reader({"/usr/bin/xclip", "-selection", "clipboard", "-o"}, {});
        EXPECT_TRUE(editor.comesTrue([&] { return reader.hasEnded(); }));
        return reader.finish().out;
    }

    /// Another program has text to paste for as long as this lives.
    [[nodiscard]] std::unique_ptr<ChildProcess> copied(const std::string& text)
    {
        folder.write("copied", text);
        auto owner =
            std::make_unique<ChildProcess>(std::vector<std::string>{"/usr/bin/xclip", "-quiet", "-selection",
                                                                    "clipboard", "-i", folder.file("copied")},
                                           ProcessSurroundings{});
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        return owner;
    }

    TemporaryFolder folder;
    const VirtualDisplay& display = VirtualDisplay::shared();
    const XWindow parent = display.makeWindow(editorWidth, editorHeight);
    Plugin plugin;
    EditorInUse editor{plugin, parent};
};

TYPED_TEST_SUITE(EditorSettings, EveryFormat, FormatNames);

/// The last gesture, in the order in which it was told.
std::vector<std::string> lastGesture(const std::vector<std::string>& edits)
{
    const auto begin = std::find_if(edits.rbegin(), edits.rend(),
                                    [](const std::string& edit) { return edit.starts_with("begin"); });
    return begin == edits.rend() ? edits : std::vector<std::string>(begin.base() - 1, edits.end());
}

TYPED_TEST(EditorSettings, UndoAndRedoReachTheHostAsOrdinaryEdits)
{
    this->turnKnob();
    const auto turned = this->plugin.value(activity);
    this->takeKeyboard();
    this->editor.act("key ctrl+z");
    EXPECT_TRUE(this->editor.comesTrue([&] { return this->plugin.value(activity) == 0.5; }));
    EXPECT_TRUE(this->editor.comesTrue([&] {
        const auto told = lastGesture(this->plugin.edits());
        return told.size() == 3 && told.front() == "begin 0" && told.back() == "end 0";
    })) << testing::PrintToString(this->plugin.edits());
    EXPECT_EQ(lastGesture(this->plugin.edits()).at(1).substr(0, 7), "0 = 0.5");

    for (const auto* const redo : {"key ctrl+shift+z", "key ctrl+y"}) {
        this->editor.act(redo);
        EXPECT_TRUE(this->editor.comesTrue([&] { return this->plugin.value(activity) == turned; })) << redo;
        this->editor.act("key ctrl+z");
        EXPECT_TRUE(this->editor.comesTrue([&] { return this->plugin.value(activity) == 0.5; }));
    }
    EXPECT_EQ(std::ranges::count(this->plugin.edits(), "begin 0"), 6);
    EXPECT_EQ(std::ranges::count(this->plugin.edits(), "end 0"), 6);
    this->editor.act("key Escape");
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
}

TYPED_TEST(EditorSettings, WhatTheHostAutomatesIsNoStepAndIsNotUndone)
{
    ASSERT_TRUE(this->plugin.start(sampleRate, 512));
    const auto automate = [this](ParameterAddress address, double value) {
        this->plugin.setValue(address, value);
        playedBy(this->plugin, 512);
        this->plugin.runLoop(std::chrono::milliseconds(100));
    };
    const auto comesToSave = [this](const char* text) {
        return this->editor.comesTrue([=, this] {
            playedBy(this->plugin, 512);
            return this->editor.saves(text);
        });
    };
    automate(boredom, 0.25);
    this->editor.turnKnob();
    this->editor.act("mouseup 1");
    automate(boredom, 0.75);
    this->takeKeyboard();
    this->editor.act("key ctrl+z");
    EXPECT_TRUE(comesToSave("\"activity\": 0.5,"));
    this->editor.act("key ctrl+z");
    EXPECT_TRUE(comesToSave("\"boredom\": 0.75,"));

    this->editor.act("key ctrl+y");
    EXPECT_TRUE(this->editor.comesTrue([this] {
        playedBy(this->plugin, 512);
        return !this->editor.saves("\"activity\": 0.5,");
    }));
    automate(activity, 0.125);
    this->editor.act("key ctrl+z");
    EXPECT_TRUE(comesToSave("\"activity\": 0.125,")) << "the host has set it since";
}

TYPED_TEST(EditorSettings, TheHistoryOutlivesTheEditor)
{
    this->turnKnob();
    this->plugin.closeEditor();
    EditorInUse again(this->plugin, this->parent);
    ASSERT_TRUE(again.shows());
    this->chooseFromMenu(0);
    EXPECT_TRUE(again.comesTrue([&] { return this->plugin.value(activity) == 0.5; }));
}

TYPED_TEST(EditorSettings, AFieldsKeysBelongToItsText)
{
    this->turnKnob();
    const auto turned = this->plugin.value(activity);
    ASSERT_TRUE(this->editor.type(tempoField, "91"));
    this->editor.act("key ctrl+z key ctrl+z key ctrl+z");
    this->editor.act("key Return");
    EXPECT_EQ(this->plugin.value(activity), turned);
    EXPECT_TRUE(this->editor.saves("\"bpm\": 120"));
}

TYPED_TEST(EditorSettings, TheContextMenuUndoesAndGivesTheKeyboardBack)
{
    this->turnKnob();
    this->chooseFromMenu(0);
    EXPECT_TRUE(this->editor.comesTrue([&] { return this->plugin.value(activity) == 0.5; }));
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
    this->editor.act(std::string("mousemove ") + innermostRing + " click 3");
    ASSERT_TRUE(this->editor.comesToHaveKeyboard()) << "on the rings, too";
    this->editor.act("key Escape");
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
}

TYPED_TEST(EditorSettings, TheContextMenuOpensByKey)
{
    this->turnKnob();
    for (const auto* const key : {"key shift+F10", "key Menu"}) {
        const auto before = this->plugin.value(activity);
        this->takeKeyboard();
        this->editor.act(key);
        this->editor.act("key Return"); // the first entry is marked
        EXPECT_TRUE(this->editor.comesTrue([&] { return this->plugin.value(activity) != before; })) << key;
        this->editor.act("key Escape");
        EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
    }
}

TYPED_TEST(EditorSettings, AnEditorThatIsClosedTakesItsMenuAndItsDialogWithIt)
{
    this->editor.act(std::string("mousemove ") + bareGround + " click 3");
    ASSERT_TRUE(this->editor.comesToHaveKeyboard());
    this->plugin.closeEditor();
    this->display.giveKeyboardTo(this->parent);
    EditorInUse again(this->plugin, this->parent);
    ASSERT_TRUE(again.shows());
    EXPECT_TRUE(again.leavesKeyToHost("space"));

    this->chooseFromMenu(2); // Open
    this->plugin.closeEditor();
    this->display.giveKeyboardTo(this->parent);
    EditorInUse onceMore(this->plugin, this->parent);
    ASSERT_TRUE(onceMore.shows());
    EXPECT_TRUE(onceMore.leavesKeyToHost("space"));
    EXPECT_TRUE(this->plugin.edits().empty());
}

TYPED_TEST(EditorSettings, ASeedIsTypedFromTheMenu)
{
    this->chooseFromMenu(4); // nothing can be undone
    ASSERT_TRUE(this->editor.comesToHaveKeyboard());
    this->editor.act("type 4711");
    this->editor.act("key Return");
    EXPECT_TRUE(this->editor.comesToSave("\"seed\": 4711"));
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
    this->chooseFromMenu(0);
    EXPECT_TRUE(this->editor.comesTrue([&] { return !this->editor.saves("\"seed\""); }));
}

TYPED_TEST(EditorSettings, AreSavedAndOpenedFromTheMenu)
{
    const auto type = [this](const std::string& path) {
        this->editor.act("type " + path);
        this->editor.act("key Return"); // goes to the folder
        this->editor.act("key Return");
    };
    const auto path = this->folder.file("mine.json");
    this->turnKnob();
    const auto turned = this->plugin.value(activity);
    this->chooseFromMenu(4);
    type(path);
    ASSERT_TRUE(this->editor.comesTrue([&] { return std::filesystem::exists(path); }));
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));

    this->chooseFromMenu(0);
    EXPECT_TRUE(this->editor.comesTrue([&] { return this->plugin.value(activity) == 0.5; }));
    this->chooseFromMenu(3);
    type(path);
    EXPECT_TRUE(this->editor.comesTrue([&] { return this->plugin.value(activity) == turned; }));
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
}

TYPED_TEST(EditorSettings, APresetFromTheMenuIsToldTheHostAsEditsOfWhatItChanges)
{
    this->editor.act(std::string("mousemove ") + bareGround + " click 3");
    ASSERT_TRUE(this->editor.comesToHaveKeyboard());
    this->editor.act("key Up key Right"); // the last entry's submenu
    this->editor.act("key Down key Down key Return");
    EXPECT_TRUE(this->editor.comesToSave("\"preset\": {"));
    EXPECT_TRUE(this->editor.comesTrue([&] { return !this->plugin.edits().empty(); }));
    EXPECT_EQ(std::ranges::count_if(this->plugin.edits(),
                                    [](const auto& edit) { return edit.starts_with("begin"); }),
              std::ranges::count_if(this->plugin.edits(),
                                    [](const auto& edit) { return edit.starts_with("end"); }));
    this->chooseFromMenu(0);
    EXPECT_TRUE(this->editor.comesToSave("\"preset\": null"));
}

/// Copies in this format and pastes in another.
template <typename Other, typename Fixture>
void pasteInto(Fixture& from, const std::string& text)
{
    auto owner = from.copied(text);
    Other other;
    const auto window = from.display.makeWindow(editorWidth, editorHeight);
    from.display.giveKeyboardTo(window);
    {
        EditorInUse editor(other, window);
        ASSERT_TRUE(editor.shows());
        editor.click(tempoField);
        ASSERT_TRUE(editor.comesToHaveKeyboard());
        editor.act("key Tab key ctrl+v");
        EXPECT_TRUE(editor.comesTrue(
            [&] { return std::abs(other.value(activity) - from.plugin.value(activity)) < 1e-6; }));
        for (const auto& parameter : parameterTable())
            EXPECT_NEAR(other.value(parameter.address), from.plugin.value(parameter.address), 1e-4)
                << parameter.name;
        EXPECT_TRUE(editor.saves("\"seed\": 4711"));
    }
    from.display.destroyWindow(window);
}

TYPED_TEST(EditorSettings, WhatIsCopiedPastesIntoAnyFormat)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP()
        << "of three formats in one process, the thread sanitizer finds no names in the VST3, by which it "
           "would know what is not ours (tests/races-of-others)";
#endif
    ASSERT_TRUE(
        this->plugin.load(R"({"version": 1, "preset": null, "seed": 4711, "parameters": {"bpm": 97}})"));
    this->turnKnob();
    this->takeKeyboard();
    this->editor.act("key ctrl+c");
    const auto text = this->clipboard();
    EXPECT_NE(text.find("\"seed\": 4711"), std::string::npos) << text;
    this->plugin.closeEditor();
    pasteInto<ClapUnderTest>(*this, text);
    pasteInto<Lv2UnderTest>(*this, text);
    pasteInto<Vst3UnderTest>(*this, text);
}

TYPED_TEST(EditorSettings, TextThatIsNoStateChangesNothingAndTheWindowSaysWhy)
{
    const auto before = this->plugin.save();
    const auto owner = this->copied("good morning");
    this->takeKeyboard();
    const auto noticePlace = "240 335";
    const auto colour = this->display.pixelOf(this->parent, noticePlace);
    this->editor.act("key ctrl+v");
    EXPECT_TRUE(
        this->editor.comesTrue([&] { return this->display.pixelOf(this->parent, noticePlace) != colour; }));
    EXPECT_EQ(this->plugin.save(), before);
    EXPECT_TRUE(this->plugin.edits().empty());
}

} // namespace
} // namespace velotrine
