#include "render/NearestName.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(NearestName, IsTheOneWithTheFewestLettersToChange)
{
    EXPECT_EQ(nearestName("activty", {"boredom", "activity", "calories"}), "activity");
    EXPECT_EQ(nearestName("RINGVOLR3", {"ringVolR1", "ringVolR3"}), "ringVolR3");
}

TEST(NearestName, IsEmptyWhenNothingIsNear)
{
    EXPECT_EQ(nearestName("xyzzy", {"activity", "boredom"}), "");
}

} // namespace
} // namespace velotrine
