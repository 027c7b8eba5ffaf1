#include "engine/ClockPhases.h"
#include "engine/SimdTarget.h"
#include "tests/reference/SideBySide.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <numbers>
#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// The last bits of many sines, which tell instruction sets with a fused multiply-add from those without.
std::uint64_t fingerprint()
{
    std::uint64_t bits = 0;
    ClockPhases phases;
    for (int i = 0; i < 1000; ++i) {
        for (std::size_t place = 0; place < ClockPhases::places; ++place)
            phases.rising[place] = static_cast<double>(i) / 1000.0 + static_cast<double>(place) / 8191.0;
        for (const double sine : phases.risingSines())
            bits = bits * 31 + std::bit_cast<std::uint64_t>(sine);
    }
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
    const auto targets = availableSimdTargets();
    forceSimdTarget(targets.back());
    const std::uint64_t forced = fingerprint();
    const auto targetsAgain = availableSimdTargets();
    EXPECT_EQ(fingerprint(), forced);
    ASSERT_EQ(targetsAgain.size(), targets.size());
    for (std::size_t i = 0; i < targets.size(); ++i)
        EXPECT_EQ(targetsAgain[i].id, targets[i].id);
}

TEST(SimdTarget, EachCanBeForcedAndKnowsItsSines)
{
    const SimdTargetGuard guard;
    for (const SimdTarget& target : availableSimdTargets()) {
        SCOPED_TRACE(target.name);
        forceSimdTarget(target);
        ClockPhases phases;
        for (int i = 0; i < 1000; ++i) {
            phases.rising.fill(static_cast<double>(i) / 1000.0);
            for (const double sine : phases.risingSines())
                ASSERT_NEAR(sine, std::sin(2.0 * std::numbers::pi * phases.rising[0]), 1.0e-13);
        }
    }
}

TEST(SimdTarget, ForcingOneTakesEffectInTheLastBitsOfASine)
{
    const SimdTargetGuard guard;
    const auto targets = availableSimdTargets();
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
