#include "tests/plugin/Lv2Host.h"

#include "audiounit/Parameters.h"

#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr auto volume = addressOf(GlobalParameter::volume);

class Lv2State : public testing::Test
{
protected:
    Lv2Library library;
};

/// A value for every parameter, with more digits than a session keeps of a port.
std::array<float, parameterCount> someValues()
{
    std::array<float, parameterCount> values{};
    for (const auto& parameter : parameterTable())
        values[parameter.address] =
            parameter.minValue + 0.37123456f * (parameter.maxValue - parameter.minValue);
    return values;
}

std::string someState(const Lv2Library& library)
{
    Lv2Host host(library);
    host.start();
    host.controls = someValues();
    host.runUnheard(32);
    return host.save();
}

TEST_F(Lv2State, RestoresAStringWithOrWithoutItsEnd)
{
    const auto saved = someState(library);
    Lv2Host host(library);
    EXPECT_NE(host.save(), saved);
    EXPECT_EQ(host.restore(saved), LV2_STATE_SUCCESS);
    EXPECT_EQ(host.save(), saved);
    Lv2Host another(library);
    EXPECT_EQ(another.restore(saved, LV2_ATOM__String), LV2_STATE_SUCCESS);
    EXPECT_EQ(another.save(), saved);
}

TEST_F(Lv2State, ARestoredStateStaysThoughThePortsStillShowTheOldValues)
{
    const auto saved = someState(library);
    Lv2Host fresh(library);
    ASSERT_EQ(fresh.restore(saved), LV2_STATE_SUCCESS);
    fresh.start();
    fresh.runUnheard(100);
    EXPECT_EQ(fresh.save(), saved);

    Lv2Host host(library);
    host.start();
    host.controls[volume] = 0.11f;
    host.runUnheard(100);
    ASSERT_EQ(host.restore(saved), LV2_STATE_SUCCESS);
    host.runUnheard(100);
    EXPECT_EQ(host.save(), saved);
    host.controls[volume] = 0.12f;
    host.runUnheard(100);
    EXPECT_NE(host.save(), saved);
}

TEST_F(Lv2State, AHostThatRestoresPortsAndStateGetsTheStateToTheLastDigitInEitherOrder)
{
    const auto saved = someState(library);
    for (const bool stateFirst : {true, false}) {
        Lv2Host host(library);
        host.start();
        host.runUnheard(100);
        if (stateFirst) {
            ASSERT_EQ(host.restore(saved), LV2_STATE_SUCCESS);
        }
        for (ParameterAddress address = 0; address < parameterCount; ++address)
            host.controls[address] = std::stof(std::to_string(someValues()[address]));
        if (!stateFirst) {
            host.runUnheard(100);
            EXPECT_NE(host.save(), saved);
            ASSERT_EQ(host.restore(saved), LV2_STATE_SUCCESS);
        }
        host.runUnheard(100);
        EXPECT_EQ(host.save(), saved);
    }
}

TEST_F(Lv2State, SaysInTheHostsLogWhyAStateIsRefused)
{
    Lv2Host host(library);
    host.start();
    host.controls[volume] = 0.125f;
    host.runUnheard(32);
    const auto before = host.save();
    for (const auto& state : {std::string(), std::string("no state"), before.substr(0, 100),
                              std::string(2000000, ' '), std::string(100, '\0')}) {
        host.logged.clear();
        EXPECT_EQ(host.restore(state), LV2_STATE_ERR_UNKNOWN);
        ASSERT_EQ(host.logged.size(), 1u);
        EXPECT_TRUE(host.logged[0].starts_with("Velotrine: The state is refused: ")) << host.logged[0];
        EXPECT_EQ(host.save(), before);
    }
    host.logged.clear();
    EXPECT_EQ(host.restore(before, LV2_ATOM__Int), LV2_STATE_ERR_BAD_TYPE);
    EXPECT_EQ(host.logged, std::vector<std::string>{"Velotrine: The state is refused: it is not a text.\n"});
}

} // namespace
} // namespace velotrine
