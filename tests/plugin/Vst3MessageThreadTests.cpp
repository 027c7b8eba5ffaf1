// JUCE's wrapper has a message thread of its own, whose lock it takes as the host lets go of a plug-in. That
// lock lies on the stack of the host's thread, and the message thread signals it. Here the C library's
// functions stand still in the moment in which the one could leave before the other is done.

#include "tests/plugin/Vst3Host.h"

#include "tests/support/VirtualDisplay.h"

#include <atomic>
#include <chrono>
#include <dlfcn.h>
#include <optional>
#include <pthread.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

/// One message from one thread to another, who answers with a signal.
struct Meeting
{
    std::thread::id sender;
    std::atomic<bool> isExpected = false;
    std::atomic<bool> hasBegun = false;
    std::atomic<pthread_cond_t*> signalled = nullptr; ///< as long as the other signals it
    std::atomic<bool> senderHasLeft = false;          ///< while the other still signalled
};

Meeting meeting;

template <typename Condition>
void waitUntil(const Condition& condition, std::chrono::milliseconds longest)
{
    const auto end = std::chrono::steady_clock::now() + longest;
    while (!condition() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(1ms);
}

bool isSender()
{
    return meeting.sender == std::this_thread::get_id();
}

/// The sender goes on as soon as the other has begun to signal.
void afterWriting()
{
    if (isSender() && meeting.isExpected.exchange(false))
        waitUntil([] { return meeting.hasBegun.load(); }, 1000ms);
}

/// The other gives the sender time to leave.
void beforeSignalling(pthread_cond_t* condition)
{
    if (meeting.sender == std::thread::id{} || isSender() || meeting.hasBegun.exchange(true))
        return;
    meeting.signalled = condition;
    waitUntil([] { return meeting.senderHasLeft.load(); }, 300ms);
}

void afterSignalling(const pthread_cond_t* condition)
{
    if (condition == meeting.signalled && !isSender())
        meeting.signalled = nullptr;
}

/// A sender that leaves too early waits here after all, or both threads would wait for ever.
void beforeDestroying(const pthread_cond_t* condition)
{
    if (condition != meeting.signalled || !isSender())
        return;
    meeting.senderHasLeft = true;
    waitUntil([] { return meeting.signalled == nullptr; }, 1000ms);
    std::this_thread::sleep_for(100ms);
}

template <typename Function>
Function* systemsOwn(const char* name)
{
    // Conditions have had this form since then, and dlsym would find their first.
    auto* const function = dlvsym(RTLD_NEXT, name, "GLIBC_2.3.2");
    return reinterpret_cast<Function*>(function != nullptr ? function : dlsym(RTLD_NEXT, name));
}

/// The wrapper looks for a display as it is loaded.
class Vst3MessageThread : public testing::Test
{
protected:
    const VirtualDisplay& display = VirtualDisplay::shared();
};

TEST_F(Vst3MessageThread, IsDoneWithALockBeforeTheHostsThreadLeavesIt)
{
    std::optional<Vst3Host> host(std::in_place);
    meeting.sender = std::this_thread::get_id();
    meeting.isExpected = true;
    host.reset();
    EXPECT_TRUE(meeting.hasBegun);
    EXPECT_FALSE(meeting.senderHasLeft);
    meeting.sender = {};
}

TEST_F(Vst3MessageThread, IsSilentOnceAHostNoLongerListens)
{
    Vst3Host host;
    host.setValue(host.programParameter(), 1.0);
    const auto state = host.save();
    host.setValue(host.programParameter(), 0.0);
    std::atomic<bool> speaks = false;
    std::atomic<bool> hostGoes = false;
    std::atomic<bool> hasSpoken = false;
    host.onRestart([&, hostsThread = std::this_thread::get_id()] {
        if (std::this_thread::get_id() == hostsThread)
            return;
        speaks = true;
        waitUntil([&] { return hostGoes.load(); }, 5000ms);
        std::this_thread::sleep_for(100ms);
        hasSpoken = true;
    });
    ASSERT_TRUE(host.load(state));
    waitUntil([&] { return speaks.load(); }, 5000ms);
    ASSERT_TRUE(speaks);
    hostGoes = true;
    host.stopListening();
    EXPECT_TRUE(hasSpoken);
}

} // namespace
} // namespace velotrine

#define VELOTRINE_INTERPOSED extern "C" __attribute__((visibility("default")))

VELOTRINE_INTERPOSED ssize_t write(int file, const void* data, std::size_t size)
{
    const auto written = velotrine::systemsOwn<decltype(write)>("write")(file, data, size);
    velotrine::afterWriting();
    return written;
}

VELOTRINE_INTERPOSED int pthread_cond_broadcast(pthread_cond_t* condition) noexcept
{
    velotrine::beforeSignalling(condition);
    const auto result =
        velotrine::systemsOwn<decltype(pthread_cond_broadcast)>("pthread_cond_broadcast")(condition);
    velotrine::afterSignalling(condition);
    return result;
}

VELOTRINE_INTERPOSED int pthread_cond_destroy(pthread_cond_t* condition) noexcept
{
    velotrine::beforeDestroying(condition);
    return velotrine::systemsOwn<decltype(pthread_cond_destroy)>("pthread_cond_destroy")(condition);
}
