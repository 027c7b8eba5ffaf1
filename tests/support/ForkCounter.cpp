#include "tests/support/ForkCounter.h"

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <unistd.h>

// The system's own functions, in front of the C library's.

namespace velotrine {

namespace {

std::atomic<int> started{0};

void note(std::string_view line) noexcept
{
    ++started;
    const auto* const log = std::getenv("VELOTRINE_FORK_LOG");
    const int file = log != nullptr ? open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    if (file < 0)
        return;
    [[maybe_unused]] const auto written = write(file, line.data(), line.size());
    close(file);
}

template <typename Function>
Function* systemsOwn(const char* name) noexcept
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

int processesStarted() noexcept
{
    return started;
}

} // namespace velotrine

#define VELOTRINE_INTERPOSED extern "C" __attribute__((visibility("default")))

VELOTRINE_INTERPOSED pid_t fork() noexcept
{
    velotrine::note("fork\n");
    return velotrine::systemsOwn<pid_t()>("fork")();
}

VELOTRINE_INTERPOSED int posix_spawn(pid_t* child, const char* path,
                                     const posix_spawn_file_actions_t* actions,
                                     const posix_spawnattr_t* attributes, char* const* arguments,
                                     char* const* environment)
{
    velotrine::note("posix_spawn\n");
    return velotrine::systemsOwn<decltype(posix_spawn)>("posix_spawn")(child, path, actions, attributes,
                                                                       arguments, environment);
}

VELOTRINE_INTERPOSED int posix_spawnp(pid_t* child, const char* path,
                                      const posix_spawn_file_actions_t* actions,
                                      const posix_spawnattr_t* attributes, char* const* arguments,
                                      char* const* environment)
{
    velotrine::note("posix_spawnp\n");
    return velotrine::systemsOwn<decltype(posix_spawnp)>("posix_spawnp")(child, path, actions, attributes,
                                                                         arguments, environment);
}

VELOTRINE_INTERPOSED FILE* popen(const char* command, const char* mode)
{
    velotrine::note("popen\n");
    return velotrine::systemsOwn<decltype(popen)>("popen")(command, mode);
}

VELOTRINE_INTERPOSED int system(const char* command)
{
    velotrine::note("system\n");
    return velotrine::systemsOwn<decltype(system)>("system")(command);
}
