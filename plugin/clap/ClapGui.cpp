#include "plugin/clap/ClapGui.h"

#include <cstdint>

namespace velotrine {

namespace {

// A host that watches descriptors calls in time; the timer then only catches what no descriptor announces.
constexpr std::uint32_t netPeriodMs = 100;
constexpr std::uint32_t onlyTimerPeriodMs = 15;

template <typename Extension>
const Extension* extensionOf(const clap_host_t& host, const char* id)
{
    return static_cast<const Extension*>(host.get_extension(&host, id));
}

} // namespace

ClapGui::ClapGui(const clap_host_t& host, HostedInstrument& instrument)
    : clapHost(host), timers(extensionOf<clap_host_timer_support_t>(host, CLAP_EXT_TIMER_SUPPORT)),
      descriptors(extensionOf<ClapHostPosixFdSupport>(host, clapPosixFdSupportId)), embedded(instrument)
{
    embedded.onDescriptorsChanged = [this] {
        if (embedded.isOpen())
            watch();
    };
}

ClapGui::~ClapGui()
{
    destroy();
}

bool ClapGui::create()
{
    if ((timers == nullptr && descriptors == nullptr) || !EmbeddedEditor::hasDisplay())
        return false;
    embedded.open();
    watch();
    if (timers != nullptr && timer == CLAP_INVALID_ID)
        timers->register_timer(&clapHost, watched.empty() ? onlyTimerPeriodMs : netPeriodMs, &timer);
    return true;
}

void ClapGui::destroy()
{
    if (timer != CLAP_INVALID_ID)
        timers->unregister_timer(&clapHost, timer);
    timer = CLAP_INVALID_ID;
    stopWatching();
    embedded.close();
}

void ClapGui::watch()
{
    stopWatching();
    if (descriptors == nullptr)
        return;
    const auto open = embedded.descriptors();
    watched.reserve(open.size());
    for (const auto descriptor : open)
        if (descriptors->registerFd(&clapHost, descriptor, clapPosixFdRead))
            watched.push_back(descriptor);
}

void ClapGui::stopWatching()
{
    for (const auto descriptor : watched)
        descriptors->unregisterFd(&clapHost, descriptor);
    watched.clear();
}

} // namespace velotrine
