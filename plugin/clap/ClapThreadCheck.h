#pragma once

#include "plugin/ThreadChecks.h"

#include <clap/ext/thread-check.h>
#include <clap/host.h>

namespace velotrine {

/// The thread that CLAP names for a function.
enum class ClapThread
{
    any,
    main,
    audio,
    audioWhileActive, ///< else the main one
};

/// Whether a host calls on the right thread: by its own word, as far as it gives one. Any thread.
class ClapThreadCheck
{
public:
    /// Main thread.
    explicit ClapThreadCheck(const clap_host_t& host) noexcept : clapHost(host) {}

    /// Looks for the host's word, which may not be asked for earlier. In the plug-in's init().
    void findHostsWord() noexcept
    {
        hostsWord = static_cast<const clap_host_thread_check_t*>(
            clapHost.get_extension(&clapHost, CLAP_EXT_THREAD_CHECK));
    }

    /// Without the host's word, the main thread is the one that made this, and any may be an audio thread.
    [[nodiscard]] bool isOn(ClapThread thread, bool isActive) const noexcept
    {
        switch (thread) {
        case ClapThread::any:
            return true;
        case ClapThread::main:
            return hostsWord != nullptr ? hostsWord->is_main_thread(&clapHost) : home.isHere();
        case ClapThread::audio:
            return hostsWord == nullptr || hostsWord->is_audio_thread(&clapHost);
        case ClapThread::audioWhileActive:
            return isOn(isActive ? ClapThread::audio : ClapThread::main, isActive);
        }
        return true;
    }

private:
    const clap_host_t& clapHost;
    const clap_host_thread_check_t* hostsWord = nullptr;
    const HomeThread home;
};

} // namespace velotrine
