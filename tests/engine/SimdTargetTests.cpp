#include "engine/SimdTarget.h"
#include "engine/SoftClip.h"
#include "tests/support/SimdTargetGuard.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr int ramp = 4096;

/// A ramp from -2 to 2, soft-clipped.
std::array<float, ramp> clippedRamp()
{
    std::array<float, ramp> mix{};
    for (std::size_t i = 0; i < mix.size(); ++i)
        mix[i] = static_cast<float>(i) / 1024.0f - 2.0f;
    std::array<float, ramp> clipped{};
    softClip(mix.data(), 1.0f, clipped.data(), clipped.data(), ramp);
    return clipped;
}

/// The last bits of many soft-clipped samples, which tell instruction sets with a fused multiply-add from
/// those without.
std::uint64_t fingerprint()
{
    std::uint64_t bits = 0;
    for (const float sample : clippedRamp())
        bits = bits * 31 + std::bit_cast<std::uint32_t>(sample);
    return bits;
}

bool fuses(const SimdTarget& target)
{
    return target.name == "AVX2" || target.name.starts_with("AVX3");
}

TEST(SimdTarget, ThereIsAtLeastOne)
{
    EXPECT_FALSE(availableSimdTargets().empty());
}

TEST(SimdTarget, TheFastestComesFirst)
{
    const std::array<std::string, 15> fastestFirst{
        "AVX3_SPR", "AVX3_ZEN4", "AVX3_DL", "AVX3", "AVX2", "SSE4",   "SSSE3",  "SSE2",
        "SVE2_128", "SVE_256",   "SVE2",    "SVE",  "NEON", "EMU128", "SCALAR",
    };
    std::ptrdiff_t lastPlace = -1;
    for (const SimdTarget& target : availableSimdTargets()) {
        const auto place = std::distance(fastestFirst.begin(), std::ranges::find(fastestFirst, target.name));
        ASSERT_LT(place, std::ssize(fastestFirst)) << target.name << " is not known";
        EXPECT_GT(place, lastPlace) << target.name;
        lastPlace = place;
    }
}

TEST(SimdTarget, TheFirstIsUsedByDefault)
{
    const SimdTargetGuard guard;
    const std::uint64_t byDefault = fingerprint();
    forceSimdTarget(availableSimdTargets().front());
    EXPECT_EQ(fingerprint(), byDefault);
}

TEST(SimdTarget, AskingWhichThereAreChangesNeitherTheAnswerNorTheChoice)
{
    const SimdTargetGuard guard;
    const auto& targets = availableSimdTargets();
    forceSimdTarget(targets.back());
    const std::uint64_t forced = fingerprint();
    const auto& targetsAgain = availableSimdTargets();
    EXPECT_EQ(fingerprint(), forced);
    ASSERT_EQ(targetsAgain.size(), targets.size());
    for (std::size_t i = 0; i < targets.size(); ++i)
        EXPECT_EQ(targetsAgain[i].id, targets[i].id);
}

TEST(SimdTarget, EachCanBeForcedAndSoftClips)
{
    const SimdTargetGuard guard;
    for (const SimdTarget& target : availableSimdTargets()) {
        SCOPED_TRACE(target.name);
        forceSimdTarget(target);
        const auto clipped = clippedRamp();
        for (std::size_t i = 0; i < clipped.size(); ++i)
            ASSERT_NEAR(clipped[i], std::tanh(static_cast<float>(i) / 1024.0f - 2.0f), 3.0e-7f);
    }
}

TEST(SimdTarget, ForcingOneTakesEffectInTheLastBits)
{
    const SimdTargetGuard guard;
    const auto& targets = availableSimdTargets();
    for (const SimdTarget& one : targets)
        for (const SimdTarget& other : targets) {
            forceSimdTarget(one);
            const std::uint64_t fingerprintOfOne = fingerprint();
            forceSimdTarget(other);
            EXPECT_EQ(fingerprint() == fingerprintOfOne, fuses(one) == fuses(other))
                << one.name << " and " << other.name;
        }
}

} // namespace
} // namespace velotrine
