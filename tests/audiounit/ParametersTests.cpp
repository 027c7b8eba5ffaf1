#include "audiounit/Parameters.h"

#include "tests/support/TestInstrument.h"

#include <cmath>
#include <limits>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

class ParametersOfAnInstrument : public testing::Test
{
protected:
    std::shared_ptr<VelotrineAudioUnit> unit = makeInstrument();
    std::shared_ptr<VelotrineDSPKernel> kernel = unit->dspKernel;
};

TEST_F(ParametersOfAnInstrument, SyncIsOnAboveOneHalfAndOffAtIt)
{
    setValue(*unit, "sync", 0.5f);
    EXPECT_FALSE(kernel->sync);
    EXPECT_EQ(valueOf(*unit, "sync"), 0.0f);
    setValue(*unit, "sync", 0.6f);
    EXPECT_TRUE(kernel->sync);
    EXPECT_EQ(valueOf(*unit, "sync"), 1.0f);
    setValue(*unit, "sync", notANumber);
    EXPECT_FALSE(kernel->sync);
}

TEST_F(ParametersOfAnInstrument, CountsAndOctavesAreCutToWholeNumbers)
{
    setValue(*unit, "spotsR2", 7.9f);
    setValue(*unit, "octaveR5", -2.9f);
    EXPECT_EQ(kernel->spotCounts[1], 7);
    EXPECT_EQ(valueOf(*unit, "spotsR2"), 7.0f);
    EXPECT_EQ(kernel->ringOctaves[4], -2);
    EXPECT_EQ(valueOf(*unit, "octaveR5"), -2.0f);
}

TEST_F(ParametersOfAnInstrument, ValuesOutsideTheRangeAreKeptAsWritten)
{
    setValue(*unit, "activity", 1.5f);
    EXPECT_EQ(kernel->activity, 1.5f);
    EXPECT_EQ(valueOf(*unit, "activity"), 1.5f);
    setValue(*unit, "bpm", -1.0f);
    EXPECT_EQ(kernel->bpm, -1.0f);
    setValue(*unit, "rootNote", 3.7f);
    EXPECT_EQ(valueOf(*unit, "rootNote"), 3.7f);
    setValue(*unit, "spotsR1", 1000.0f);
    EXPECT_EQ(kernel->spotCounts[0], 1000);
}

TEST_F(ParametersOfAnInstrument, ANonFiniteValueOfWhatIsNoCountIsKeptAsWritten)
{
    setValue(*unit, "volume", infinity);
    EXPECT_EQ(valueOf(*unit, "volume"), infinity);
    setValue(*unit, "timbreR3", notANumber);
    EXPECT_TRUE(std::isnan(valueOf(*unit, "timbreR3")));
}

TEST_F(ParametersOfAnInstrument, EachOneReachesItsOwnFieldAndNoOther)
{
    for (const auto& info : parameterTable()) {
        const auto before = valuesOf(*kernel);
        const float value = info.address == addressOf(GlobalParameter::sync) ? 0.0f : 9.0f;
        auto expected = before;
        expected[info.address] = value;
        unit->parameterTree()->parameterWithAddress(info.address)->setValue(value);
        EXPECT_EQ(valuesOf(*kernel), expected) << info.identifier;
        EXPECT_NE(before, expected) << info.identifier;
    }
}

TEST_F(ParametersOfAnInstrument, TheFieldsByNameAreThoseOfTheAddresses)
{
    setValue(*unit, "boredom", 0.1f);
    setValue(*unit, "scaleType", 3.0f);
    setValue(*unit, "phaseR2", 0.2f);
    setValue(*unit, "probR3", 0.3f);
    setValue(*unit, "ringVolR4", 0.4f);
    setValue(*unit, "timbreR5", 0.5f);
    EXPECT_EQ(kernel->boredom, 0.1f);
    EXPECT_EQ(kernel->scaleType, 3.0f);
    EXPECT_EQ(kernel->phaseOffsets[1], 0.2f);
    EXPECT_EQ(kernel->probabilities[2], 0.3f);
    EXPECT_EQ(kernel->ringVolumes[3], 0.4f);
    EXPECT_EQ(kernel->ringTimbres[4], 0.5f);
}

TEST_F(ParametersOfAnInstrument, ReadWhatTheKernelHoldsWhoeverWroteIt)
{
    kernel->calories = 0.125f;
    kernel->spotCounts[2] = 11;
    EXPECT_EQ(valueOf(*unit, "calories"), 0.125f);
    EXPECT_EQ(valueOf(*unit, "spotsR3"), 11.0f);
}

