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

TEST_F(RotaryControl, ADragIsMeasuredToTheLastBit)
{
    // The factor for each axis as a whole, and a turn into degrees in single precision with a short pi.
    for (const float along : {1.0f, 7.0f, 13.0f, 19.5f, 27.0f}) {
        knob.setValue(0.5f);
        knob.handleDrag(DragState::began, {});
        drag({along, 0.0f});
        const auto radians = static_cast<double>(along) * 0.7071067811865476 / (80.0 * 0.25);
        const auto degrees = static_cast<float>(radians) * 180.0f / 3.1415925f;
        EXPECT_EQ(knob.value(), 0.0f + (degrees - -160.0f) * 1.0f / (160.0f - -160.0f)) << along;
        knob.handleDrag(DragState::ended, {});
    }
}

TEST_F(RotaryControl, OnlyThePrimaryButtonTurnsOrResetsIt)
{
    const juce::Point<float> start(40.0f, 40.0f);
    knob.resetValue = 0.5f;
    for (const auto button :
         {juce::ModifierKeys::rightButtonModifier, juce::ModifierKeys::middleButtonModifier}) {
        knob.mouseDown(clickAt(knob, start, button));
        knob.mouseDrag(mouseAt(knob, start.translated(20.0f, 0.0f), start, true, 0, button));
        knob.mouseUp(mouseAt(knob, start.translated(20.0f, 0.0f), start, true, 0, button));
        knob.mouseDoubleClick(clickAt(knob, start, button));
    }
    EXPECT_TRUE(changes.empty());
    EXPECT_EQ(begins + ends, 0);
}

TEST_F(RotaryControl, EscapeTakesADragBackAndTheRestOfItDoesNothing)
{
    const juce::Point<float> start(40.0f, 40.0f);
    const auto dragTo = [&](float x) {
        knob.mouseDrag(mouseAt(knob, start.translated(x, 0.0f), start, true));
    };
    knob.setValue(0.25f);
    EXPECT_FALSE(knob.keyPressed(juce::KeyPress(juce::KeyPress::escapeKey))) << "no drag, not its key";
    knob.mouseDown(clickAt(knob, start));
    dragTo(15.0f);
    EXPECT_TRUE(knob.keyPressed(juce::KeyPress(juce::KeyPress::escapeKey)));
    EXPECT_FLOAT_EQ(knob.value(), 0.25f);
    dragTo(30.0f);
    knob.mouseUp(mouseAt(knob, start.translated(30.0f, 0.0f), start, true));
    EXPECT_FLOAT_EQ(knob.value(), 0.25f);
    EXPECT_EQ(begins, 1);
    EXPECT_EQ(ends, 1);
}

TEST_F(RotaryControl, ADigitBeginsAnEntryAndWhatIsNoValueChangesNothing)
{
    const auto five = juce::KeyPress('5', {}, '5');
    EXPECT_FALSE(knob.keyPressed(five)) << "nobody can read what would be typed";
    knob.valueFromText = [](const juce::String& text) -> std::optional<float> {
        return text.containsOnly("0123456789.") ? std::optional(text.getFloatValue() / 10.0f) : std::nullopt;
    };
    EXPECT_TRUE(knob.keyPressed(five));
    ASSERT_NE(knob.entryField(), nullptr);
    EXPECT_EQ(knob.entryField()->getText(), "5");
    knob.entryField()->keyPressed(juce::KeyPress(juce::KeyPress::returnKey));
    EXPECT_EQ(changes, std::vector{0.5f});
    EXPECT_TRUE(knob.keyPressed(five));
    knob.entryField()->setText("five", false);
    knob.entryField()->keyPressed(juce::KeyPress(juce::KeyPress::returnKey));
    EXPECT_TRUE(knob.keyPressed(five));
    knob.entryField()->keyPressed(juce::KeyPress(juce::KeyPress::escapeKey));
    EXPECT_EQ(changes, std::vector{0.5f});
    EXPECT_FALSE(knob.keyPressed(juce::KeyPress('5', juce::ModifierKeys::ctrlModifier, '5')));
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
