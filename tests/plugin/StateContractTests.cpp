#include "tests/plugin/PluginContract.h"

#include "audiounit/Parameters.h"
#include "plugin/ThreadChecks.h"
#include "tests/plugin/Repeatedly.h"

#include <atomic>
#include <cmath>
#include <random>
#include <string>

namespace velotrine {
namespace {

template <typename Plugin>
class StateContract : public testing::Test
{};

TYPED_TEST_SUITE(StateContract, EveryFormat, FormatNames);

/// A value for every parameter that is not its initial one.
void setAllValues(PluginUnderTest& plugin)
{
    for (const auto& parameter : parameterTable()) {
        const auto value = static_cast<double>(parameter.minValue) +
                           0.37 * static_cast<double>(parameter.maxValue - parameter.minValue);
        plugin.setValue(parameter.address, parameter.isDiscrete() ? std::ceil(value) : value);
    }
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    playedBy(plugin, 32);
}

TYPED_TEST(StateContract, SavesTheSameBytesAfterLoadingThem)
{
    TypeParam first;
    setAllValues(first);
    const auto saved = first.save();
    TypeParam second;
    EXPECT_NE(second.save(), saved);
    EXPECT_TRUE(second.load(saved));
    EXPECT_EQ(second.save(), saved);
    for (const auto& parameter : parameterTable())
        EXPECT_FLOAT_EQ(static_cast<float>(second.value(parameter.address)),
                        static_cast<float>(first.value(parameter.address)))
            << parameter.name;
}

TYPED_TEST(StateContract, TakesValuesBeforeItIsStarted)
{
    TypeParam plugin;
    plugin.setValue(addressOf(GlobalParameter::volume), 0.25);
    plugin.setValue(addressOf(RingParameter::spots, 0), 12.0);
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    playedBy(plugin, 32);
    EXPECT_EQ(plugin.value(addressOf(GlobalParameter::volume)), 0.25);
    EXPECT_EQ(plugin.value(addressOf(RingParameter::spots, 0)), 12.0);
    EXPECT_TRUE(plugin.edits().empty());
}

TYPED_TEST(StateContract, LoadingItsOwnStateIsNotHeard)
{
    TypeParam undisturbed;
    TypeParam loading;
    ASSERT_TRUE(undisturbed.start(sampleRate, 512));
    ASSERT_TRUE(loading.start(sampleRate, 512));
    bool hasSounded = false;
    for (int block = 0; block < 200; ++block) {
        const auto expected = playedBy(undisturbed, 512, rolling);
        ASSERT_TRUE(playedBy(loading, 512, rolling) == expected) << block;
        ASSERT_TRUE(loading.load(loading.save()));
        hasSounded = hasSounded || !expected.isSilent();
    }
    EXPECT_TRUE(hasSounded);
}

TYPED_TEST(StateContract, ARefusedStateLeavesEverythingAsItWas)
{
    TypeParam plugin;
    setAllValues(plugin);
    const auto before = plugin.save();
    for (const auto& state :
         {std::string(), std::string("no state"), before.substr(0, 100), before.substr(0, before.size() / 2),
          std::string(2000000, ' '), std::string(100, '\0')}) {
        EXPECT_FALSE(plugin.load(state)) << state.substr(0, 20);
        EXPECT_EQ(plugin.save(), before);
    }
}

TYPED_TEST(StateContract, SavesAndLoadsOnAnotherThreadWhileItPlays)
{
    if (checksThreads)
        GTEST_SKIP() << "a debug build stops a host that handles states on another thread than its main one";
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 512));
    const auto saved = plugin.save();
    std::atomic<int> loads{0};
    const Repeatedly keeper([&] {
        EXPECT_TRUE(plugin.load(saved));
        EXPECT_FALSE(plugin.save().empty());
        ++loads;
    });
    const Repeatedly reader([&] {
        for (ParameterAddress address = 0; address < parameterCount; ++address)
            EXPECT_TRUE(std::isfinite(plugin.value(address)));
    });
    std::mt19937 random(1);
    for (int block = 0; block < 300 || loads == 0; ++block) {
        for (int i = 0; i < 16; ++i)
            plugin.setValue(random() % parameterCount, std::uniform_real_distribution(0.0, 5.0)(random));
        EXPECT_TRUE(playedBy(plugin, 512, rolling).isInBounds());
    }
}

} // namespace
} // namespace velotrine
