#include "platform/AUParameter.h"

#include "platform/AUParameterTree.h"
#include "tests/platform/TestParameter.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(AUParameter, KeepsItsDefinition)
{
    const AUParameter parameter({.identifier = "spotsR2",
                                 .name = "Spots R2",
                                 .address = 10,
                                 .minValue = -1.0f,
                                 .maxValue = 16.0f,
                                 .unit = AudioUnitParameterUnit::indexed,
                                 .unitName = "dots",
                                 .flags = kAudioUnitParameterFlag_IsReadable,
                                 .valueStrings = {"none", "one"},
                                 .dependentParameters = {3, 4}});
    EXPECT_EQ(parameter.identifier(), "spotsR2");
    EXPECT_EQ(parameter.displayName(), "Spots R2");
    EXPECT_EQ(parameter.address(), 10U);
    EXPECT_EQ(parameter.minValue(), -1.0f);
    EXPECT_EQ(parameter.maxValue(), 16.0f);
    EXPECT_EQ(parameter.unit(), AudioUnitParameterUnit::indexed);
    EXPECT_EQ(parameter.unitName(), "dots");
    EXPECT_EQ(parameter.flags(), kAudioUnitParameterFlag_IsReadable);
    EXPECT_EQ(parameter.valueStrings(), (std::vector<std::string>{"none", "one"}));
    EXPECT_EQ(parameter.dependentParameters(), (std::vector<AUParameterAddress>{3, 4}));
}

TEST(AUParameter, OutsideATreeReadsTheValueLastSet)
{
    AUParameter parameter(definedAs(0));
    EXPECT_EQ(parameter.value(), 0.0f);
    parameter.setValue(0.25f);
    parameter.setValue(0.75f);
    EXPECT_EQ(parameter.value(), 0.75f);
}

TEST(AUParameter, ThatOutlivesItsTreeReadsZeroAndIgnoresWrites)
{
    const auto parameter = AUParameterTree::createParameter(definedAs(0));
    auto tree = AUParameterTree::createTree({parameter});
    int writes = 0;
    tree->setImplementorValueObserver([&writes](const AUParameter&, AUValue) { ++writes; });
    tree->setImplementorValueProvider([](const AUParameter&) { return 0.5f; });
    EXPECT_EQ(parameter->value(), 0.5f);
    parameter->setValue(0.75f);
    tree.reset();
    EXPECT_EQ(parameter->value(), 0.0f);
    parameter->setValue(0.25f);
    EXPECT_EQ(parameter->value(), 0.0f);
    EXPECT_EQ(writes, 1);
}

TEST(AUParameter, NeitherBoundsNorRoundsWhatIsWritten)
{
    AUParameter parameter(definedAs(0, "spotsR1", 0.0f, 16.0f));
    for (const float value : {-3.5f, 0.3f, 1e30f, std::numeric_limits<float>::infinity()}) {
        parameter.setValue(value);
        EXPECT_EQ(parameter.value(), value);
    }
}

} // namespace
} // namespace velotrine
