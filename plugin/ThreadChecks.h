#pragma once

#include "engine/FatalError.h"

#include <atomic>
#include <thread>

// Whether hosts call on the threads that their formats name. A debug build stops at the first call that
// breaks the rule, where a debugger shows who made it. A release build believes its host.

namespace velotrine {

#ifdef NDEBUG
inline constexpr bool checksThreads = false;
#else
inline constexpr bool checksThreads = true;
#endif

/// The thread that makes this.
class HomeThread
{
public:
    [[nodiscard]] bool isHere() const noexcept { return std::this_thread::get_id() == id; }

    /// Stops a debug build on any other thread.
    /// @param entry  what was called
    void check(const char* entry) const noexcept
    {
        if (checksThreads && !isHere())
            fatalError(entry);
    }

private:
    const std::thread::id id = std::this_thread::get_id();
};

/// Functions of which no two may run at the same time, on whatever threads. The formats say who may call what
/// at a time more often than on which thread. Never waits.
template <bool isChecked = checksThreads>
class ExclusiveCalls
{
public:
    /// As long as one of the functions runs. A second one stops the program.
    class [[nodiscard]] Call
    {
    public:
        /// @param function  its name
        Call(ExclusiveCalls& calls, const char* function) noexcept : all(calls)
        {
            if constexpr (isChecked)
                if (all.isRunning.exchange(true))
                    fatalError(function);
        }

        ~Call()
        {
            if constexpr (isChecked)
                all.isRunning = false;
        }

        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        ExclusiveCalls& all;
    };

private:
    std::atomic<bool> isRunning{false};
};

} // namespace velotrine
