#include "engine/SoftClip.h"

#include "tests/support/EachSimdTarget.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float hugeValue = std::numeric_limits<float>::max();

struct Channels
{
    std::vector<float> left;
    std::vector<float> right;
};

Channels clipped(const std::vector<float>& mix, float gain)
{
    Channels channels{std::vector<float>(mix.size(), 7.0f), std::vector<float>(mix.size(), 8.0f)};
    softClip(mix.data(), gain, channels.left.data(), channels.right.data(), static_cast<int>(mix.size()));
    return channels;
}

TEST(SoftClip, IsTheHyperbolicTangentOfGainTimesMix)
{
    std::vector<float> mix;
    for (int i = -200000; i <= 200000; ++i)
        mix.push_back(static_cast<float>(i) * 1.0e-4f);
    // Down to the smallest number above 0, and up to the largest.
    for (int exponent = -149; exponent <= 0; ++exponent) {
        const auto tiny = std::ldexp(1.0f, exponent);
        mix.insert(mix.end(), {tiny, -tiny, 1.3f * tiny});
    }
    for (int exponent = 4; exponent < 128; ++exponent) {
        const auto large = std::ldexp(1.0f, exponent);
        mix.insert(mix.end(), {large, -large});
    }

    test::onEachSimdTarget([&mix] {
        for (const float gain : {1.0f, 0.8f, 0.01f, 0.0f, -0.7f}) {
            const auto channels = clipped(mix, gain);
            for (std::size_t i = 0; i < mix.size(); ++i) {
                const double expected = std::tanh(static_cast<double>(gain * mix[i]));
                ASSERT_NEAR(channels.left[i], expected, 3.0e-7) << gain << " x " << mix[i];
                ASSERT_LE(std::abs(channels.left[i]), 1.0f);
            }
            ASSERT_EQ(channels.left, channels.right);
        }
    });
}

TEST(SoftClip, WritesEveryFrameOfAnyLengthAndNoneBeyond)
{
    test::onEachSimdTarget([] {
        for (std::size_t frames = 0; frames <= 70; ++frames) {
            SCOPED_TRACE(frames);
            std::vector<float> mix(frames);
            for (std::size_t i = 0; i < frames; ++i)
                mix[i] = 0.05f * static_cast<float>(i) - 1.5f;
            std::vector<float> left(frames + 20, 99.0f);
            std::vector<float> right(frames + 20, 98.0f);
            softClip(mix.data(), 0.8f, left.data(), right.data(), static_cast<int>(frames));
            for (std::size_t i = 0; i < frames; ++i) {
                EXPECT_NEAR(left[i], std::tanh(0.8 * static_cast<double>(mix[i])), 3.0e-7);
                EXPECT_EQ(left[i], right[i]);
            }
            EXPECT_TRUE(std::all_of(left.begin() + static_cast<std::ptrdiff_t>(frames), left.end(),
                                    [](float untouched) { return untouched == 99.0f; }));
            EXPECT_TRUE(std::all_of(right.begin() + static_cast<std::ptrdiff_t>(frames), right.end(),
                                    [](float untouched) { return untouched == 98.0f; }));
        }
    });
}

TEST(SoftClip, BothChannelsMayBeTheSameMemory)
{
    test::onEachSimdTarget([] {
        for (std::size_t frames = 0; frames <= 70; ++frames) {
            std::vector<float> mix(frames);
            for (std::size_t i = 0; i < frames; ++i)
                mix[i] = 0.03f * static_cast<float>(i);
            std::vector<float> both(frames, 9.0f);
            softClip(mix.data(), 1.0f, both.data(), both.data(), static_cast<int>(frames));
            EXPECT_EQ(both, clipped(mix, 1.0f).left);
        }
    });
}

TEST(SoftClip, ASampleIsTheSameWhereverItStands)
{
    test::onEachSimdTarget([] {
        const std::vector<float> alike(70, 0.7071f);
        const auto channels = clipped(alike, 0.9f);
        EXPECT_EQ(channels.left, std::vector<float>(70, channels.left.front()));
    });
}

TEST(SoftClip, AProductThatIsNotFiniteIsSilentAndItsNeighboursAreNot)
{
    test::onEachSimdTarget([] {
        for (const float bad : {infinity, -infinity, notANumber})
            for (std::size_t place = 0; place < 37; ++place) {
                std::vector<float> mix(37, 0.5f);
                mix[place] = bad;
                const auto channels = clipped(mix, 0.8f);
                for (std::size_t i = 0; i < mix.size(); ++i)
                    ASSERT_NEAR(channels.left[i], i == place ? 0.0 : std::tanh(0.4), 3.0e-7);
                ASSERT_EQ(channels.left[place], 0.0f);
                ASSERT_EQ(channels.left, channels.right);
            }
    });
}

TEST(SoftClip, AGainThatMakesTheProductOverflowIsSilent)
{
    test::onEachSimdTarget([] {
        const std::vector<float> silence(20, 0.0f);
        EXPECT_EQ(clipped(std::vector<float>(20, 0.5f), infinity).left, silence);
        EXPECT_EQ(clipped(std::vector<float>(20, 0.5f), notANumber).left, silence);
        EXPECT_EQ(clipped(std::vector<float>(20, 0.0f), infinity).left, silence);
        EXPECT_EQ(clipped(std::vector<float>(20, hugeValue), 2.0f).left, silence);
        EXPECT_EQ(clipped(std::vector<float>(20, hugeValue), 1.0f).left, std::vector<float>(20, 1.0f));
        EXPECT_EQ(clipped(std::vector<float>(20, -hugeValue), 1.0f).left, std::vector<float>(20, -1.0f));
    });
}

} // namespace
} // namespace velotrine
