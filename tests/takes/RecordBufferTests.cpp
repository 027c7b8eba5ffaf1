#include "takes/RecordBuffer.h"

#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TakeRecord numbered(std::int64_t number)
{
    return {.frame = number,
            .bits = static_cast<std::uint64_t>(number) * 3,
            .kind = TakeRecord::Kind::change,
            .target = TakeTarget::play};
}

std::vector<TakeRecord> takeAll(RecordBuffer& buffer)
{
    std::vector<TakeRecord> taken;
    buffer.takeAll([&taken](const TakeRecord& record) { taken.push_back(record); });
    return taken;
}

TEST(RecordBuffer, HandsOutWhatWasPutInOnceAndInOrder)
{
    const auto buffer = std::make_unique<RecordBuffer>();
    EXPECT_TRUE(takeAll(*buffer).empty());
    for (int number = 0; number < 3; ++number)
        EXPECT_TRUE(buffer->push(numbered(number)));
    EXPECT_EQ(takeAll(*buffer), (std::vector{numbered(0), numbered(1), numbered(2)}));
    EXPECT_TRUE(takeAll(*buffer).empty());
}

TEST(RecordBuffer, RefusesWhatHasNoRoomAndKeepsTheRest)
{
    const auto buffer = std::make_unique<RecordBuffer>();
    for (std::size_t number = 0; number < RecordBuffer::capacity; ++number) {
        EXPECT_EQ(buffer->room(), RecordBuffer::capacity - number);
        ASSERT_TRUE(buffer->push(numbered(static_cast<std::int64_t>(number))));
    }
    EXPECT_EQ(buffer->room(), 0U);
    EXPECT_FALSE(buffer->push(numbered(-1)));
    const auto taken = takeAll(*buffer);
    ASSERT_EQ(taken.size(), RecordBuffer::capacity);
    EXPECT_EQ(taken.back(), numbered(RecordBuffer::capacity - 1));
    EXPECT_TRUE(buffer->push(numbered(7)));
    EXPECT_EQ(takeAll(*buffer), std::vector{numbered(7)});
}

TEST(RecordBuffer, LosesNothingBetweenTwoThreads)
{
    constexpr std::int64_t count = 200000;
    const auto buffer = std::make_unique<RecordBuffer>();
    std::thread writer([&buffer] {
        for (std::int64_t number = 0; number < count;)
            if (buffer->push(numbered(number)))
                ++number;
            else
                std::this_thread::yield();
    });
    std::int64_t next = 0;
    bool inOrder = true;
    while (next < count)
        buffer->takeAll([&](const TakeRecord& record) {
            inOrder = inOrder && record == numbered(next);
            ++next;
        });
    writer.join();
    EXPECT_TRUE(inOrder);
    EXPECT_EQ(next, count);
}

} // namespace
} // namespace velotrine
