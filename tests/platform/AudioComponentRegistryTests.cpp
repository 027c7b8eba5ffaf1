#include "platform/AudioComponentRegistry.h"

#include "platform/AUError.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr AudioComponentDescription description{1, 2, 3, 0, 0};

AudioComponentRegistry::Component named(const char* name, const AudioComponentDescription& wanted)
{
    return {wanted, name, 0x00010203, {}};
}

TEST(AudioComponentRegistry, FindsWhatWasAdded)
{
    AudioComponentRegistry registry;
    registry.add(named("First", description));
    registry.add(named("Second", {1, 2, 4, 0, 0}));
    const auto found = registry.find(description);
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->name, "First");
    EXPECT_EQ(found->version, 0x00010203U);
    EXPECT_EQ(found->description, description);
}

TEST(AudioComponentRegistry, FindsNothingUnderADescriptionThatDiffersInOneCode)
{
    AudioComponentRegistry registry;
    registry.add(named("Unit", description));
    EXPECT_FALSE(registry.find({9, 2, 3, 0, 0}).has_value());
    EXPECT_FALSE(registry.find({1, 9, 3, 0, 0}).has_value());
    EXPECT_FALSE(registry.find({1, 2, 9, 0, 0}).has_value());
}

TEST(AudioComponentRegistry, FlagsAreNoPartOfAComponentsIdentity)
{
    AudioComponentRegistry registry;
    registry.add(named("Unit", description));
    EXPECT_TRUE(registry.find({1, 2, 3, 4, 5}).has_value());
    EXPECT_THROW(registry.add(named("Again", {1, 2, 3, 4, 5})), AUError);
}

TEST(AudioComponentRegistry, RefusesADescriptionThatIsTakenAndKeepsTheFirst)
{
    AudioComponentRegistry registry;
    registry.add(named("First", description));
    try {
        registry.add(named("Second", description));
        ADD_FAILURE() << "a second component under the same description";
    } catch (const AUError& error) {
        EXPECT_EQ(error.status(), kAudioComponentErr_DuplicateDescription);
        EXPECT_STRNE(error.what(), "");
    }
    EXPECT_EQ(registry.find(description)->name, "First");
}

TEST(AudioComponentRegistry, IsOneForTheWholeProcess)
{
    EXPECT_EQ(&AudioComponentRegistry::shared(), &AudioComponentRegistry::shared());
}

} // namespace
} // namespace velotrine
