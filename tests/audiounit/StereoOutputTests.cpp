#include "audiounit/StereoOutput.h"

#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(StereoOutput, FromALaterFrameIsTheRestOfBothChannels)
{
    std::vector<float> left(4);
    std::vector<float> right(4);
    const auto rest = StereoOutput{left.data(), right.data()}.from(3);
    EXPECT_EQ(rest.left, &left[3]);
    EXPECT_EQ(rest.right, &right[3]);
}

TEST(StereoOutput, LacksFromALaterFrameOnWhatItLacks)
{
    std::vector<float> channel(4);
    EXPECT_EQ((StereoOutput{channel.data(), nullptr}.from(3).right), nullptr);
    EXPECT_EQ((StereoOutput{nullptr, channel.data()}.from(3).left), nullptr);
}

TEST(StereoOutput, ClearsAsManyFramesAsItIsToldOfTheChannelsThatItHas)
{
    std::vector<float> left(3, 1.0f);
    std::vector<float> right(3, 1.0f);
    StereoOutput{left.data(), right.data()}.clear(2);
    EXPECT_EQ(left, (std::vector{0.0f, 0.0f, 1.0f}));
    EXPECT_EQ(right, left);
    StereoOutput{nullptr, right.data()}.clear(3);
    EXPECT_EQ(right.back(), 0.0f);
    StereoOutput{}.clear(3);
}

} // namespace
} // namespace velotrine
