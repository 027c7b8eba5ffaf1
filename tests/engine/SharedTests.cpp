#include "engine/Shared.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(Shared, IsNoLargerThanTheValueItHolds)
{
    EXPECT_EQ(sizeof(Shared<float>), sizeof(float));
    EXPECT_EQ(sizeof(Shared<double>), sizeof(double));
    EXPECT_EQ(sizeof(Shared<bool>), sizeof(bool));
    EXPECT_EQ(sizeof(Shared<std::int64_t>), sizeof(std::int64_t));
}

TEST(Shared, ReadsBackWhatWasWrittenLast)
{
    Shared<float> value{0.25f};
    EXPECT_EQ(value, 0.25f);
    value = 0.75f;
    EXPECT_EQ(value.load(), 0.75f);
}

} // namespace
} // namespace velotrine
