#include "tests/host/FakeDevices.h"
#include "tests/host/FakeNotePort.h"
#include "tests/host/PlayingEngine.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/NoteRecorder.h"

#include <algorithm>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double timeoutSeconds = 10.0;

/// What leaves an engine through a port of its own.
class EngineNotes : public testing::Test
{
protected:
    void play(DeviceTypeFactory deviceTypes)
    {
        playing.emplace(std::move(deviceTypes), [this] { return std::make_unique<FakeNotePort>(sent); });
        (void)playing->engine.start();
    }

    SentNotes sent;
    std::optional<PlayingEngine> playing;
};

TEST_F(EngineNotes, LeaveWithoutADeviceAndEndWithTheEngine)
{
    play(fakeDeviceTypes({}));
    EXPECT_TRUE(runMessagesUntil([this] { return sent.count() > 20; }, timeoutSeconds));
    playing.reset();
    EXPECT_EQ(mistakeIn(sent.messages), "");
}

TEST_F(EngineNotes, LeaveWhileADevicePlays)
{
    FakeSound sound;
    play(fakeDeviceTypes({&sound}));
    EXPECT_TRUE(runMessagesUntil(
        [&] {
            (void)sound.request(sound.bufferFrames);
            return sent.count() > 20;
        },
        timeoutSeconds));
    playing.reset();
    EXPECT_EQ(mistakeIn(sent.messages), "");
}

TEST_F(EngineNotes, GoOnWhenTheDeviceGoesAway)
{
    FakeSound sound;
    play(fakeDeviceTypes({&sound}));
    (void)sound.request(48000);
    sound.isPresent = false;
    ASSERT_TRUE(runMessagesUntil([this] { return !playing->engine.hasDevice(); }, timeoutSeconds));
    const auto before = sent.count();
    EXPECT_TRUE(runMessagesUntil([&] { return sent.count() > before + 20; }, timeoutSeconds));
    playing.reset();
    EXPECT_EQ(mistakeIn(sent.messages), "");
}

TEST_F(EngineNotes, AreNoneWithoutAPort)
{
    playing.emplace(fakeDeviceTypes({}), [] { return nullptr; });
    (void)playing->engine.start();
    const auto clock = playing->clock();
    EXPECT_TRUE(runMessagesUntil([&] { return playing->clock() != clock; }, timeoutSeconds));
}

} // namespace
} // namespace velotrine
