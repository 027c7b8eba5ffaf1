#include "audiounit/VelotrineComponent.h"

#include "audiounit/VelotrineAudioUnit.h"
#include "platform/AudioComponentRegistry.h"

#include <memory>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(VelotrineComponent, IsFoundUnderItsDescriptionOnceRegistered)
{
    registerVelotrineComponent();
    const auto component = AudioComponentRegistry::shared().find(velotrineComponentDescription());
    ASSERT_TRUE(component.has_value());
    EXPECT_EQ(component->name, velotrineComponentName);
    EXPECT_EQ(component->version, velotrineComponentVersion);
}

TEST(VelotrineComponent, MayBeRegisteredAgain)
{
    registerVelotrineComponent();
    EXPECT_NO_THROW(registerVelotrineComponent());
}

TEST(VelotrineComponent, IsInstantiatedInProcess)
{
    registerVelotrineComponent();
    std::shared_ptr<AUAudioUnit> made;
    AUAudioUnit::instantiate(velotrineComponentDescription(),
                             AudioComponentInstantiationOptions::loadInProcess,
                             [&made](std::shared_ptr<AUAudioUnit> unit, const std::optional<AUError>& error) {
                                 EXPECT_FALSE(error.has_value());
                                 made = std::move(unit);
                             });
    ASSERT_NE(std::dynamic_pointer_cast<VelotrineAudioUnit>(made), nullptr);
    EXPECT_EQ(made->componentDescription(), velotrineComponentDescription());
}

TEST(VelotrineComponent, IsNotInstantiatedOutOfProcess)
{
    registerVelotrineComponent();
    int completions = 0;
    AUAudioUnit::instantiate(
        velotrineComponentDescription(), AudioComponentInstantiationOptions::loadOutOfProcess,
        [&completions](const std::shared_ptr<AUAudioUnit>& unit, const std::optional<AUError>& error) {
            EXPECT_EQ(unit, nullptr);
            EXPECT_TRUE(error.has_value());
            ++completions;
        });
    EXPECT_EQ(completions, 1);
}

} // namespace
} // namespace velotrine
