#include "platform/AUAudioUnitBus.h"

#include "platform/AUError.h"
#include "tests/support/FakeAudioUnit.h"

#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

const AVAudioFormat stereo{44100.0, 2};

const std::vector<AVAudioFormat> impossibleFormats{
    {0.0, 2},
    {-1.0, 2},
    {std::numeric_limits<double>::infinity(), 2},
    {std::numeric_limits<double>::quiet_NaN(), 2},
    {44100.0, 0},
};

TEST(AUAudioUnitBus, HasTheFormatItWasMadeWith)
{
    EXPECT_EQ(AUAudioUnitBus(stereo).format(), stereo);
}

TEST(AUAudioUnitBus, CannotBeMadeWithAnImpossibleFormat)
{
    for (const auto& format : impossibleFormats) {
        try {
            const AUAudioUnitBus bus(format);
            ADD_FAILURE() << format.sampleRate << " Hz, " << format.channelCount << " channels";
        } catch (const AUError& error) {
            EXPECT_EQ(error.status(), kAudioUnitErr_FormatNotSupported);
            EXPECT_STRNE(error.what(), "");
        }
    }
}

TEST(AUAudioUnitBus, TakesANewFormat)
{
    AUAudioUnitBus bus(stereo);
    bus.setFormat({96000.0, 1});
    EXPECT_EQ(bus.format(), (AVAudioFormat{96000.0, 1}));
}

TEST(AUAudioUnitBus, KeepsItsFormatWhenTheNewOneIsImpossible)
{
    AUAudioUnitBus bus(stereo);
    for (const auto& format : impossibleFormats) {
        EXPECT_THROW(bus.setFormat(format), AUError);
        EXPECT_EQ(bus.format(), stereo);
    }
}

class AUAudioUnitBusArrayOfAUnit : public testing::Test
{
protected:
    FakeAudioUnit unit{{}, AudioComponentInstantiationOptions::none};
};

TEST_F(AUAudioUnitBusArrayOfAUnit, KnowsItsOwnerAndItsType)
{
    const AUAudioUnitBusArray inputs(unit, AUAudioUnitBusType::input);
    const AUAudioUnitBusArray outputs(unit, AUAudioUnitBusType::output);
    EXPECT_EQ(&inputs.ownerAudioUnit(), &unit);
    EXPECT_EQ(inputs.busType(), AUAudioUnitBusType::input);
    EXPECT_EQ(outputs.busType(), AUAudioUnitBusType::output);
}

TEST_F(AUAudioUnitBusArrayOfAUnit, IsEmptyWhenNoBussesAreGiven)
{
    EXPECT_EQ(AUAudioUnitBusArray(unit, AUAudioUnitBusType::input).count(), 0U);
}

TEST_F(AUAudioUnitBusArrayOfAUnit, GivesItsBussesInOrderAndSharesThem)
{
    const auto first = std::make_shared<AUAudioUnitBus>(stereo);
    const auto second = std::make_shared<AUAudioUnitBus>(stereo);
    const AUAudioUnitBusArray busses(unit, AUAudioUnitBusType::output, {first, second});
    ASSERT_EQ(busses.count(), 2U);
    EXPECT_EQ(&busses[0], first.get());
    EXPECT_EQ(&busses[1], second.get());
    busses[1].setFormat({48000.0, 2});
    EXPECT_EQ(second->format().sampleRate, 48000.0);
}

TEST_F(AUAudioUnitBusArrayOfAUnit, RefusesAnIndexThatNoBusHas)
{
    const AUAudioUnitBusArray busses(unit, AUAudioUnitBusType::output,
                                     {std::make_shared<AUAudioUnitBus>(stereo)});
    try {
        const auto& bus = busses[1];
        ADD_FAILURE() << bus.format().sampleRate;
    } catch (const AUError& error) {
        EXPECT_EQ(error.status(), kAudioUnitErr_InvalidElement);
        EXPECT_STRNE(error.what(), "");
    }
}

} // namespace
} // namespace velotrine
