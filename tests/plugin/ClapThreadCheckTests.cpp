#include "plugin/clap/ClapThreadCheck.h"

#include "tests/plugin/ClapHost.h"

#include <csignal>
#include <cstdint>
#include <string_view>
#include <thread>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// A host that says of every thread that it is what the test wants.
struct ClaimingHost
{
    explicit ClaimingHost(bool hasExtension)
    {
        host.host_data = this;
        host.get_extension = hasExtension ? extension : nothing;
    }

    static const void* extension(const clap_host_t*, const char* id)
    {
        static constexpr clap_host_thread_check_t threadCheck{
            .is_main_thread = [](const clap_host_t* h) { return self(h).saysMain; },
            .is_audio_thread = [](const clap_host_t* h) { return self(h).saysAudio; }};
        return std::string_view(id) == CLAP_EXT_THREAD_CHECK ? &threadCheck : nullptr;
    }

    static const void* nothing(const clap_host_t*, const char*) { return nullptr; }

    static const ClaimingHost& self(const clap_host_t* h)
    {
        return *static_cast<const ClaimingHost*>(h->host_data);
    }

    clap_host_t host{};
    bool saysMain = false;
    bool saysAudio = false;
};

bool isOnElsewhere(const ClapThreadCheck& check, ClapThread thread)
{
    bool isOn = false;
    std::jthread([&] { isOn = check.isOn(thread, true); }).join();
    return isOn;
}

TEST(ClapThreadCheck, TakesTheHostsWord)
{
    ClaimingHost host(true);
    ClapThreadCheck check(host.host);
    check.findHostsWord();
    for (const bool isMain : {false, true})
        for (const bool isAudio : {false, true}) {
            host.saysMain = isMain;
            host.saysAudio = isAudio;
            EXPECT_EQ(check.isOn(ClapThread::main, true), isMain);
            EXPECT_EQ(check.isOn(ClapThread::audio, true), isAudio);
            EXPECT_EQ(check.isOn(ClapThread::audioWhileActive, true), isAudio);
            EXPECT_EQ(check.isOn(ClapThread::audioWhileActive, false), isMain);
            EXPECT_TRUE(check.isOn(ClapThread::any, true));
        }
}

TEST(ClapThreadCheck, KnowsTheMainThreadAloneOfAHostThatSaysNothing)
{
    const ClaimingHost host(false);
    ClapThreadCheck check(host.host);
    check.findHostsWord();
    EXPECT_TRUE(check.isOn(ClapThread::main, true));
    EXPECT_FALSE(isOnElsewhere(check, ClapThread::main));
    // The format lets a host render anywhere, even on its main thread, if only one renders at a time.
    EXPECT_TRUE(check.isOn(ClapThread::audio, true));
    EXPECT_TRUE(isOnElsewhere(check, ClapThread::audio));
}

TEST(ClapThreadCheck, DoesNotAskTheHostBeforeTheFormatAllowsIt)
{
    ClaimingHost host(true);
    const ClapThreadCheck check(host.host);
    EXPECT_TRUE(check.isOn(ClapThread::main, false));
}

TEST(ClapThreadCheckDeathTest, StopsADebugBuildWhileAReleaseBuildBelievesTheHost)
{
    const ClapLibrary library;
    ClapHost host(library);
    const auto callElsewhere = [&host] {
        std::uint32_t count = 0;
        std::jthread([&] { count = host.params().count(&host.plugin()); }).join();
        return count;
    };
    if (checksThreads) {
        EXPECT_EXIT(callElsewhere(), testing::KilledBySignal(SIGABRT), "parameterCountForHost");
    } else {
        EXPECT_EQ(callElsewhere(), parameterCount);
    }
}

} // namespace
} // namespace velotrine
