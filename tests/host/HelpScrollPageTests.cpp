#include "host/HelpScrollPage.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

class HelpScrollPageTest : public testing::TestWithParam<std::size_t>
{
protected:
    [[nodiscard]] juce::ScrollBar& scrollBar() { return page.scrollView().getVerticalScrollBar(); }

    bool press(int key)
    {
        const auto used = page.keyPressed(juce::KeyPress(key));
        scrollBar().handleUpdateNowIfNeeded();
        return used;
    }

    [[nodiscard]] int position() { return page.scrollView().getViewPositionY(); }

    [[nodiscard]] int lowestPosition() { return page.documentView().getHeight() - page.getHeight(); }

    HelpScrollPage page{helpContentPages().at(GetParam())};
};

TEST_P(HelpScrollPageTest, TheColumnIs28FromEachSideUpTo520AndThen464WideInTheMiddle)
{
    for (int width = 300; width <= 1000; ++width) {
        page.documentView().setSize(width, 800);
        const auto column = page.documentView().column();
        EXPECT_EQ(column.getX(), width < 520 ? 28 : (width - 464) / 2);
        EXPECT_EQ(column.getWidth(), width < 520 ? width - 56 : 464);
        EXPECT_NEAR(column.getX(), width - column.getRight(), 1);
    }
}

TEST_P(HelpScrollPageTest, EverythingIsAsWideAsTheColumnAnd8PointsApart)
{
    page.setSize(560, 562);
    const auto& document = page.documentView();
    const auto column = document.column();
    for (int index = 0; index < document.getNumChildComponents(); ++index) {
        const auto* item = document.getChildComponent(index);
        EXPECT_EQ(item->getX(), column.getX());
        EXPECT_EQ(item->getWidth(), column.getWidth());
        const auto* above = index > 0 ? document.getChildComponent(index - 1) : nullptr;
        EXPECT_EQ(item->getY(), above != nullptr ? above->getBottom() + 8 : 24);
    }
    EXPECT_EQ(document.getChildren().getLast()->getBottom(), document.getHeight() - 32);
}

TEST_P(HelpScrollPageTest, NeverScrollsSideways)
{
    for (const auto& [width, height] :
         {std::pair{420, 422}, std::pair{560, 562}, std::pair{900, 742}, std::pair{420, 120}}) {
        page.setSize(width, height);
        EXPECT_FALSE(page.scrollView().getHorizontalScrollBar().isVisible());
        EXPECT_EQ(page.documentView().getX(), 0);
        EXPECT_LE(page.documentView().getWidth(), page.scrollView().getMaximumVisibleWidth());
        EXPECT_EQ(scrollBar().isVisible(), page.documentView().getHeight() > page.getHeight());
    }
}

TEST_P(HelpScrollPageTest, TextsWrapToMoreLinesInANarrowerPage)
{
    EXPECT_GT(page.documentView().heightForWidth(300), page.documentView().heightForWidth(520));
    EXPECT_EQ(page.documentView().heightForWidth(900), page.documentView().heightForWidth(520));
}

TEST_P(HelpScrollPageTest, KeysScroll)
{
    page.setSize(420, 160);
    EXPECT_TRUE(press(juce::KeyPress::downKey));
    EXPECT_EQ(position(), 20);
    press(juce::KeyPress::upKey);
    EXPECT_EQ(position(), 0);
    press(juce::KeyPress::pageDownKey);
    EXPECT_EQ(position(), std::min(160, lowestPosition()));
    press(juce::KeyPress::endKey);
    EXPECT_EQ(position(), lowestPosition());
    press(juce::KeyPress::homeKey);
    EXPECT_EQ(position(), 0);
    press(juce::KeyPress::endKey);
    press(juce::KeyPress::pageUpKey);
    EXPECT_EQ(position(), std::max(0, lowestPosition() - 160));
}

TEST_P(HelpScrollPageTest, OtherKeysAreNotUsed)
{
    page.setSize(420, 160);
    EXPECT_FALSE(press(juce::KeyPress::leftKey));
    EXPECT_FALSE(press(juce::KeyPress::rightKey));
    EXPECT_FALSE(press(juce::KeyPress::escapeKey));
}

INSTANTIATE_TEST_SUITE_P(Pages, HelpScrollPageTest, testing::Range(std::size_t{0}, std::size_t{7}));

} // namespace
} // namespace velotrine
