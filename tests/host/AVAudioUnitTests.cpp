#include "audiounit/VelotrineAudioUnit.h"
#include "audiounit/VelotrineComponent.h"
#include "host/AVAudioUnit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(AVAudioUnit, WrapsTheUnitThatIsRegisteredUnderTheDescription)
{
    registerVelotrineComponent();
    std::shared_ptr<AVAudioUnit> node;
    std::optional<AUError> error;
    AVAudioUnit::instantiate(velotrineComponentDescription(),
                             AudioComponentInstantiationOptions::loadInProcess,
                             [&](const auto& newNode, const auto& newError) {
                                 node = newNode;
                                 error = newError;
                             });
    ASSERT_NE(node, nullptr);
    EXPECT_FALSE(error);
    EXPECT_NE(dynamic_cast<VelotrineAudioUnit*>(node->audioUnit().get()), nullptr);
}

TEST(AVAudioUnit, GivesTheErrorAndNoNodeForAnUnknownDescription)
{
    int calls = 0;
    AVAudioUnit::instantiate(
        {}, AudioComponentInstantiationOptions::loadInProcess, [&](const auto& node, const auto& error) {
            ++calls;
            EXPECT_EQ(node, nullptr);
            ASSERT_TRUE(error);
            EXPECT_STREQ(error->what(), "No audio unit is registered under this description.");
        });
    EXPECT_EQ(calls, 1);
}

TEST(AVAudioUnitDeathTest, NeedsAUnit)
{
    EXPECT_DEATH(AVAudioUnit(nullptr), "without an audio unit");
}

} // namespace
} // namespace velotrine
