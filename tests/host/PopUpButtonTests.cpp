#include "host/PopUpButton.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

class PopUpButtonTest : public testing::Test
{
protected:
    PopUpButtonTest()
    {
        button.addItem("first", 1);
        button.addItem("second", 2);
        button.onChange = [this] { ++choices; };
    }

    PopUpButton button;
    int choices = 0;
};

TEST_F(PopUpButtonTest, ReportsEveryChoiceEvenTheSameAgain)
{
    button.choose(2);
    button.choose(2);
    EXPECT_EQ(choices, 2);
    EXPECT_EQ(button.getText(), "second");
}

TEST_F(PopUpButtonTest, AMenuClosedWithoutAChoiceChoosesNothing)
{
    button.choose(1);
    button.choose(0);
    EXPECT_EQ(choices, 1);
    EXPECT_EQ(button.getText(), "first");
}

} // namespace
} // namespace velotrine
