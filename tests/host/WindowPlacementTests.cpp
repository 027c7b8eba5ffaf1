#include "host/WindowPlacement.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using Area = juce::Rectangle<int>;

const Area screen(0, 0, 1920, 1080);
const Area window(560, 640);

Area beside(Area neighbour)
{
    return placedBeside(neighbour, window, screen);
}

bool fitsWithoutCovering(Area place, Area neighbour, Area onScreen = screen)
{
    return onScreen.contains(place) && !place.intersects(neighbour);
}

TEST(WindowPlacement, RightOfTheOtherWhereThereIsRoom)
{
    const Area neighbour(720, 300, 480, 450);
    EXPECT_GE(beside(neighbour).getX(), neighbour.getRight());
    EXPECT_EQ(beside(neighbour).getY(), neighbour.getY());
    EXPECT_TRUE(fitsWithoutCovering(beside(neighbour), neighbour));
}

TEST(WindowPlacement, AsHighAsTheScreenAllows)
{
    const Area neighbour(100, 600, 480, 450);
    EXPECT_GE(beside(neighbour).getX(), neighbour.getRight());
    EXPECT_EQ(beside(neighbour).getBottom(), screen.getBottom());
}

TEST(WindowPlacement, OtherwiseLeftOfIt)
{
    const Area neighbour(1400, 300, 480, 450);
    EXPECT_LE(beside(neighbour).getRight(), neighbour.getX());
    EXPECT_TRUE(fitsWithoutCovering(beside(neighbour), neighbour));
}

TEST(WindowPlacement, OtherwiseBelowOrAbove)
{
    const Area top(400, 0, 1200, 400);
    EXPECT_GE(beside(top).getY(), top.getBottom());
    EXPECT_TRUE(fitsWithoutCovering(beside(top), top));
    const Area bottom(400, 680, 1200, 400);
    EXPECT_LE(beside(bottom).getBottom(), bottom.getY());
    EXPECT_TRUE(fitsWithoutCovering(beside(bottom), bottom));
}

TEST(WindowPlacement, RoomThatIsJustEnoughIsTaken)
{
    const Area neighbour(0, 0, 1920 - 560, 1080);
    EXPECT_TRUE(fitsWithoutCovering(beside(neighbour), neighbour));
}

TEST(WindowPlacement, WhereNoSideHasRoomTheOtherIsCoveredAsLittleAsPossible)
{
    const Area small(0, 0, 1280, 960);
    const Area middle(400, 250, 480, 450);
    const auto place = placedBeside(middle, window, small);
    EXPECT_TRUE(small.contains(place));
    EXPECT_EQ(place.getRight(), small.getRight());
    const Area aBitLeftOfMiddle(398, 250, 480, 450);
    EXPECT_EQ(placedBeside(aBitLeftOfMiddle, window, small).getRight(), small.getRight());
    const Area aBitRightOfMiddle(402, 250, 480, 450);
    EXPECT_EQ(placedBeside(aBitRightOfMiddle, window, small).getRight(), small.getRight());
    const Area rightOfMiddle(500, 250, 480, 450);
    EXPECT_EQ(placedBeside(rightOfMiddle, window, small).getX(), 0);
}

TEST(WindowPlacement, ASecondScreenIsUsedLikeTheFirst)
{
    const Area second(1920, 0, 1920, 1080);
    const Area neighbour(2000, 300, 480, 450);
    EXPECT_TRUE(fitsWithoutCovering(placedBeside(neighbour, window, second), neighbour, second));
}

TEST(WindowPlacement, OnATinyScreenTheWindowIsMadeToFit)
{
    const Area tiny(0, 0, 500, 600);
    EXPECT_EQ(placedBeside({10, 10, 480, 450}, window, tiny), tiny);
}

} // namespace
} // namespace velotrine
