#include "editor/AURotaryControl.h"

#include "tests/editor/MouseEvents.h"

#include <gtest/gtest.h>

#include <numbers>
#include <vector>

namespace velotrine {
namespace {

class RotaryControl : public testing::Test
{
protected:
    RotaryControl()
    {
        knob.setSize(80, 80);
        knob.onValueChanged = [this](float value) { changes.push_back(value); };
        knob.onDragBegan = [this] { ++begins; };
        knob.onDragEnded = [this] { ++ends; };
    }

    void drag(juce::Point<float> translation) { knob.handleDrag(DragState::changed, translation); }

    AURotaryControl knob;
    std::vector<float> changes;
    int begins = 0;
    int ends = 0;
};

TEST_F(RotaryControl, AValueBeyondTheRangeIsBoundedAndTheSameAgainTellsNobody)
{
    knob.setValue(7.0f);
    knob.setValue(1.0f);
    knob.setValue(-3.0f);
    knob.setValue(std::nanf(""));
    EXPECT_EQ(changes, (std::vector{1.0f, 0.0f}));
}

TEST_F(RotaryControl, TheOverlayStandsUprightInTheMiddleAnd160DegreesAwayAtTheEnds)
{
    EXPECT_FLOAT_EQ(knob.overlayAngleDegrees(), -160.0f);
    knob.setValue(0.5f);
    EXPECT_FLOAT_EQ(knob.overlayAngleDegrees(), 0.0f);
    knob.setValue(1.0f);
    EXPECT_FLOAT_EQ(knob.overlayAngleDegrees(), 160.0f);
}

TEST_F(RotaryControl, ADragOfAQuarterOfTheWidthTurnsByARadianOverRootTwo)
{
    knob.setValue(0.5f);
    for (const auto translation : {juce::Point(20.0f, 0.0f), juce::Point(0.0f, -20.0f)}) {
        knob.handleDrag(DragState::began, {});
        drag(translation);
        EXPECT_NEAR(knob.value(), 0.5 + std::numbers::sqrt2 / 2.0 * 180.0 / std::numbers::pi / 320.0, 1e-6);
        drag({});
        EXPECT_FLOAT_EQ(knob.value(), 0.5f);
        knob.handleDrag(DragState::ended, {});
    }
    EXPECT_EQ(begins, 2);
    EXPECT_EQ(ends, 2);
}

TEST_F(RotaryControl, ADragUpAndLeftByEqualLengthsChangesNothing)
{
    knob.setValue(0.5f);
    changes.clear();
    knob.handleDrag(DragState::began, {});
    drag({-13.0f, -13.0f});
    EXPECT_TRUE(changes.empty());
}

TEST_F(RotaryControl, ADragFarPastTheTopAndBackYieldsTheStartingValue)
{
    knob.setValue(0.75f);
    knob.handleDrag(DragState::began, {});
    drag({1000.0f, 0.0f});
    EXPECT_EQ(knob.value(), 1.0f);
    drag({});
    EXPECT_FLOAT_EQ(knob.value(), 0.75f);
}

TEST_F(RotaryControl, ACancelledDragRestoresTheValueAndStillEnds)
{
    knob.setValue(0.25f);
    knob.handleDrag(DragState::began, {});
    drag({15.0f, 0.0f});
    EXPECT_NE(knob.value(), 0.25f);
    knob.handleDrag(DragState::cancelled, {});
    EXPECT_FLOAT_EQ(knob.value(), 0.25f);
    EXPECT_EQ(ends, 1);
}

TEST_F(RotaryControl, ADoubleClickResetsAndTellsNobodyWhereNothingChanges)
{
    knob.resetValue = 0.5f;
    knob.setValue(0.2f);
    changes.clear();
    knob.handleDoubleClick();
    knob.handleDoubleClick();
    EXPECT_EQ(changes, std::vector{0.5f});
    EXPECT_EQ(begins + ends, 0);
}

TEST_F(RotaryControl, ShiftMakesADragTenTimesFinerWithoutAJump)
{
    knob.setValue(0.5f);
    const juce::Point<float> start(40.0f, 40.0f);
    const auto at = [&](float x, int modifiers) {
        return mouseAt(knob, start.translated(x, 0.0f), start, true, modifiers);
    };
    knob.mouseDown(clickAt(knob, start));
    knob.mouseDrag(at(20.0f, 0));
    const auto coarse = knob.value();
    knob.mouseDrag(at(20.0f, juce::ModifierKeys::shiftModifier));
    EXPECT_FLOAT_EQ(knob.value(), coarse);
    knob.mouseDrag(at(40.0f, juce::ModifierKeys::shiftModifier));
    EXPECT_NEAR(knob.value() - coarse, (coarse - 0.5f) / 10.0f, 1e-6f);
    knob.mouseUp(at(40.0f, 0));
    EXPECT_EQ(begins, 1);
    EXPECT_EQ(ends, 1);
}

TEST_F(RotaryControl, ANotchOfTheWheelIsAHundredthAndWithShiftATenthOfThat)
{
    juce::MouseWheelDetails wheel{};
    wheel.deltaY = 50.0f / 256.0f;
    knob.mouseWheelMove(clickAt(knob, {}), wheel);
    EXPECT_FLOAT_EQ(knob.value(), 0.01f);
    knob.mouseWheelMove(mouseAt(knob, {}, {}, false, juce::ModifierKeys::shiftModifier), wheel);
    EXPECT_FLOAT_EQ(knob.value(), 0.011f);
}

TEST_F(RotaryControl, KeysTurnByAHundredthATenthAndToTheEnds)
{
    const auto press = [&](int key) { EXPECT_TRUE(knob.keyPressed(juce::KeyPress(key))); };
    press(juce::KeyPress::upKey);
    EXPECT_FLOAT_EQ(knob.value(), 0.01f);
    press(juce::KeyPress::pageUpKey);
    EXPECT_FLOAT_EQ(knob.value(), 0.11f);
    press(juce::KeyPress::leftKey);
    EXPECT_FLOAT_EQ(knob.value(), 0.10f);
    press(juce::KeyPress::endKey);
    EXPECT_EQ(knob.value(), 1.0f);
    press(juce::KeyPress::homeKey);
    EXPECT_EQ(knob.value(), 0.0f);
    EXPECT_FALSE(knob.keyPressed(juce::KeyPress('a')));
}

TEST_F(RotaryControl, PicturesAreMadeOncePerSizeAndDensityAndNotPerValue)
{
    int made = 0;
    knob.overlayImageProvider = [&](juce::Point<float> size, float pixelsPerPoint) {
        ++made;
        return juce::Image(juce::Image::ARGB, juce::roundToInt(size.x * pixelsPerPoint),
                           juce::roundToInt(size.y * pixelsPerPoint), true);
    };
    const auto paint = [&](float scale) {
        std::ignore = knob.createComponentSnapshot(knob.getLocalBounds(), true, scale);
    };
    paint(2.0f);
    knob.setValue(0.3f);
    paint(2.0f);
    EXPECT_EQ(made, 1);
    paint(3.0f);
    knob.setSize(50, 50);
    paint(3.0f);
    EXPECT_EQ(made, 3);
}

TEST_F(RotaryControl, TheValueShowsWhileTheUserChangesItAndNotWhenAHostDoes)
{
    knob.setValue(0.4f);
    EXPECT_FALSE(knob.isShowingReadout());
    knob.keyPressed(juce::KeyPress(juce::KeyPress::upKey));
    EXPECT_TRUE(knob.isShowingReadout());
}

TEST_F(RotaryControl, AScreenReaderReadsNameValueAndRange)
{
    knob.label = "ACTIVITY";
    knob.setValue(0.25f);
    const auto handler = knob.createAccessibilityHandler();
    EXPECT_EQ(handler->getTitle(), "ACTIVITY");
    auto* value = handler->getValueInterface();
    EXPECT_EQ(value->getCurrentValueAsString(), "0.25");
    value->setValue(0.75);
    EXPECT_EQ(knob.value(), 0.75f);
}

} // namespace
} // namespace velotrine
