#include "audiounit/Presets.h"
#include "engine/VelotrineDSPKernel.h"
#include "tests/support/AllocationCounter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr std::int64_t sampleRate = 48000;
constexpr int block = 480;
constexpr std::int64_t secondsPerDay = 86400;

/// VELOTRINE_SOAK_SECONDS in the environment says how much music each preset plays; a day at most, ten
/// minutes unless told otherwise.
std::int64_t framesToPlay()
{
    const auto* const wanted = std::getenv("VELOTRINE_SOAK_SECONDS");
    const auto seconds =
        wanted != nullptr ? std::clamp(std::atoll(wanted), 60LL, 0LL + secondsPerDay) : 600LL;
    return seconds * sampleRate;
}

/// Where in its bar of four quarters a clock is, in turns, by whole numbers alone.
double exactBarPhase(float tempo, std::int64_t frame)
{
    // A float from 32 on is a whole number of these.
    constexpr auto unitsPerQuarter = std::int64_t{1} << 18;
    const auto units = static_cast<std::int64_t>(std::ldexp(tempo, 18));
    constexpr auto unitsPerBar = unitsPerQuarter * 4 * 60 * sampleRate;
    return static_cast<double>(units * frame % unitsPerBar) / static_cast<double>(unitsPerBar);
}

/// How far a clock is from where it should be, in frames.
double framesApart(double phase, double expected, float tempo)
{
    const auto turns = std::remainder(phase - expected, 1.0);
    return std::abs(turns) * 4.0 * 60.0 * static_cast<double>(sampleRate) / static_cast<double>(tempo);
}

class Soak : public ::testing::TestWithParam<std::size_t>
{
protected:
    Soak()
    {
        kernel.setup(block, static_cast<double>(sampleRate));
        const auto& values = presetTable()[GetParam()].values;
        for (ParameterAddress address = 0; address < values.size(); ++address)
            kernel.setParameter(address, values[address]);
        kernel.sync = false;
        kernel.internalPlaying = true;
    }

    void play()
    {
        kernel.process(left.data(), right.data(), block);
        for (const auto& note : kernel.noteEvents())
            longestDecay = std::max(longestDecay, note.decaySeconds);
        notes += kernel.noteEvents().size();
    }

    [[nodiscard]] bool isInBounds() const
    {
        const auto isBounded = [](float sample) { return std::abs(sample) <= 1.0f; };
        return std::ranges::all_of(left, isBounded) && left == right;
    }

    VelotrineDSPKernel kernel;
    std::array<float, block> left{};
    std::array<float, block> right{};
    float longestDecay = 0.0f; ///< seconds
    std::size_t notes = 0;
};

TEST_P(Soak, PlaysForHoursInBoundsAndInTimeAndTakesNoMemory)
{
    const auto tempo = kernel.bpm.load();
    const AllocationCounter allocations;
    for (std::int64_t frame = 0; frame < framesToPlay(); frame += block) {
        // The clock as it stands before the block.
        const auto apart = framesApart(kernel.clockPhase, exactBarPhase(tempo, frame), tempo);
        play();
        if (!isInBounds() || !(apart < 1.0))
            FAIL() << "after " << frame / sampleRate << " s, clock " << apart << " frames off";
    }
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_GT(notes, 60U);

    // A voice that has not ended by now never will.
    kernel.internalPlaying = false;
    const auto framesToRest = static_cast<std::int64_t>(2.0f * longestDecay + 1.0f) * sampleRate;
    for (std::int64_t frame = 0; frame < framesToRest && !kernel.isAtRest(); frame += block)
        play();
    EXPECT_TRUE(kernel.isAtRest());
    EXPECT_TRUE(kernel.voicePool->isSilent());
}

std::string presetName(const ::testing::TestParamInfo<std::size_t>& preset)
{
    std::string name(presetTable()[preset.param].name);
    std::erase_if(name, [](unsigned char c) { return std::isalnum(c) == 0; });
    return name;
}

INSTANTIATE_TEST_SUITE_P(EveryPreset, Soak, ::testing::Range(std::size_t{0}, presetCount), presetName);

} // namespace
} // namespace velotrine
