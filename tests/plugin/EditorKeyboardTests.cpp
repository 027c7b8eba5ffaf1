#include "tests/plugin/EditorInUse.h"
#include "tests/plugin/PluginContract.h"

#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

template <typename Plugin>
class EditorKeyboard : public testing::Test
{
protected:
    EditorKeyboard() { display.giveKeyboardTo(parent); }

    ~EditorKeyboard() override { display.act("mousemove 1500 1100"); }

    void SetUp() override { ASSERT_TRUE(editor.shows()); }

    /// Clicks the innermost ring; its panel comes up over the background at the left.
    [[nodiscard]] bool openRingPanel()
    {
        const auto before = display.pixelOf(parent, panelGround);
        editor.click(innermostRing);
        return editor.comesTrue([&] { return display.pixelOf(parent, panelGround) != before; });
    }

    /// Goes on until an arrow has changed something in what the plug-in saves.
    [[nodiscard]] bool tabToAKnobAndTurnIt()
    {
        constexpr int controls = 20;
        const auto before = plugin.save();
        for (int i = 0; i < controls; ++i) {
            editor.act("key Tab");
            editor.act("key Up");
            if (plugin.save() != before)
                return true;
        }
        return false;
    }

    const VirtualDisplay& display = VirtualDisplay::shared();
    const XWindow parent = display.makeWindow(editorWidth, editorHeight);
    Plugin plugin;
    EditorInUse editor{plugin, parent};
};

TYPED_TEST_SUITE(EditorKeyboard, EveryFormat, FormatNames);

TYPED_TEST(EditorKeyboard, IsTheHostsAfterAClickOnAnythingButAField)
{
    for (const auto* const place : {knob, bareGround, syncButton, innermostRing}) {
        this->editor.click(place);
        EXPECT_TRUE(this->editor.leavesKeyToHost("space")) << place;
    }
}

TYPED_TEST(EditorKeyboard, TypingReachesTheFieldThatIsClickedAfterAnythingElse)
{
    int tempo = 90;
    for (const auto* const before : {bareGround, knob, syncButton, innermostRing, tempoField}) {
        this->editor.click(before);
        ++tempo;
        ASSERT_TRUE(this->editor.type(tempoField, std::to_string(tempo))) << before;
        this->editor.act("key Return");
        EXPECT_TRUE(this->editor.comesToSave("\"bpm\": " + std::to_string(tempo))) << before;
        EXPECT_FALSE(this->display.takeKeyPress(this->parent)) << before;
        EXPECT_TRUE(this->editor.leavesKeyToHost("space")) << before;
    }
}

TYPED_TEST(EditorKeyboard, TypingReachesARingsFieldAfterTheTempoWasEdited)
{
    ASSERT_TRUE(this->editor.type(tempoField, "91"));
    ASSERT_TRUE(this->openRingPanel());
    EXPECT_TRUE(this->editor.comesToSave("\"bpm\": 91"));
    ASSERT_TRUE(this->editor.type(stepsField, "12"));
    this->editor.act("key Return");
    EXPECT_TRUE(this->editor.comesToSave("\"spotsR1\": 12"));
    EXPECT_TRUE(this->editor.saves("\"bpm\": 91"));

    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
}

TYPED_TEST(EditorKeyboard, TypingReachesTheFieldThatIsClickedAfterTheHostTookTheKeyboardBack)
{
    ASSERT_TRUE(this->editor.type(tempoField, "91"));
    this->display.giveKeyboardTo(this->parent);
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
    EXPECT_TRUE(this->editor.comesToSave("\"bpm\": 91"));
    ASSERT_TRUE(this->openRingPanel());
    ASSERT_TRUE(this->editor.type(stepsField, "12"));
    this->editor.act("key Return");
    EXPECT_TRUE(this->editor.comesToSave("\"spotsR1\": 12"));
    EXPECT_TRUE(this->editor.saves("\"bpm\": 91"));
}

TYPED_TEST(EditorKeyboard, ClicksInAFieldInUsePlaceItsCaret)
{
    ASSERT_TRUE(this->editor.type(tempoField, "100"));
    this->editor.click(tempoFieldsEnd);
    this->editor.act("type 5");
    this->editor.act("key BackSpace key BackSpace type 9");
    this->editor.act("key Return");
    EXPECT_TRUE(this->editor.comesToSave("\"bpm\": 109"));
}

TYPED_TEST(EditorKeyboard, EscapeDiscardsAnEntryAndReturnsTheKeyboard)
{
    ASSERT_TRUE(this->editor.type(tempoField, "91"));
    this->editor.act("key Escape");
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
    EXPECT_TRUE(this->editor.saves("\"bpm\": 120"));
}

TYPED_TEST(EditorKeyboard, StaysWithTheEditorWhileTabMovesFromControlToControl)
{
    for (const auto* const end : {"Escape", "Return"}) {
        ASSERT_TRUE(this->editor.type(tempoField, "91"));
        this->editor.act("key Tab");
        EXPECT_TRUE(this->editor.comesToSave("\"bpm\": 91"));
        EXPECT_TRUE(this->tabToAKnobAndTurnIt()) << end;
        EXPECT_FALSE(this->display.takeKeyPress(this->parent));
        this->editor.act(std::string("key ") + end);
        const auto turned = this->plugin.save();
        EXPECT_TRUE(this->editor.leavesKeyToHost("Up")) << end;
        EXPECT_EQ(this->plugin.save(), turned);
    }
}

TYPED_TEST(EditorKeyboard, IsTheHostsAfterAClickOnAKnobEvenIfTabHadReachedIt)
{
    ASSERT_TRUE(this->editor.type(tempoField, "91"));
    this->editor.act("key Tab");
    this->editor.click(knob);
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
    ASSERT_TRUE(this->editor.type(tempoField, "92"));
    EXPECT_TRUE(this->tabToAKnobAndTurnIt());
    this->editor.click(knob);
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
}

TYPED_TEST(EditorKeyboard, ChoosesFromAMenuThatAClickHasOpened)
{
    this->editor.click(scaleButton);
    ASSERT_TRUE(this->editor.comesToHaveKeyboard());
    this->editor.act("key Down key Down");
    this->editor.act("key Return");
    EXPECT_TRUE(this->editor.comesTrue([this] { return !this->editor.saves("\"scaleType\": 0"); }));
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
}

TYPED_TEST(EditorKeyboard, IsTheHostsOnceAMenuIsGone)
{
    this->editor.click(scaleButton);
    ASSERT_TRUE(this->editor.comesToHaveKeyboard());
    this->editor.act("key Escape");
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
    this->editor.click(scaleButton);
    ASSERT_TRUE(this->editor.comesToHaveKeyboard());
    this->editor.click(bareGround);
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
    this->editor.click(scaleButton);
    ASSERT_TRUE(this->editor.comesToHaveKeyboard());
    this->editor.click(scaleButton);
    EXPECT_TRUE(this->editor.leavesKeyToHost("space"));
}

TYPED_TEST(EditorKeyboard, IsNotTakenFromAnotherOfTheHostsWindows)
{
    ASSERT_TRUE(this->editor.type(tempoField, "91"));
    const auto other = this->display.makeWindow(100, 100);
    this->display.giveKeyboardTo(other);
    EXPECT_TRUE(this->editor.comesToSave("\"bpm\": 91"));
    this->editor.act("mousemove 20 200 mousemove 30 220");
    EXPECT_EQ(this->display.keyboardOwner(), other);
    this->display.act("key space");
    EXPECT_TRUE(this->display.takeKeyPress(other));
    this->display.destroyWindow(other);
}

} // namespace
} // namespace velotrine