TEST_F(ParametersOfAnInstrument, EndAtAddress38)
{
    EXPECT_EQ(unit->parameterTree()->parameterWithAddress(38)->identifier(), "timbreR5");
    EXPECT_EQ(unit->parameterTree()->parameterWithAddress(39), nullptr);
    EXPECT_EQ(kernel->parameter(39), 0.0f);
    const auto before = valuesOf(*kernel);
    kernel->setParameter(39, 0.25f);
    kernel->setParameter(UINT64_MAX, 0.25f);
    EXPECT_EQ(valuesOf(*kernel), before);
}

TEST_F(ParametersOfAnInstrument, ReadZeroAndIgnoreWritesWhenOnlyTheTreeOutlivesTheUnit)
{
    const auto tree = unit->parameterTree();
    const std::weak_ptr<VelotrineAudioUnit> released = unit;
    unit.reset();
    ASSERT_TRUE(released.expired());
    const auto before = valuesOf(*kernel);
    for (const auto& parameter : tree->allParameters()) {
        EXPECT_EQ(parameter->value(), 0.0f) << parameter->identifier();
        parameter->setValue(3.0f);
        EXPECT_EQ(parameter->value(), 0.0f) << parameter->identifier();
    }
    EXPECT_EQ(valuesOf(*kernel), before);
}

TEST_F(ParametersOfAnInstrument, ReadZeroAndIgnoreWritesWhenOneAloneOutlivesTheUnit)
{
    const auto parameter = parameterNamed(*unit, "activity");
    unit.reset();
    EXPECT_EQ(parameter->value(), 0.0f);
    parameter->setValue(0.75f);
    EXPECT_EQ(parameter->value(), 0.0f);
    EXPECT_EQ(kernel->activity, 0.5f);
}

TEST_F(ParametersOfAnInstrument, ReadZeroAndIgnoreWritesWhileARenderBlockHoldsTheKernelOfAReleasedUnit)
{
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();
    const auto tree = unit->parameterTree();
    unit.reset();
    tree->parameterWithAddress(0)->setValue(0.75f);
    EXPECT_EQ(tree->parameterWithAddress(0)->value(), 0.0f);
    EXPECT_EQ(kernel->activity, 0.5f);
    OutputBuffers output(2, 64);
    EXPECT_EQ(renderInto(output, block, 64), noErr);
    EXPECT_EQ(tree->parameterWithAddress(0)->value(), 0.0f);
}

TEST_F(ParametersOfAnInstrument, DoNotKeepTheUnitAlive)
{
    const auto tree = unit->parameterTree();
    const std::weak_ptr<VelotrineAudioUnit> released = unit;
    unit.reset();
    EXPECT_TRUE(released.expired());
    EXPECT_EQ(kernel.use_count(), 1);
    EXPECT_EQ(tree->allParameters().size(), 39U);
}

TEST(ParameterIdentifiers, AreCaseSensitiveAndHaveNoSeparator)
{
    ASSERT_NE(parameterWithIdentifier("ringVolR4"), nullptr);
    EXPECT_EQ(parameterWithIdentifier("ringVolR4")->address, 32U);
    for (const auto* const wrong :
         {"ringvolR4", "RingVolR4", "ringVolr4", "ringVol R4", "ringVol_R4", "ringVol", "ringVolR6", ""})
        EXPECT_EQ(parameterWithIdentifier(wrong), nullptr) << wrong;
}

TEST(ParameterIdentifiers, FindEachRowOfTheTable)
{
    for (const auto& info : parameterTable())
        EXPECT_EQ(parameterWithIdentifier(info.identifier), &info);
}

TEST(ParameterInfo, WholeNumbersAreWhatIsIndexedOrSwitched)
{
    EXPECT_TRUE(parameterWithIdentifier("spotsR1")->isDiscrete());
    EXPECT_TRUE(parameterWithIdentifier("octaveR5")->isDiscrete());
    EXPECT_TRUE(parameterWithIdentifier("rootNote")->isDiscrete());
    EXPECT_TRUE(parameterWithIdentifier("scaleType")->isDiscrete());
    EXPECT_TRUE(parameterWithIdentifier("sync")->isDiscrete());
    EXPECT_FALSE(parameterWithIdentifier("bpm")->isDiscrete());
    EXPECT_FALSE(parameterWithIdentifier("phaseR1")->isDiscrete());
}

using ParametersOfAnInstrumentDeathTest = ParametersOfAnInstrument;

TEST_F(ParametersOfAnInstrumentDeathTest, ACountThatIsNotFiniteOrBeyond64BitsIsFatal)
{
    for (const auto* const identifier : {"spotsR1", "octaveR5"})
        for (const float value : {notANumber, infinity, -infinity, 1e19f, -1e19f})
            EXPECT_DEATH(setValue(*unit, identifier, value), "velotrine: fatal: ") << identifier << value;
}

} // namespace
} // namespace velotrine
