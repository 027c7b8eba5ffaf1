#include "host/OutputDevices.h"
#include "tests/host/FakeDevices.h"
#include "tests/support/JackServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(OutputDevices, AreListedKindByKindWithEachKindsDefaultFirst)
{
    FakeSound first{.typeName = "A", .deviceName = "one", .namesBefore = {"other", "another"}};
    FakeSound absent{.isPresent = false};
    FakeSound second{.typeName = "B", .deviceName = "two"};
    EXPECT_THAT(outputDevices(fakeDeviceTypes({&first, &absent, &second})()),
                ElementsAre(OutputDevice{"A", "one"}, OutputDevice{"A", "other"},
                            OutputDevice{"A", "another"}, OutputDevice{"B", "two"}));
}

TEST(OutputDevices, WithoutServerAndSoundCardThereIsNoneAndNothingIsPrinted)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_THAT(outputDevices(systemDeviceTypes()), IsEmpty());
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
}

TEST(OutputDevices, ARunningJackServersComeFirst)
{
    const JackServer server;
    const auto devices = outputDevices(systemDeviceTypes());
    ASSERT_FALSE(devices.empty());
    EXPECT_EQ(devices.front(), (OutputDevice{"JACK", "system"}));
}

} // namespace
} // namespace velotrine
