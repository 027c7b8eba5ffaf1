#include "plugin/HostedState.h"

#include "audiounit/StateText.h"
#include "tests/support/TestInstrument.h"

#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

AUFullState someState()
{
    auto unit = makeInstrument();
    selectPreset(*unit, 3);
    setValue(*unit, "activity", 0.1f);
    return unit->fullState();
}

std::string textWithEditor(const std::string& editor)
{
    return R"({"version": 1, "parameters": {}, "editor": )" + editor + "}";
}

TEST(HostedState, ReadsBackWhatItWrote)
{
    const auto read = hostedStateFromText(hostedStateText(someState(), {600, 500}));
    ASSERT_TRUE(read.state) << read.error;
    EXPECT_EQ(*read.state, someState());
    EXPECT_EQ(read.editorSize, (EditorSize{600, 500}));
}

TEST(HostedState, WritesTheSameTextForTheSameState)
{
    const auto text = hostedStateText(someState(), {600, 500});
    const auto read = hostedStateFromText(text);
    ASSERT_TRUE(read.state) << read.error;
    EXPECT_EQ(hostedStateText(*read.state, *read.editorSize), text);
}

TEST(HostedState, IsTheAudioUnitsTextWithTheEditorsSizeAtItsEnd)
{
    auto text = textFromState(someState());
    const std::string end = "\n}\n";
    ASSERT_TRUE(text.ends_with(end));
    text.resize(text.size() - end.size());
    EXPECT_EQ(hostedStateText(someState(), {600, 500}),
              text + ",\n  \"editor\": {\n    \"width\": 600,\n    \"height\": 500\n  }\n}\n");
}

TEST(HostedState, TheAudioUnitReadsItAsItsOwn)
{
    const auto read = stateFromText(hostedStateText(someState(), {600, 500}));
    ASSERT_TRUE(read.state) << read.error;
    EXPECT_EQ(*read.state, someState());
}

TEST(HostedState, HasNoEditorSizeWhereTheAudioUnitWroteIt)
{
    const auto read = hostedStateFromText(textFromState(someState()));
    ASSERT_TRUE(read.state) << read.error;
    EXPECT_FALSE(read.editorSize);
}

TEST(HostedState, BoundsTheEditorsSize)
{
    EXPECT_EQ(hostedStateFromText(textWithEditor(R"({"width": 10, "height": -5})")).editorSize,
              (EditorSize{EditorSize::minWidth, EditorSize::minHeight}));
    EXPECT_EQ(
        hostedStateFromText(textWithEditor(R"({"width": 18446744073709551615, "height": 99999})")).editorSize,
        (EditorSize{EditorSize::maxSide, EditorSize::maxSide}));
}

TEST(HostedState, RefusesAnEditorSizeThatIsNotOne)
{
    for (const auto* const editor :
         {"7", "null", "[]", R"({"width": 400})", R"({"width": 400.5, "height": 400})",
          R"({"width": "400", "height": 400})"}) {
        const auto read = hostedStateFromText(textWithEditor(editor));
        EXPECT_FALSE(read.state) << editor;
        EXPECT_NE(read.error.find("\"editor\""), std::string::npos) << read.error;
    }
}

TEST(HostedState, RefusesWhatIsNoState)
{
    for (const auto* const text : {"", "{}", "[1]", "{\"version\": 2, \"parameters\": {}}", "\xff\xfe"}) {
        const auto read = hostedStateFromText(text);
        EXPECT_FALSE(read.state) << text;
        EXPECT_FALSE(read.error.empty()) << text;
    }
}

} // namespace
} // namespace velotrine
