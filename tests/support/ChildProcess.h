#pragma once

#include <csignal>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace velotrine {

/// How a program ended, and what it said.
struct ProcessResult
{
    int exitCode = -1; ///< -1 when a signal ended it
    int signal = 0;
    std::string out;
    std::string err;
};

/// What a program runs in, beside its arguments.
struct ProcessSurroundings
{
    std::string folder{}; ///< the working folder; empty for this one
    std::vector<std::pair<std::string, std::string>> environment{}; ///< added to this process's own
    std::function<void()> beforeStart{}; ///< runs in the new process just before the program does
    int signalWhenOrphaned = SIGKILL;    ///< what it gets if the test ends before it
};

/// A program started with pipes for what it says. It does not outlive the test.
class ChildProcess
{
public:
    ChildProcess(const std::vector<std::string>& commandLine, const ProcessSurroundings& surroundings);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void send(int signal) const;

    [[nodiscard]] pid_t id() const { return process; }

    /// Bytes that the program has written to its standard output and nobody has read.
    [[nodiscard]] int bytesWaiting() const;

    /// Whether the program has ended; does not wait for it.
    [[nodiscard]] bool hasEnded();

    /// Returns when the program has stopped itself, as a debugger would stop it.
    void waitUntilStopped() const;

    /// Closes this side of the program's standard output.
    void stopListening();

    /// Reads all that the program says until it ends.
    [[nodiscard]] ProcessResult finish();

private:
    pid_t process = -1;
    int outPipe = -1;
    int errPipe = -1;
    bool reaped = false;
    int status = 0;
};

/// Runs a program to its end.
[[nodiscard]] ProcessResult runProcess(const std::vector<std::string>& commandLine,
                                       const ProcessSurroundings& surroundings = {});

} // namespace velotrine
