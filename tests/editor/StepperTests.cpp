#include "editor/Stepper.h"

#include "tests/editor/MouseEvents.h"
#include "tests/support/MessageLoop.h"

#include <gtest/gtest.h>

#include <vector>

namespace velotrine {
namespace {

class TempoStepper : public testing::Test
{
protected:
    TempoStepper()
    {
        stepper.setSize(19, 24);
        stepper.minValue = 40.0;
        stepper.maxValue = 300.0;
        stepper.setValue(120.0);
        stepper.onStep = [this](double value) { steps.push_back(value); };
    }

    void click(float y)
    {
        stepper.mouseDown(clickAt(stepper, {9.0f, y}));
        stepper.mouseUp(clickAt(stepper, {9.0f, y}));
    }

    Stepper stepper;
    std::vector<double> steps;
};

TEST_F(TempoStepper, TheUpperArrowGoesUpAndTheLowerDown)
{
    click(4.0f);
    click(20.0f);
    click(20.0f);
    EXPECT_EQ(steps, (std::vector{121.0, 120.0, 119.0}));
}

TEST_F(TempoStepper, SettingTheValueBoundsItAndTellsNobody)
{
    stepper.setValue(1000.0);
    EXPECT_EQ(stepper.value(), 300.0);
    stepper.setValue(-1.0);
    EXPECT_EQ(stepper.value(), 40.0);
    EXPECT_TRUE(steps.empty());
}

TEST_F(TempoStepper, AtAnEndAStepFurtherTellsNobody)
{
    stepper.setValue(299.5);
    click(4.0f);
    click(4.0f);
    EXPECT_EQ(steps, std::vector{300.0});
}

TEST_F(TempoStepper, UpAndDownAndTheWheelStepToo)
{
    EXPECT_TRUE(stepper.keyPressed(juce::KeyPress(juce::KeyPress::upKey)));
    EXPECT_TRUE(stepper.keyPressed(juce::KeyPress(juce::KeyPress::downKey)));
    EXPECT_FALSE(stepper.keyPressed(juce::KeyPress('x')));
    juce::MouseWheelDetails wheel{};
    wheel.deltaY = -0.2f;
    stepper.mouseWheelMove(clickAt(stepper, {}), wheel);
    EXPECT_EQ(steps, (std::vector{121.0, 120.0, 119.0}));
}

TEST_F(TempoStepper, PageKeysGoTenStepsAndHomeAndEndToTheEnds)
{
    for (const auto key : {juce::KeyPress::pageUpKey, juce::KeyPress::pageDownKey, juce::KeyPress::rightKey,
                           juce::KeyPress::endKey, juce::KeyPress::upKey, juce::KeyPress::homeKey})
        EXPECT_TRUE(stepper.keyPressed(juce::KeyPress(key)));
    EXPECT_EQ(steps, (std::vector{130.0, 120.0, 121.0, 300.0, 40.0}));
}

TEST_F(TempoStepper, OnlyThePrimaryButtonSteps)
{
    stepper.mouseDown(clickAt(stepper, {9.0f, 4.0f}, juce::ModifierKeys::rightButtonModifier));
    stepper.mouseUp(clickAt(stepper, {9.0f, 4.0f}, juce::ModifierKeys::rightButtonModifier));
    EXPECT_TRUE(steps.empty());
}

TEST_F(TempoStepper, HeldItRepeatsUntilLetGo)
{
    stepper.mouseDown(clickAt(stepper, {9.0f, 4.0f}));
    EXPECT_TRUE(runMessagesUntil([&] { return steps.size() >= 3; }, 5.0));
    stepper.mouseUp(clickAt(stepper, {9.0f, 4.0f}));
    const auto then = steps.size();
    runMessagesFor(0.2);
    EXPECT_EQ(steps.size(), then);
}

TEST_F(TempoStepper, DisabledItDoesNotStep)
{
    stepper.setEnabled(false);
    click(4.0f);
    EXPECT_TRUE(steps.empty());
}

} // namespace
} // namespace velotrine
