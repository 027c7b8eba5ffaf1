#include "audiounit/CycleRenderer.h"

#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(CycleRenderer, FillsTheOutputWithSilenceWhenTheUnitRefuses)
{
    CycleRenderer renderer;
    renderer.setup([](auto...) -> AUAudioUnitStatus { return kAudioUnitErr_Uninitialized; });
    std::vector<float> left(10, 1.0f);
    std::vector<float> right(10, 1.0f);
    EXPECT_EQ(renderer.render(left.data(), right.data(), 10), kAudioUnitErr_Uninitialized);
    EXPECT_EQ(left, std::vector<float>(10, 0.0f));
    EXPECT_EQ(right, std::vector<float>(10, 0.0f));
}

} // namespace
} // namespace velotrine
