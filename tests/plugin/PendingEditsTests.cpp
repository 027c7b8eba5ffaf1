#include "plugin/PendingEdits.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// A host with room for a number of events.
struct Receiver
{
    bool begin(ParameterAddress address) { return take("begin " + std::to_string(address)); }

    bool value(ParameterAddress address, float value)
    {
        return take(std::to_string(address) + " = " + std::to_string(static_cast<int>(value)));
    }

    bool end(ParameterAddress address) { return take("end " + std::to_string(address)); }

    bool take(const std::string& event)
    {
        if (told.size() >= room)
            return false;
        told.push_back(event);
        return true;
    }

    std::size_t room = 1000;
    std::vector<std::string> told;
};

using Told = std::vector<std::string>;

Told handedOver(PendingEdits& edits, std::size_t room = 1000)
{
    Receiver receiver{room, {}};
    edits.handOver(receiver);
    return receiver.told;
}

TEST(PendingEdits, HandOverAGestureOnce)
{
    PendingEdits edits;
    edits.beginGesture(38);
    edits.setValue(38, 1.0f);
    edits.endGesture(38);
    EXPECT_EQ(handedOver(edits), (Told{"begin 38", "38 = 1", "end 38"}));
    EXPECT_EQ(handedOver(edits), Told{});
}

TEST(PendingEdits, HandOverALongGestureAsItHappens)
{
    PendingEdits edits;
    edits.beginGesture(0);
    EXPECT_EQ(handedOver(edits), Told{"begin 0"});
    edits.setValue(0, 1.0f);
    edits.setValue(0, 2.0f);
    EXPECT_EQ(handedOver(edits), Told{"0 = 2"});
    EXPECT_EQ(handedOver(edits), Told{});
    edits.endGesture(0);
    EXPECT_EQ(handedOver(edits), Told{"end 0"});
}

TEST(PendingEdits, KeepTheLastValueOfGesturesThatTheHostDidNotTake)
{
    PendingEdits edits;
    for (int i = 0; i < 100000; ++i) {
        edits.beginGesture(7);
        edits.setValue(7, static_cast<float>(i));
        edits.endGesture(7);
    }
    EXPECT_EQ(handedOver(edits), (Told{"begin 7", "7 = 99999", "end 7"}));
}

TEST(PendingEdits, AreSentAgainWhereTheHostHadNoRoom)
{
    for (std::size_t room = 0; room < 6; ++room) {
        PendingEdits edits;
        for (const ParameterAddress address : {3U, 4U}) {
            edits.beginGesture(address);
            edits.setValue(address, 5.0f);
            edits.endGesture(address);
        }
        auto told = handedOver(edits, room);
        const auto more = handedOver(edits);
        told.insert(told.end(), more.begin(), more.end());
        EXPECT_EQ(told, (Told{"begin 3", "3 = 5", "end 3", "begin 4", "4 = 5", "end 4"})) << room;
    }
}

TEST(PendingEdits, LoseNoLastValueBetweenTwoThreads)
{
    PendingEdits edits;
    std::jthread editor([&edits] {
        for (int i = 1; i <= 20000; ++i) {
            edits.beginGesture(1);
            edits.setValue(1, static_cast<float>(i));
            edits.endGesture(1);
        }
    });
    Told last;
    while (last.empty() || last.front() != "1 = 20000") {
        const auto told = handedOver(edits);
        for (const auto& event : told)
            if (event.starts_with("1 = "))
                last = {event};
    }
    editor.join();
    handedOver(edits);
    EXPECT_EQ(handedOver(edits), Told{});
}

} // namespace
} // namespace velotrine
