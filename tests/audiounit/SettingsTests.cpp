#include "audiounit/Settings.h"

#include "audiounit/Parameters.h"
#include "audiounit/VelotrineAudioUnit.h"
#include "audiounit/VelotrineComponent.h"

#include <gtest/gtest.h>

#include <limits>

namespace velotrine {
namespace {

constexpr auto boredom = addressOf(GlobalParameter::boredom);
constexpr auto bpm = addressOf(GlobalParameter::bpm);

Settings someSettings()
{
    Settings settings{.preset = AUAudioUnitPreset{2, "Two"}, .seed = 9, .sameMusicAtEveryStart = true};
    for (const auto& info : parameterTable())
        settings.values[info.address] = info.minValue;
    return settings;
}

TEST(Settings, ComeBackFromTheirState)
{
    const auto settings = someSettings();
    EXPECT_EQ(settingsFromState(stateFromSettings(settings), {}), settings);
}

TEST(Settings, AreWhatTheAudioUnitMakesOfTheirState)
{
    VelotrineAudioUnit unit(velotrineComponentDescription(), AudioComponentInstantiationOptions::none);
    unit.setFullState(stateFromSettings(someSettings()));
    EXPECT_EQ(settingsFromState(unit.fullState(), {}), someSettings());
    EXPECT_EQ(unit.fullState(), stateFromSettings(someSettings()));
}

TEST(Settings, OfAStateAreBoundedAndTheOthersAreTheBases)
{
    AUFullState state;
    state.parameters = {
        {"bpm", 1000.0f}, {"activity", std::numeric_limits<float>::quiet_NaN()}, {"no", 1.0f}};
    auto expected = someSettings();
    expected.values[bpm] = 300.0f;
    expected.preset.reset();
    expected.seed = defaultSeed;
    expected.sameMusicAtEveryStart = false;
    EXPECT_EQ(settingsFromState(state, someSettings()), expected);
}

TEST(Settings, AChangeNamesOnlyWhatDiffers)
{
    const auto from = someSettings();
    auto to = from;
    to.values[boredom] = 0.25f;
    const auto state = stateThatChanges(from, to);
    EXPECT_EQ(state.parameters, (decltype(state.parameters){{"boredom", 0.25f}}));
    EXPECT_EQ(state.currentPreset, to.preset);
    EXPECT_EQ(settingsFromState(state, from), to);
}

} // namespace
} // namespace velotrine
