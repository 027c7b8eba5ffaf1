#include "plugin/ThreadChecks.h"

#include <csignal>
#include <thread>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(HomeThread, IsTheOneThatMadeIt)
{
    const HomeThread home;
    EXPECT_TRUE(home.isHere());
    bool isHereToo = true;
    std::jthread([&] { isHereToo = home.isHere(); }).join();
    EXPECT_FALSE(isHereToo);
}

TEST(ExclusiveCalls, MayFollowOneAnotherOnAnyThreads)
{
    ExclusiveCalls<true> calls;
    for (int i = 0; i < 2; ++i) {
        std::jthread([&calls] { const ExclusiveCalls<true>::Call call(calls, "there"); }).join();
        const ExclusiveCalls<true>::Call call(calls, "here");
    }
}

TEST(ExclusiveCallsDeathTest, StopTheProgramWhenTwoRunAtATime)
{
    ExclusiveCalls<true> calls;
    const ExclusiveCalls<true>::Call first(calls, "render");
    EXPECT_EXIT({ const ExclusiveCalls<true>::Call second(calls, "release"); },
                testing::KilledBySignal(SIGABRT), "velotrine: fatal: release");
}

TEST(ExclusiveCalls, AreNotCheckedInAReleaseBuild)
{
    ExclusiveCalls<false> calls;
    const ExclusiveCalls<false>::Call first(calls, "render");
    const ExclusiveCalls<false>::Call second(calls, "release");
}

} // namespace
} // namespace velotrine
