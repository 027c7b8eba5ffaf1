#include "editor/RingEditorViewMac.h"

#include "tests/editor/MouseEvents.h"

#include <gtest/gtest.h>

#include <cmath>
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
        panel.field(kind).keyPressed(juce::KeyPress(juce::KeyPress::returnKey));
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

TEST_F(RingEditor, MinusNothingIsNothing)
{
    for (const auto kind : {RingEditorViewMac::luck, RingEditorViewMac::ringVol, RingEditorViewMac::timbre}) {
        panel.field(kind).show("0.50");
        type(kind, "-0");
        EXPECT_EQ(shown(kind), "0.00");
        EXPECT_FALSE(std::signbit(std::get<float>(edits.back())));
    }
}

TEST_F(RingEditor, ASlidersKeysGoByItsStepsByHundredthsAndToTheEnds)
{
    const auto press = [&](RingEditorViewMac::Kind kind, int key, int modifiers = 0) {
        EXPECT_TRUE(panel.slider(kind).keyPressed(juce::KeyPress(key, modifiers, 0)));
        return panel.slider(kind).getValue();
    };
    panel.fill(0, {.spots = 5, .probability = 0.5f, .octave = 3});
    EXPECT_EQ(press(RingEditorViewMac::steps, juce::KeyPress::upKey), 6.0);
    EXPECT_EQ(press(RingEditorViewMac::steps, juce::KeyPress::pageDownKey), 4.0);
    EXPECT_EQ(press(RingEditorViewMac::octave, juce::KeyPress::pageUpKey), 4.0);
    EXPECT_EQ(press(RingEditorViewMac::octave, juce::KeyPress::endKey), 7.0);
    EXPECT_NEAR(press(RingEditorViewMac::luck, juce::KeyPress::leftKey), 0.49, 1e-9);
    EXPECT_NEAR(press(RingEditorViewMac::luck, juce::KeyPress::rightKey, juce::ModifierKeys::shiftModifier),
                0.491, 1e-9);
    EXPECT_EQ(press(RingEditorViewMac::luck, juce::KeyPress::homeKey), 0.0);
    EXPECT_EQ(edits.size(), 7u) << "each is reported";
}

TEST_F(RingEditor, ADigitOnASliderBeginsAnEntryInItsField)
{
    panel.fill(2, {.octave = 3});
    EXPECT_TRUE(panel.slider(RingEditorViewMac::octave).keyPressed(juce::KeyPress('6', {}, '6')));
    EXPECT_EQ(shown(RingEditorViewMac::octave), "6");
    EXPECT_TRUE(edits.empty());
    panel.field(RingEditorViewMac::octave).keyPressed(juce::KeyPress(juce::KeyPress::returnKey));
    EXPECT_EQ(edits, (std::vector<Edit>{{3, 2, 6.0f}}));
}

TEST_F(RingEditor, OnlyThePrimaryButtonDragsItOrItsSliders)
{
    panel.setTopLeftPosition(50, 60);
    panel.fill(0, {.probability = 0.5f});
    auto& slider = panel.slider(RingEditorViewMac::luck);
    for (const auto button :
         {juce::ModifierKeys::rightButtonModifier, juce::ModifierKeys::middleButtonModifier}) {
        const juce::Point<float> from(5.0f, 5.0f);
        for (auto* target : std::initializer_list<juce::Component*>{&panel, &slider}) {
            target->mouseDown(clickAt(*target, from, button));
            target->mouseDrag(mouseAt(*target, {30.0f, 30.0f}, from, true, 0, button));
            target->mouseUp(mouseAt(*target, {30.0f, 30.0f}, from, true, 0, button));
        }
    }
    EXPECT_EQ(panel.getPosition(), juce::Point(50, 60));
    EXPECT_TRUE(edits.empty());
}

TEST_F(RingEditor, EscapeTakesASlidersDragBack)
{
    panel.fill(0, {.probability = 0.5f});
    auto& slider = panel.slider(RingEditorViewMac::luck);
    const auto at = [&](float part) {
        return slider.getLocalBounds().toFloat().getRelativePoint(part, 0.5f);
    };
    EXPECT_FALSE(slider.keyPressed(juce::KeyPress(juce::KeyPress::escapeKey))) << "no drag, not its key";
    slider.mouseDown(clickAt(slider, at(0.5f)));
    slider.mouseDrag(mouseAt(slider, at(0.8f), at(0.5f), true));
    EXPECT_GT(slider.getValue(), 0.6);
    EXPECT_TRUE(slider.keyPressed(juce::KeyPress(juce::KeyPress::escapeKey)));
    EXPECT_EQ(std::get<float>(edits.back()), 0.5f);
    slider.mouseDrag(mouseAt(slider, at(0.9f), at(0.5f), true));
    slider.mouseUp(mouseAt(slider, at(0.9f), at(0.5f), true));
    EXPECT_EQ(std::get<float>(edits.back()), 0.5f);
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

TEST_F(RingEditor, FollowsTheMouseThatDragsItWhateverItsParentsScale)
{
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        juce::Component parent;
        parent.setTransform(juce::AffineTransform::scale(scale));
        parent.setSize(400, 300);
        parent.addAndMakeVisible(panel);
        panel.setTopLeftPosition(50, 60);
        const juce::Point from(20.0f, 20.0f);
        panel.mouseDown(clickAt(panel, from));
        // The panel has followed the first movement when the second comes.
        for (int i = 0; i < 2; ++i)
            panel.mouseDrag(mouseAt(panel, from + juce::Point(15.0f, 10.0f), from, true));
        panel.mouseUp(mouseAt(panel, from, from, true));
        EXPECT_EQ(panel.getPosition(), juce::Point(80, 80)) << scale;
    }
}

} // namespace
} // namespace velotrine
