#pragma once

#include "plugin/EmbeddedEditor.h"
#include "plugin/clap/ClapHostExtensions.h"

#include <clap/ext/gui.h>
#include <clap/ext/timer-support.h>

#include <vector>

namespace velotrine {

/// The editor in a CLAP host's window, and the host's loop that keeps it alive. Main thread.
class ClapGui
{
public:
    /// @param host        outlives this
    /// @param instrument  outlives this
    ClapGui(const clap_host_t& host, HostedInstrument& instrument);
    ~ClapGui();

    bool create();
    void destroy();

    /// Null after destroy(), and before create().
    [[nodiscard]] EmbeddedEditor* editor() noexcept { return embedded.isOpen() ? &embedded : nullptr; }

    void pump() { embedded.pump(); }

private:
    void watch();
    void stopWatching();

    const clap_host_t& clapHost;
    const clap_host_timer_support_t* timers;
    const ClapHostPosixFdSupport* descriptors;
    EmbeddedEditor embedded;
    std::vector<int> watched;
    clap_id timer = CLAP_INVALID_ID;
};

} // namespace velotrine
