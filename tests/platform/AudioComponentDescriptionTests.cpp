#include "platform/AudioComponentDescription.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(FourCharCode, PacksTheFirstFourBytesWithTheFirstOneHighest)
{
    EXPECT_EQ(fourCharCode("augn"), kAudioUnitType_Generator);
    EXPECT_EQ(fourCharCode("VelIx"), fourCharCode("VelI"));
}

TEST(FourCharCode, GivesFewerSignificantBytesForAShorterText)
{
    EXPECT_EQ(fourCharCode(""), 0U);
    EXPECT_EQ(fourCharCode("A"), 0x41U);
    EXPECT_EQ(fourCharCode("\xFF\x01"), 0xFF01U);
}

} // namespace
} // namespace velotrine
