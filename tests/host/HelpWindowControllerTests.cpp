#include "host/HelpWindowController.h"

#include "editor/Colours.h"
#include "tests/host/Mouse.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

class HelpWindowControllerTest : public testing::Test
{
protected:
    [[nodiscard]] std::vector<int> visiblePages() const
    {
        std::vector<int> visible;
        for (int index = 0; index < static_cast<int>(controller.pages.size()); ++index)
            if (controller.pages[static_cast<std::size_t>(index)]->isVisible())
                visible.push_back(index);
        return visible;
    }

    HelpWindowController controller;
};

TEST_F(HelpWindowControllerTest, OpensAtAbout)
{
    EXPECT_EQ(controller.segmented->selectedSegment(), 0);
    EXPECT_THAT(visiblePages(), testing::ElementsAre(0));
}

TEST_F(HelpWindowControllerTest, HasASegmentForEachPage)
{
    EXPECT_EQ(controller.segmented->segmentCount(), 8);
    EXPECT_EQ(controller.pages.size(), 8u);
    EXPECT_EQ(controller.segmented->getChildComponent(0)->getTitle(), "About");
    EXPECT_EQ(controller.segmented->getChildComponent(3)->getTitle(), "Ring Editor");
    EXPECT_EQ(controller.segmented->getChildComponent(7)->getTitle(), "Etc");
}

TEST_F(HelpWindowControllerTest, AClickedSegmentShowsItsPageAlone)
{
    for (int index = 7; index >= 0; --index) {
        clickAt(controller.contentView(),
                controller.segmented->getPosition() + controller.segmented->segmentBounds(index).getCentre());
        EXPECT_THAT(visiblePages(), testing::ElementsAre(index));
    }
}

TEST_F(HelpWindowControllerTest, ShowPageMovesTheSegmentToo)
{
    controller.showPage(5);
    EXPECT_EQ(controller.segmented->selectedSegment(), 5);
    EXPECT_THAT(visiblePages(), testing::ElementsAre(5));
}

TEST_F(HelpWindowControllerTest, IgnoresAPageOutOfRange)
{
    controller.showPage(4);
    controller.showPage(8);
    controller.showPage(-1);
    EXPECT_EQ(controller.segmented->selectedSegment(), 4);
    EXPECT_THAT(visiblePages(), testing::ElementsAre(4));
}

TEST_F(HelpWindowControllerTest, TheWindowHas560By620PointsOfContent)
{
    EXPECT_EQ(controller.contentView().getWidth(), 560);
    EXPECT_EQ(controller.contentView().getHeight(), 620);
    EXPECT_EQ(controller.window().getName(), "Velotrine Help");
    EXPECT_TRUE(controller.window().isResizable());
}

TEST_F(HelpWindowControllerTest, SegmentsAre14BelowTheTopInTheMiddleAndPages14BelowThem)
{
    for (const auto& [width, height] : {std::pair{420, 480}, std::pair{560, 620}, std::pair{900, 800}}) {
        controller.contentView().setSize(width, height);
        const auto& segmented = *controller.segmented;
        EXPECT_EQ(segmented.getY(), 14);
        EXPECT_NEAR(segmented.getX(), width - segmented.getRight(), 1);
        EXPECT_GE(segmented.getX(), 0);
        EXPECT_EQ(controller.pageContainer->getBounds(),
                  juce::Rectangle<int>(0, 0, width, height).withTop(segmented.getBottom() + 14));
        for (const auto& page : controller.pages)
            EXPECT_EQ(page->getBounds(), controller.pageContainer->getLocalBounds());
    }
}

TEST_F(HelpWindowControllerTest, ItsBackgroundIsDark)
{
    auto& content = controller.contentView();
    const auto picture = content.createComponentSnapshot(content.getLocalBounds());
    EXPECT_EQ(picture.getPixelAt(2, 2), grey(0.18f));
    EXPECT_EQ(picture.getPixelAt(2, 600), grey(0.18f));
}

TEST_F(HelpWindowControllerTest, KeysThatTheSegmentsDoNotUseScrollThePage)
{
    controller.contentView().setSize(420, 480);
    controller.showPage(3);
    EXPECT_TRUE(controller.contentView().keyPressed(juce::KeyPress(juce::KeyPress::downKey)));
    controller.showPage(0);
    EXPECT_FALSE(controller.contentView().keyPressed(juce::KeyPress(juce::KeyPress::downKey)));
}

TEST_F(HelpWindowControllerTest, EscapeAndCtrlWCloseTheWindowAndNothingElseDoes)
{
    int closings = 0;
    controller.window().onClosed = [&closings] { ++closings; };
    EXPECT_TRUE(controller.window().keyPressed(juce::KeyPress(juce::KeyPress::escapeKey)));
    EXPECT_EQ(closings, 1);
    EXPECT_TRUE(controller.window().keyPressed(juce::KeyPress('w', juce::ModifierKeys::commandModifier, 0)));
    EXPECT_EQ(closings, 2);
    EXPECT_FALSE(controller.window().keyPressed(juce::KeyPress('w')));
    EXPECT_EQ(closings, 2);
}

TEST_F(HelpWindowControllerTest, KeepsItsPageWhileTheWindowIsClosed)
{
    controller.showPage(6);
    controller.window().closeButtonPressed();
    EXPECT_EQ(controller.segmented->selectedSegment(), 6);
    EXPECT_THAT(visiblePages(), testing::ElementsAre(6));
}

} // namespace
} // namespace velotrine
