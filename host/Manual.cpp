#include "host/Manual.h"

#include <array>
#include <cstdlib>
#include <string>
#include <system_error>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velotrine {

namespace {

constexpr int notThere = 1; ///< exit code

/// Ends at once: the browser may stay for hours. Fails where there is nothing to ask.
constexpr const char* askDesktop = R"(command -v xdg-open >/dev/null && { xdg-open "$1" >/dev/null 2>&1 & })";

bool isNamed(const char* variable)
{
    const auto* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// Whether the shell was started and says that all went well. The browser is in a session of its own, so that
/// it stays when a terminal is closed.
bool runInShell(const char* script, const std::string& argument)
{
    posix_spawnattr_t attributes{};
    if (::posix_spawnattr_init(&attributes) != 0)
        return false;
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    const std::array<const char*, 6> command{"sh", "-c", script, "sh", argument.c_str(), nullptr};
    pid_t shell = -1;
    const int error = ::posix_spawn(&shell, "/bin/sh", nullptr, &attributes,
                                    const_cast<char* const*>(command.data()), ::environ);
    ::posix_spawnattr_destroy(&attributes);
    int status = 0;
    return error == 0 && ::waitpid(shell, &status, 0) == shell && status == 0;
}

} // namespace

std::filesystem::path installedManual()
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto page = (program.parent_path() / VELOTRINE_MANUAL_FROM_PROGRAM).lexically_normal();
    return std::filesystem::is_regular_file(page, error) ? page : std::filesystem::path();
}

bool showInBrowser(const std::filesystem::path& page)
{
    return (isNamed("DISPLAY") || isNamed("WAYLAND_DISPLAY")) && runInShell(askDesktop, page.string());
}

ProgramEnd openManual(const HostOptions& options, const std::filesystem::path& page)
{
    if (page.empty())
        return {.exitCode = notThere,
                .out = {},
                .err = options.program + ": --manual: the manual is not installed with this program\n"};
    return {.exitCode = 0, .out = showInBrowser(page) ? "" : page.string() + "\n", .err = {}};
}

} // namespace velotrine
