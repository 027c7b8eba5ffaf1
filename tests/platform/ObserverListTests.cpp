#include "platform/ObserverList.h"

#include <atomic>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(ObserverList, NotifiesItsObserversInTheOrderInWhichTheyWereAdded)
{
    ObserverList<int> list;
    std::vector<int> heard;
    list.add([&heard](int value) { heard.push_back(10 + value); });
    list.add([&heard](int value) { heard.push_back(20 + value); });
    list.notify(0, 3);
    EXPECT_EQ(heard, (std::vector{13, 23}));
}

TEST(ObserverList, PassesOnAllArguments)
{
    ObserverList<int, float> list;
    int number = 0;
    float value = 0.0f;
    list.add([&](int heardNumber, float heardValue) {
        number = heardNumber;
        value = heardValue;
    });
    list.notify(0, 38, 0.25f);
    EXPECT_EQ(number, 38);
    EXPECT_EQ(value, 0.25f);
}

TEST(ObserverList, NeverGivesATokenTwiceNorTheTokenForNoObserver)
{
    ObserverList<> list;
    std::set<ObserverToken> tokens{0};
    for (int i = 0; i < 100; ++i) {
        const auto token = list.add([] {});
        EXPECT_TRUE(tokens.insert(token).second);
        list.remove(token);
    }
}

TEST(ObserverList, SkipsTheObserverThatCausedIt)
{
    ObserverList<> list;
    int first = 0;
    int second = 0;
    const auto token = list.add([&first] { ++first; });
    list.add([&second] { ++second; });
    list.notify(token);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST(ObserverList, NoLongerNotifiesARemovedObserver)
{
    ObserverList<> list;
    int removed = 0;
    int kept = 0;
    const auto token = list.add([&removed] { ++removed; });
    list.add([&kept] { ++kept; });
    list.remove(token);
    list.notify(0);
    EXPECT_EQ(removed, 0);
    EXPECT_EQ(kept, 1);
}

TEST(ObserverList, DropsWhatARemovedObserverHeld)
{
    ObserverList<> list;
    const auto held = std::make_shared<int>(0);
    const auto token = list.add([held] {});
    EXPECT_EQ(held.use_count(), 2);
    list.remove(token);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(ObserverList, IgnoresTheRemovalOfATokenItDoesNotKnow)
{
    ObserverList<> list;
    int heard = 0;
    const auto token = list.add([&heard] { ++heard; });
    list.remove(token + 1);
    list.remove(0);
    list.notify(0);
    EXPECT_EQ(heard, 1);
}

TEST(ObserverList, AnObserverAddedDuringANotificationHearsOnlyTheNextOne)
{
    ObserverList<> list;
    int late = 0;
    bool added = false;
    list.add([&] {
        if (!added)
            list.add([&late] { ++late; });
        added = true;
    });
    list.notify(0);
    EXPECT_EQ(late, 0);
    list.notify(0);
    EXPECT_EQ(late, 1);
}

TEST(ObserverList, AnObserverMayRemoveItselfInItsTurn)
{
    ObserverList<> list;
    int once = 0;
    int always = 0;
    ObserverToken token = 0;
    token = list.add([&] {
        list.remove(token);
        ++once;
    });
    list.add([&always] { ++always; });
    list.notify(0);
    list.notify(0);
    EXPECT_EQ(once, 1);
    EXPECT_EQ(always, 2);
}

TEST(ObserverList, AnObserverRemovedByAnEarlierOneInTheSameNotificationIsNotNotified)
{
    ObserverList<> list;
    int removed = 0;
    int kept = 0;
    ObserverToken token = 0;
    list.add([&] { list.remove(token); });
    token = list.add([&removed] { ++removed; });
    list.add([&kept] { ++kept; });
    list.notify(0);
    EXPECT_EQ(removed, 0);
    EXPECT_EQ(kept, 1);
}

TEST(ObserverList, AnObserverMayNotifyInItsTurn)
{
    ObserverList<int> list;
    std::vector<int> heard;
    list.add([&](int depth) {
        heard.push_back(depth);
        if (depth < 3)
            list.notify(0, depth + 1);
    });
    list.notify(0, 1);
    EXPECT_EQ(heard, (std::vector{1, 2, 3}));
}

TEST(ObserverList, ServesSeveralThreadsAtOnce)
{
    constexpr int rounds = 500;
    ObserverList<int> list;
    std::atomic<int> heard{0};
    list.add([&heard](int value) { heard += value; });

    std::thread changing([&list] {
        for (int i = 0; i < rounds; ++i)
            list.remove(list.add([](int) {}));
    });
    std::thread notifying([&list] {
        for (int i = 0; i < rounds; ++i)
            list.notify(0, 1);
    });
    for (int i = 0; i < rounds; ++i)
        list.notify(0, 1);
    changing.join();
    notifying.join();
    EXPECT_EQ(heard, 2 * rounds);
}

} // namespace
} // namespace velotrine
