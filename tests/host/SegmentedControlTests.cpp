#include "host/SegmentedControl.h"

#include "editor/FontLoader.h"
#include "tests/host/Mouse.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace velotrine {
namespace {

const juce::StringArray helpLabels{"About", "Overview",  "Rings", "Ring Editor",
                                   "Knobs", "Transport", "Scale", "Etc"};

class SegmentedControlTest : public testing::Test
{
protected:
    SegmentedControlTest()
    {
        control.onChange = [this](int index) { changes.push_back(index); };
        control.setSize(control.preferredWidth(), 28);
        control.setVisible(true);
    }

    void press(int keyCode) { handled = control.keyPressed(juce::KeyPress(keyCode)); }

    SegmentedControl control{helpLabels};
    std::vector<int> changes;
    bool handled = false;
};

TEST_F(SegmentedControlTest, BeginsAtItsFirstSegment)
{
    EXPECT_EQ(control.segmentCount(), 8);
    EXPECT_EQ(control.selectedSegment(), 0);
}

TEST_F(SegmentedControlTest, AClickSelectsItsSegmentAndSaysSoOnce)
{
    clickAt(control, control.segmentBounds(3).getCentre());
    EXPECT_EQ(control.selectedSegment(), 3);
    clickAt(control, control.segmentBounds(3).getCentre());
    EXPECT_THAT(changes, testing::ElementsAre(3));
}

TEST_F(SegmentedControlTest, ASelectionByTheProgramIsSilent)
{
    control.setSelectedSegment(7);
    EXPECT_EQ(control.selectedSegment(), 7);
    EXPECT_TRUE(changes.empty());
}

TEST_F(SegmentedControlTest, AnIndexOutOfRangeIsIgnored)
{
    control.setSelectedSegment(2);
    control.setSelectedSegment(8);
    control.setSelectedSegment(-1);
    EXPECT_EQ(control.selectedSegment(), 2);
}

TEST_F(SegmentedControlTest, ArrowKeysMoveByOneAndStopAtTheEnds)
{
    press(juce::KeyPress::leftKey);
    EXPECT_TRUE(handled);
    for (int presses = 0; presses < 9; ++presses)
        press(juce::KeyPress::rightKey);
    EXPECT_EQ(control.selectedSegment(), 7);
    press(juce::KeyPress::leftKey);
    EXPECT_THAT(changes, testing::ElementsAre(1, 2, 3, 4, 5, 6, 7, 6));
}

TEST_F(SegmentedControlTest, LeavesTheKeysThatScrollToOthers)
{
    for (const auto key : {juce::KeyPress::upKey, juce::KeyPress::downKey, juce::KeyPress::homeKey,
                           juce::KeyPress::endKey, juce::KeyPress::pageDownKey}) {
        press(key);
        EXPECT_FALSE(handled);
    }
}

TEST_F(SegmentedControlTest, EveryLabelFitsItsSegmentFromAWidthOf392)
{
    for (int width = 392; width <= 900; width += 4) {
        control.setSize(width, 28);
        const auto font = systemFont(control.fontPoints());
        for (int index = 0; index < control.segmentCount(); ++index)
            EXPECT_GE(control.segmentBounds(index).getWidth(),
                      static_cast<int>(font.getStringWidthFloat(helpLabels[index])) + 6)
                << helpLabels[index] << " at " << width;
        EXPECT_GE(control.fontPoints(), 9.0f);
        EXPECT_LE(control.segmentBounds(7).getRight(), width);
    }
}

TEST_F(SegmentedControlTest, SegmentsMeetWithoutGapOrOverlap)
{
    for (const auto width : {392, 501, 640}) {
        control.setSize(width, 28);
        for (int index = 1; index < control.segmentCount(); ++index)
            EXPECT_EQ(control.segmentBounds(index).getX(), control.segmentBounds(index - 1).getRight());
    }
}

TEST_F(SegmentedControlTest, TheSelectedSegmentIsLighterThanTheOthers)
{
    control.setSelectedSegment(2);
    const auto picture = control.createComponentSnapshot(control.getLocalBounds());
    const auto besideLabel = [&](int index) {
        const auto bounds = control.segmentBounds(index);
        return picture.getPixelAt(bounds.getX() + 5, bounds.getCentreY()).getAlpha();
    };
    EXPECT_GT(besideLabel(2), besideLabel(1) + 20);
    EXPECT_EQ(besideLabel(1), besideLabel(5));
}

} // namespace
} // namespace velotrine
