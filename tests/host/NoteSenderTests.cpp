#include "host/NoteSender.h"

#include "engine/HostClock.h"
#include "tests/host/FakeNotePort.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/NoteRecorder.h"

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

constexpr double sampleRate = 48000.0;

NoteMessage on(int frame, std::uint8_t key)
{
    return {.frame = frame, .isOn = true, .channel = 1, .key = key, .velocity = 100};
}

NoteMessage off(int frame, std::uint8_t key)
{
    return {.frame = frame, .isOn = false, .channel = 1, .key = key, .velocity = 0};
}

class NoteSenderTest : public testing::Test
{
protected:
    static bool comesTrue(const std::function<bool()>& condition)
    {
        for (int i = 0; i < 1000; ++i) {
            if (condition())
                return true;
            std::this_thread::sleep_for(5ms);
        }
        return false;
    }

    /// As soon as the sender knows that somebody listens.
    void take(const NoteMessage& message)
    {
        ASSERT_TRUE(comesTrue([&] {
            sender->begin(480, sampleRate);
            return sender->take(message);
        }));
    }

    SentNotes sent;
    std::unique_ptr<NoteSender> sender = std::make_unique<NoteSender>(std::make_unique<FakeNotePort>(sent));
};

TEST_F(NoteSenderTest, SendsEachMessageOneBlockAfterItsFrameWasAskedFor)
{
    take(on(0, 60)); // somebody listens
    const auto start = hostClockNow();
    sender->begin(4800, sampleRate);
    ASSERT_TRUE(sender->take(on(0, 61)));
    ASSERT_TRUE(sender->take(off(2400, 61)));
    ASSERT_TRUE(comesTrue([this] { return sent.count() == 3; }));
    EXPECT_EQ(sent.messages[1].key, 61);
    EXPECT_TRUE(sent.messages[1].isOn);
    EXPECT_FALSE(sent.messages[2].isOn);
    // A block is a tenth of a second. Nothing comes too early; how late it is the machine decides.
    EXPECT_GE(static_cast<double>(sent.ticks[1] - start) * hostClockSecondsPerTick, 0.1);
    EXPECT_GE(static_cast<double>(sent.ticks[2] - start) * hostClockSecondsPerTick, 0.15);
}

TEST_F(NoteSenderTest, TakesNothingWhileNobodyListens)
{
    sent.isHeard = false;
    ASSERT_TRUE(comesTrue([this] {
        sender->begin(1, sampleRate);
        return !sender->take(on(0, 60));
    }));
    sent.isHeard = true;
    take(on(0, 62));
}

TEST_F(NoteSenderTest, EndsAllThatIsHeldWithIt)
{
    take(on(0, 60));
    take(on(0, 61));
    take(off(0, 60));
    take(on(0, 62));
    ASSERT_TRUE(comesTrue([this] { return sent.count() == 4; }));
    sender.reset();
    EXPECT_EQ(sent.messages.size(), 6u);
    EXPECT_EQ(mistakeIn(sent.messages), "");
}

TEST_F(NoteSenderTest, DoesNotBeginWhatWouldBeDueAfterItsEnd)
{
    take(on(0, 60));
    sender->begin(480000, sampleRate);
    ASSERT_TRUE(sender->take(on(0, 61)));
    ASSERT_TRUE(comesTrue([this] { return sent.count() == 1; }));
    sender.reset();
    EXPECT_EQ(sent.messages.size(), 2u);
    EXPECT_EQ(mistakeIn(sent.messages), "");
}

TEST_F(NoteSenderTest, RefusesWhatHasNoRoom)
{
    take(on(0, 60));
    sender->begin(480000, sampleRate);
    int taken = 0;
    constexpr int farBeyondItsRoom = 1000000;
    while (taken < farBeyondItsRoom && sender->take(on(0, 61)))
        ++taken;
    EXPECT_LT(taken, farBeyondItsRoom);
    EXPECT_TRUE(comesTrue([this] { return sender->take(on(0, 61)); })) << "there is room again";
}

TEST_F(NoteSenderTest, TakesWithoutAllocating)
{
    take(on(0, 60));
    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i) {
        sender->begin(64, sampleRate);
        EXPECT_TRUE(sender->take(on(i % 64, 60)));
    }
    EXPECT_EQ(counter.count(), 0);
}

} // namespace
} // namespace velotrine
