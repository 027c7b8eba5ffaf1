#include "engine/AddressSet.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr ParameterAddress last = parameterCount - 1;

std::vector<ParameterAddress> listOf(AddressSet set)
{
    std::vector<ParameterAddress> addresses;
    for (const auto address : set)
        addresses.push_back(address);
    return addresses;
}

TEST(AddressSet, HoldsWhatWasInsertedAndNotErased)
{
    AddressSet set;
    EXPECT_TRUE(set.isEmpty());
    set.insert(0);
    set.insert(last);
    set.insert(last);
    EXPECT_TRUE(set.contains(0));
    EXPECT_TRUE(set.contains(last));
    EXPECT_FALSE(set.contains(1));
    set.erase(0);
    set.erase(1);
    EXPECT_EQ(set, AddressSet(last));
}

TEST(AddressSet, HoldsEveryParameter)
{
    AddressSet set;
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        set.insert(address);
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        EXPECT_TRUE(set.contains(address)) << address;
    EXPECT_EQ(listOf(set).size(), parameterCount);
}

TEST(AddressSet, IsGoneThroughInAscendingOrder)
{
    AddressSet set;
    for (const ParameterAddress address : {last, ParameterAddress{7}, ParameterAddress{0}})
        set.insert(address);
    EXPECT_EQ(listOf(set), (std::vector<ParameterAddress>{0, 7, last}));
    EXPECT_EQ(listOf(AddressSet()), std::vector<ParameterAddress>{});
}

TEST(AddressSet, IsJoinedAndComparedWithAnother)
{
    AddressSet left(3);
    left.insert(4);
    AddressSet right(4);
    right.insert(5);
    EXPECT_EQ(listOf(left | right), (std::vector<ParameterAddress>{3, 4, 5}));
    EXPECT_EQ(listOf(left ^ right), (std::vector<ParameterAddress>{3, 5}));
}

TEST(AddressSet, ContainsNoAddressThatNoParameterHas)
{
    AddressSet set(0);
    EXPECT_FALSE(set.contains(parameterCount));
    EXPECT_FALSE(set.contains(64)); // a bit's number beyond the word
}

TEST(AddressSetDeathTest, StopsTheProgramForAnAddressThatNoParameterHas)
{
    AddressSet set;
    EXPECT_EXIT(set.insert(parameterCount), testing::KilledBySignal(SIGABRT),
                "no parameter has this address");
    SharedAddressSet shared;
    EXPECT_EXIT(shared.insert(64), testing::KilledBySignal(SIGABRT), "no parameter has this address");
}

TEST(SharedAddressSet, HoldsWhatWasInsertedAndNotErased)
{
    SharedAddressSet set;
    set.insert(7);
    set.insert(AddressSet(8) | AddressSet(9));
    set.erase(8);
    EXPECT_TRUE(set.contains(7));
    EXPECT_FALSE(set.contains(8));
    EXPECT_EQ(listOf(set.load()), (std::vector<ParameterAddress>{7, 9}));
}

TEST(SharedAddressSet, IsEmptyOnceAllIsTaken)
{
    SharedAddressSet set;
    set.insert(last);
    EXPECT_EQ(set.takeAll(), AddressSet(last));
    EXPECT_EQ(set.takeAll(), AddressSet());
    EXPECT_FALSE(set.contains(last));
}

// Each writer counts up and inserts; who takes an address must find the count that was stored before.
TEST(SharedAddressSet, LosesNoAddressBetweenThreadsNorWhatWasWrittenBeforeIt)
{
    constexpr int lastCount = 20000;
    constexpr std::array<ParameterAddress, 2> addresses{0, last};
    SharedAddressSet set;
    std::array<std::atomic<int>, parameterCount> counts{};
    std::atomic<std::size_t> finished{0};
    std::vector<std::jthread> writers;
    writers.reserve(addresses.size());
    for (const auto address : addresses)
        writers.emplace_back([&, address] {
            for (int count = 1; count <= lastCount; ++count) {
                counts[address].store(count, std::memory_order_relaxed);
                set.insert(address);
            }
            ++finished;
        });

    std::array<int, parameterCount> taken{};
    for (bool isLastRound = false; !isLastRound;) {
        isLastRound = finished == addresses.size();
        for (const auto address : set.takeAll())
            taken[address] = counts[address].load(std::memory_order_relaxed);
    }
    for (const auto address : addresses)
        EXPECT_EQ(taken[address], lastCount) << address;
    EXPECT_TRUE(set.load().isEmpty());
}

} // namespace
} // namespace velotrine
