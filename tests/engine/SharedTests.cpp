#include "engine/Shared.h"

#include "engine/VelotrineDSPKernel.h"

#include <atomic>
#include <cstdint>
#include <type_traits>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(Shared, IsNoLargerThanTheValueItHolds)
{
    EXPECT_EQ(sizeof(Shared<float>), sizeof(float));
    EXPECT_EQ(sizeof(Shared<double>), sizeof(double));
    EXPECT_EQ(sizeof(Shared<bool>), sizeof(bool));
    EXPECT_EQ(sizeof(Shared<std::int64_t>), sizeof(std::int64_t));
    EXPECT_EQ(sizeof(Shared<std::uint64_t>), sizeof(std::uint64_t));
}

TEST(Shared, NeverWaitsForALock)
{
    EXPECT_TRUE(std::atomic<float>::is_always_lock_free);
    EXPECT_TRUE(std::atomic<double>::is_always_lock_free);
    EXPECT_TRUE(std::atomic<bool>::is_always_lock_free);
    EXPECT_TRUE(std::atomic<std::int64_t>::is_always_lock_free);
    EXPECT_TRUE(std::atomic<std::uint64_t>::is_always_lock_free);
}

template <typename T, typename Member>
constexpr bool isShared = std::is_same_v<std::remove_cvref_t<Member>, Shared<T>>;

TEST(Shared, HoldsAllOfTheKernelThatSeveralThreadsTouch)
{
    VelotrineDSPKernel kernel;
    EXPECT_TRUE((isShared<float, decltype(kernel.activity)>));
    EXPECT_TRUE((isShared<float, decltype(kernel.boredom)>));
    EXPECT_TRUE((isShared<float, decltype(kernel.calories)>));
    EXPECT_TRUE((isShared<float, decltype(kernel.drudgery)>));
    EXPECT_TRUE((isShared<float, decltype(kernel.rootNote)>));
    EXPECT_TRUE((isShared<float, decltype(kernel.scaleType)>));
    EXPECT_TRUE((isShared<float, decltype(kernel.bpm)>));
    EXPECT_TRUE((isShared<float, decltype(kernel.volume)>));
    EXPECT_TRUE((isShared<bool, decltype(kernel.sync)>));
    EXPECT_TRUE((isShared<bool, decltype(kernel.internalPlaying)>));
    EXPECT_TRUE((isShared<std::int64_t, decltype(kernel.spotCounts[0])>));
    EXPECT_TRUE((isShared<float, decltype(kernel.phaseOffsets[0])>));
    EXPECT_TRUE((isShared<float, decltype(kernel.probabilities[0])>));
    EXPECT_TRUE((isShared<std::int64_t, decltype(kernel.ringOctaves[0])>));
    EXPECT_TRUE((isShared<float, decltype(kernel.ringVolumes[0])>));
    EXPECT_TRUE((isShared<float, decltype(kernel.ringTimbres[0])>));
    EXPECT_TRUE((isShared<std::uint64_t, decltype(kernel.spotFireTimes[0])>));
    EXPECT_TRUE((isShared<double, decltype(kernel.clockPhaseBuf)>));
    EXPECT_TRUE((isShared<double, decltype(kernel.activityPhases[0])>));
    EXPECT_TRUE((isShared<double, decltype(kernel.lfoOffsets[0])>));
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
