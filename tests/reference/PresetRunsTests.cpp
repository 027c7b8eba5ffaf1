#include "audiounit/Presets.h"
#include "tests/reference/SideBySide.h"

#include <cctype>
#include <cstddef>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr int secondsPlayed = 60;
constexpr int block = 512;

class PresetRun : public ::testing::TestWithParam<std::tuple<std::size_t, int>>
{};

TEST_P(PresetRun, IsAudibleWithinFullScaleAndWhatTheTranscriptionPlays)
{
    const auto [number, sampleRate] = GetParam();
    SideBySide players{block, static_cast<double>(sampleRate)};
    const auto& values = presetTable()[number].values;
    for (ParameterAddress address = 0; address < values.size(); ++address)
        players.set(address, values[address]);
    players.set(GlobalParameter::sync, 0.0f);
    players.setInternalPlaying(true);

    for (int frame = 0; frame < secondsPlayed * sampleRate; frame += block) {
        const auto difference = players.process(block);
        ASSERT_FALSE(difference) << *difference;
    }
    EXPECT_GT(players.notesFired(), 0U);
    EXPECT_GT(players.peak(), 0.05f);
    EXPECT_LE(players.peak(), 1.0f);
}

std::string runName(const ::testing::TestParamInfo<PresetRun::ParamType>& run)
{
    const auto [number, sampleRate] = run.param;
    std::string name(presetTable()[number].name);
    std::erase_if(name, [](unsigned char c) { return std::isalnum(c) == 0; });
    return name + "At" + std::to_string(sampleRate);
}

INSTANTIATE_TEST_SUITE_P(EveryPreset, PresetRun,
                         ::testing::Combine(::testing::Range(std::size_t{0}, presetCount),
                                            ::testing::Values(44100, 48000, 96000)),
                         runName);

} // namespace
} // namespace velotrine
