// Nothing is drawn that nobody can see.

#include "editor/ConcentricCirclesViewMac.h"
#include "tests/host/windows/Hands.h"

namespace velotrine {
namespace {

class PlayingWindow : public Hands
{
protected:
    void SetUp() override
    {
        Hands::SetUp();
        keys({"space"});
        ASSERT_TRUE(turns());
    }

    /// Whether the hand is drawn at another place before long.
    [[nodiscard]] bool turns() const
    {
        const auto& rings = *editor().circlesView;
        const auto before = rings.displayedClockPhase;
        return runMessagesUntil([&] { return rings.displayedClockPhase != before; }, 0.5);
    }

    [[nodiscard]] static std::string own() { return windowsTitled("Hands").at(0); }
};

TEST_F(PlayingWindow, ThatIsMinimisedDrawsNothingUntilItComesBack)
{
    xdotool({"windowminimize", "--sync", own()});
    EXPECT_TRUE(soon([&] { return !turns(); }));
    EXPECT_FALSE(turns());
    window->setMinimised(false);
    EXPECT_TRUE(soon([&] { return turns(); }));
}

TEST_F(PlayingWindow, ThatAnotherCoversDrawsNothingUntilAnyOfItIsInSight)
{
    juce::Component content;
    HostWindow cover("Cover", juce::Colours::black, content);
    cover.setContentSize(700, 700);
    cover.show();
    ASSERT_TRUE(windowHasKeyboard("Cover"));
    const auto place = boundsOfWindow(own());
    const auto moveTo = [](juce::Point<int> corner) {
        xdotool(
            {"windowmove", windowsTitled("Cover").at(0), std::to_string(corner.x), std::to_string(corner.y)});
    };
    moveTo(place.getTopLeft().translated(-40, -40));
    EXPECT_TRUE(soon([&] { return !turns(); }));
    EXPECT_FALSE(turns());
    moveTo(place.getTopLeft().translated(100, 0));
    EXPECT_TRUE(soon([&] { return turns(); }));
}

} // namespace
} // namespace velotrine
