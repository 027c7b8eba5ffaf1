#pragma once

#include <clap/host.h>
#include <clap/plugin.h>

#include <cstdint>

// Two extensions of CLAP 1.1 that the packaged headers do not have: descriptors that the host watches for the
// plug-in, and the host's log. Layouts as the format defines them.

namespace velotrine {

inline constexpr auto clapPosixFdSupportId = "clap.posix-fd-support";
inline constexpr std::uint32_t clapPosixFdRead = 1;

struct ClapPluginPosixFdSupport
{
    void(CLAP_ABI* onFd)(const clap_plugin_t* plugin, int fd, std::uint32_t flags);
};

struct ClapHostPosixFdSupport
{
    bool(CLAP_ABI* registerFd)(const clap_host_t* host, int fd, std::uint32_t flags);
    bool(CLAP_ABI* modifyFd)(const clap_host_t* host, int fd, std::uint32_t flags);
    bool(CLAP_ABI* unregisterFd)(const clap_host_t* host, int fd);
};

inline constexpr auto clapLogId = "clap.log";
inline constexpr std::int32_t clapLogError = 3;

struct ClapHostLog
{
    void(CLAP_ABI* log)(const clap_host_t* host, std::int32_t severity, const char* message);
};

} // namespace velotrine
