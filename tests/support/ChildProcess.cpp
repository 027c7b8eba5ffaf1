#include "tests/support/ChildProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velotrine {

namespace {

constexpr int couldNotStart = 127;

struct Pipe
{
    int readEnd;
    int writeEnd;
};

Pipe makePipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe could be made");
    return {ends[0], ends[1]};
}

[[noreturn]] void becomeProgram(const std::vector<std::string>& commandLine,
                                const ProcessSurroundings& surroundings, int out, int err)
{
    ::prctl(PR_SET_PDEATHSIG, surroundings.signalWhenOrphaned);
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    if (!surroundings.folder.empty() && ::chdir(surroundings.folder.c_str()) != 0)
        ::_exit(couldNotStart);
    for (const auto& [name, value] : surroundings.environment)
        ::setenv(name.c_str(), value.c_str(), 1);
    if (surroundings.beforeStart)
        surroundings.beforeStart();

    std::vector<char*> arguments;
    arguments.reserve(commandLine.size() + 1);
    for (const auto& argument : commandLine)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    ::_exit(couldNotStart);
}

/// Appends what has arrived. False when nothing more will come.
bool readSome(int descriptor, std::string& text)
{
    std::array<char, 65536> chunk{};
    const auto count = ::read(descriptor, chunk.data(), chunk.size());
    if (count > 0)
        text.append(chunk.data(), static_cast<std::size_t>(count));
    return count > 0 || (count < 0 && errno == EINTR);
}

void closeOnce(int& descriptor)
{
    if (descriptor >= 0)
        ::close(std::exchange(descriptor, -1));
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& commandLine,
                           const ProcessSurroundings& surroundings)
{
    const auto out = makePipe();
    const auto err = makePipe();
    process = ::fork();
    if (process == 0)
        becomeProgram(commandLine, surroundings, out.writeEnd, err.writeEnd);
    ::close(out.writeEnd);
    ::close(err.writeEnd);
    outPipe = out.readEnd;
    errPipe = err.readEnd;
    if (process < 0)
        throw std::runtime_error("no process could be made");
}

ChildProcess::~ChildProcess()
{
    closeOnce(outPipe);
    closeOnce(errPipe);
    if (!hasEnded()) {
        send(SIGKILL);
        ::waitpid(process, &status, 0);
    }
}

void ChildProcess::send(int signal) const
{
    if (!reaped)
        ::kill(process, signal);
}

int ChildProcess::bytesWaiting() const
{
    int count = 0;
    ::ioctl(outPipe, FIONREAD, &count);
    return count;
}

bool ChildProcess::hasEnded()
{
    reaped = reaped || ::waitpid(process, &status, WNOHANG) == process;
    return reaped;
}

void ChildProcess::waitUntilStopped() const
{
    int state = 0;
    ::waitpid(process, &state, WUNTRACED);
    if (!WIFSTOPPED(state))
        throw std::runtime_error("the program ended instead of stopping");
}

void ChildProcess::stopListening()
{
    closeOnce(outPipe);
}

ProcessResult ChildProcess::finish()
{
    ProcessResult result;
    while (outPipe >= 0 || errPipe >= 0) {
        // A closed side, -1, is one that poll() leaves alone.
        std::array<pollfd, 2> sides{{{outPipe, POLLIN, 0}, {errPipe, POLLIN, 0}}};
        ::poll(sides.data(), sides.size(), -1);
        if (sides[0].revents != 0 && !readSome(outPipe, result.out))
            closeOnce(outPipe);
        if (sides[1].revents != 0 && !readSome(errPipe, result.err))
            closeOnce(errPipe);
    }
    while (!reaped)
        reaped = ::waitpid(process, &status, 0) == process;
    if (WIFEXITED(status))
        result.exitCode = WEXITSTATUS(status);
    else
        result.signal = WTERMSIG(status);
    return result;
}

ProcessResult runProcess(const std::vector<std::string>& commandLine, const ProcessSurroundings& surroundings)
{
    return ChildProcess(commandLine, surroundings).finish();
}

} // namespace velotrine
