// Where the help opens the first time. These tests run on screens of several sizes.

#include "tests/host/windows/ApplicationTest.h"

namespace velotrine {
namespace {

class HelpPlacement : public ApplicationTest
{
protected:
    /// For the window manager's frame, which only it knows exactly.
    static constexpr int slack = 32;

    void SetUp() override
    {
        launch();
        ASSERT_TRUE(windowHasKeyboard("Velotrine Help"));
        runMessagesFor(0.5);
        help = boundsOfWindow(ApplicationTest::window("Velotrine Help"));
        main = boundsOfWindow(ApplicationTest::window("Velotrine"));
    }

    juce::Rectangle<int> screen = juce::Desktop::getInstance().getDisplays().getPrimaryDisplay()->totalArea;
    juce::Rectangle<int> help;
    juce::Rectangle<int> main;
};

TEST_F(HelpPlacement, IsOnTheScreen)
{
    EXPECT_TRUE(screen.contains(help)) << help.toString();
}

TEST_F(HelpPlacement, IsRightOfTheMainWindowWhereThereIsRoomAndElseCoversLittleOfIt)
{
    if (screen.getRight() - main.getRight() > help.getWidth() + slack) {
        EXPECT_FALSE(help.intersects(main)) << help.toString() << " and " << main.toString();
        EXPECT_GT(help.getX(), main.getRight());
        EXPECT_NEAR(help.getY(), main.getY(), 3);
    } else {
        const auto covered = help.getIntersection(main);
        EXPECT_LT(covered.getWidth(), main.getWidth() / 2) << help.toString();
    }
}

} // namespace
} // namespace velotrine
