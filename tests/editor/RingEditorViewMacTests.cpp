#include "editor/RingEditorViewMac.h"

#include "tests/editor/MouseEvents.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace velotrine {
namespace {

using Edit = std::tuple<int, int, float>; ///< kind, ring, value

class RingEditor : public testing::Test
{
protected:
    RingEditor()
    {
        panel.setSize(247, 206);
        panel.fill(2, {.spots = 4,
                       .phaseTurns = 0.25f,
                       .probability = 0.5f,
                       .octave = 3,
                       .volume = 0.7f,
                       .timbre = 0.4f});
        panel.onParamChanged = [this](int kind, int ring, float value) {
            edits.emplace_back(kind, ring, value);
        };
    }

    void type(RingEditorViewMac::Kind kind, const juce::String& text)
    {
        panel.field(kind).setText(text, false);
        panel.field(kind).onReturnKey();
    }

    juce::String shown(RingEditorViewMac::Kind kind) { return panel.field(kind).getText(); }

    RingEditorViewMac panel;
    std::vector<Edit> edits;
};

TEST_F(RingEditor, FillingShowsTheSettingsAndReportsNothing)
{
    panel.fill(4, {.spots = 7,
                   .phaseTurns = 0.13f,
                   .probability = 1.0f,
                   .octave = 6,
                   .volume = 0.0f,
                   .timbre = 0.333f});
    EXPECT_TRUE(edits.empty());
    EXPECT_FALSE(panel.suppressCallbacks);
    EXPECT_EQ(panel.title().getText(), "RING 5");
    EXPECT_EQ(shown(RingEditorViewMac::steps), "7");
    EXPECT_EQ(shown(RingEditorViewMac::shift), "0.13");
    EXPECT_EQ(shown(RingEditorViewMac::luck), "1.00");
    EXPECT_EQ(shown(RingEditorViewMac::octave), "6");
    EXPECT_EQ(shown(RingEditorViewMac::ringVol), "0.00");
    EXPECT_EQ(shown(RingEditorViewMac::timbre), "0.33");
    EXPECT_EQ(panel.slider(RingEditorViewMac::steps).getValue(), 7.0);
}

TEST_F(RingEditor, ShiftWrapsIntoOneTurn)
{
    for (const auto& [text, value, field] : std::vector<std::tuple<const char*, float, const char*>>{
             {"1.25", 0.25f, "0.25"}, {"-0.25", 0.75f, "0.75"}, {"abc", 0.0f, "0.00"}, {"1", 0.0f, "0.00"}}) {
        edits.clear();
        panel.field(RingEditorViewMac::shift).show("0.50");
        type(RingEditorViewMac::shift, text);
        EXPECT_EQ(edits, (std::vector<Edit>{{1, 2, value}})) << text;
        EXPECT_EQ(shown(RingEditorViewMac::shift), field);
    }
}

TEST_F(RingEditor, StepsTakeAWholeNumberUpToSixteenAndAnythingElseAsNone)
{
    for (const auto& [text, value] :
         std::vector<std::pair<const char*, float>>{{"20", 16.0f},
                                                    {"-3", 0.0f},
                                                    {"4.5", 0.0f},
                                                    {"", 0.0f},
                                                    {" 9 ", 9.0f},
                                                    {"99999999999999999999", 16.0f}}) {
        edits.clear();
        panel.field(RingEditorViewMac::steps).show("5");
        type(RingEditorViewMac::steps, text);
        EXPECT_EQ(edits, (std::vector<Edit>{{0, 2, value}})) << text;
        EXPECT_EQ(panel.slider(RingEditorViewMac::steps).getValue(), static_cast<double>(value));
    }
}

TEST_F(RingEditor, LuckVolumeAndToneAreBoundedToOne)
{
    type(RingEditorViewMac::luck, "2");
    EXPECT_EQ(shown(RingEditorViewMac::luck), "1.00");
    type(RingEditorViewMac::ringVol, "-1");
    type(RingEditorViewMac::timbre, "0.5x");
    type(RingEditorViewMac::octave, "8");
    EXPECT_EQ(edits, (std::vector<Edit>{{2, 2, 1.0f}, {4, 2, 0.0f}, {5, 2, 0.0f}, {3, 2, 7.0f}}));
}

TEST_F(RingEditor, NumbersThatAreNotFiniteCountAsNone)
{
    for (const auto* text : {"nan", "inf", "-inf", "1e999"}) {
        edits.clear();
        panel.field(RingEditorViewMac::shift).show("0.50");
        type(RingEditorViewMac::shift, text);
        EXPECT_EQ(edits, (std::vector<Edit>{{1, 2, 0.0f}})) << text;
    }
}

TEST_F(RingEditor, ASliderWritesItsFieldAndReportsUnlessSuppressed)
{
    panel.slider(RingEditorViewMac::luck).setValue(0.875, juce::sendNotificationSync);
    EXPECT_EQ(shown(RingEditorViewMac::luck), "0.88");
    panel.slider(RingEditorViewMac::octave).setValue(4.4, juce::sendNotificationSync);
    EXPECT_EQ(shown(RingEditorViewMac::octave), "4");
    EXPECT_EQ(edits, (std::vector<Edit>{{2, 2, 0.875f}, {3, 2, 4.0f}}));
    panel.suppressCallbacks = true;
    panel.slider(RingEditorViewMac::luck).setValue(0.1, juce::sendNotificationSync);
    EXPECT_EQ(edits.size(), 2u);
}

TEST_F(RingEditor, RowsFollowEachOtherAtTheRowsPitch)
{
    panel.setSize(300, 260);
    const auto row = 30.0; // (260 - 20) / 8
    EXPECT_EQ(panel.title().getBounds(), (juce::Rectangle<int>(10, 10, 280, 30)));
    for (int kind = 0; kind < RingEditorViewMac::kindCount; ++kind) {
        const auto y = 10.0 + (row + 4.0) * (kind + 1);
        const auto k = static_cast<RingEditorViewMac::Kind>(kind);
        EXPECT_EQ(panel.label(k).getY(), y);
        EXPECT_EQ(panel.label(k).getX(), 10);
        EXPECT_EQ(panel.field(k).getY(), y + 2.0);
        EXPECT_EQ(panel.field(k).getHeight(), 26);
        EXPECT_EQ(panel.field(k).getWidth(), 54);
        EXPECT_EQ(panel.field(k).getRight(), 300 - 18);
        EXPECT_EQ(panel.slider(k).getRight() + 4, panel.field(k).getX());
    }
}

TEST_F(RingEditor, TheTitleAreaDragsThePanelAlsoBeyondItsParentAndTheRestDoesNot)
{
    juce::Component parent;
    parent.setSize(400, 300);
    parent.addAndMakeVisible(panel);
    panel.setTopLeftPosition(50, 60);
    const auto drag = [&](juce::Point<float> from, juce::Point<float> by) {
        panel.mouseDown(clickAt(panel, from));
        panel.mouseDrag(mouseAt(panel, from + by, from, true));
        panel.mouseUp(mouseAt(panel, from, from, true));
    };
    drag({20.0f, 20.0f}, {-300.0f, 25.0f});
    EXPECT_EQ(panel.getPosition(), juce::Point(-250, 85));
    drag({20.0f, 0.25f * 206.0f + 1.0f}, {30.0f, 30.0f});
    EXPECT_EQ(panel.getPosition(), juce::Point(-250, 85));
}

} // namespace
} // namespace velotrine
