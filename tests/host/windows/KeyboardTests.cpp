// The application's menus and help by keyboard alone.

#include "tests/host/windows/ApplicationTest.h"

namespace velotrine {
namespace {

class ApplicationByKeyboard : public ApplicationTest
{
protected:
    void SetUp() override { launchForUse(); }

    /// The menu whose name in the menu bar looks open.
    [[nodiscard]] std::optional<int> openMenu() const
    {
        const auto seen = picture();
        for (const auto& [menu, x] : {std::pair(0, 4), std::pair(1, secondMenuX)})
            if (seen.getPixelAt(x, 4) != seen.getPixelAt(besideMenus, 4))
                return menu;
        return std::nullopt;
    }

    /// Whether this is the menu that is open, now or soon.
    [[nodiscard]] bool isOpen(std::optional<int> menu) const
    {
        return runMessagesUntil([&] { return openMenu() == menu; }, 5.0);
    }

    static constexpr int secondMenuX = 95;
    static constexpr int besideMenus = 300;
};

TEST_F(ApplicationByKeyboard, F10OpensTheFirstMenuAndEscapeClosesIt)
{
    pressKey("F10");
    ASSERT_TRUE(isOpen(0));
    pressKey("Escape");
    EXPECT_TRUE(isOpen({}));
    EXPECT_TRUE(windowHasKeyboard("Velotrine"));
}

TEST_F(ApplicationByKeyboard, AltAloneOpensTheMenuAndClosesItAgain)
{
    pressKey("alt");
    ASSERT_TRUE(isOpen(0));
    pressKey("alt");
    EXPECT_TRUE(isOpen({}));
}

TEST_F(ApplicationByKeyboard, AltWithAnotherKeyOrHeldForLongOpensNoMenu)
{
    xdotool({"keydown", "alt", "key", "p", "keyup", "alt"});
    runMessagesFor(0.5);
    EXPECT_FALSE(openMenu());
    xdotool({"keydown", "alt", "sleep", "1.5", "keyup", "alt"});
    runMessagesFor(0.5);
    EXPECT_FALSE(openMenu());
}

TEST_F(ApplicationByKeyboard, ArrowsMoveFromMenuToMenuAndWrapAround)
{
    pressKey("F10");
    ASSERT_TRUE(isOpen(0));
    pressKey("Right");
    EXPECT_TRUE(isOpen(1));
    pressKey("Left");
    EXPECT_TRUE(isOpen(0));
    pressKey("Left");
    EXPECT_TRUE(isOpen(1));
    pressKey("Right");
    EXPECT_TRUE(isOpen(0));
}

TEST_F(ApplicationByKeyboard, ArrowsAndReturnChooseAnEntry)
{
    pressKey("F10");
    ASSERT_TRUE(isOpen(0));
    pressKey("Down");
    pressKey("Return"); // About Velotrine
    EXPECT_TRUE(windowHasKeyboard("Velotrine Help"));
    pressKey("Escape");
    ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    pressKey("F10");
    ASSERT_TRUE(isOpen(0));
    pressKey("Up");
    pressKey("Return"); // Quit Velotrine
    EXPECT_EQ(end().exitCode, 0);
}

TEST_F(ApplicationByKeyboard, F1AndTheQuestionMarkOpenHelp)
{
    for (const auto* key : {"F1", "question"}) {
        pressKey(key);
        ASSERT_TRUE(windowHasKeyboard("Velotrine Help")) << key;
        pressKey("Escape");
        ASSERT_TRUE(windowGoes("Velotrine Help"));
        ASSERT_TRUE(windowHasKeyboard("Velotrine"));
    }
}

TEST_F(ApplicationByKeyboard, AQuestionMarkTypedIntoAFieldOpensNoHelp)
{
    const auto field = inWindow(layoutInWindow().bpmField).getCentre();
    click(field.x, field.y);
    pressKey("question");
    runMessagesFor(0.5);
    EXPECT_TRUE(windowsTitled("Velotrine Help").empty());
    pressKey("F1");
    EXPECT_TRUE(windowHasKeyboard("Velotrine Help"));
}

TEST_F(ApplicationByKeyboard, TheHelpWindowsKeysAreItsOwn)
{
    pressKey("F1");
    ASSERT_TRUE(windowHasKeyboard("Velotrine Help"));
    xdotool({"windowmove", "--sync", window("Velotrine Help"), "900", "300"}); // off the menu bar
    pressKey("F10");
    pressKey("alt");
    runMessagesFor(0.5);
    EXPECT_FALSE(openMenu());
    EXPECT_TRUE(windowHasKeyboard("Velotrine Help"));
}

} // namespace
} // namespace velotrine
