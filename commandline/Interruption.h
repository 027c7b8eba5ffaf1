#pragma once

namespace velotrine {

/// From here on, Ctrl-C, a hang-up and a request to end the program are only noted, so that long work can
/// stop cleanly; a closed pipe and a file-size limit become plain write errors.
void noteSignals();

/// The signal that asked the program to end, or 0.
[[nodiscard]] int interruptingSignal() noexcept;

/// Thrown by work that stopped because of interruptingSignal().
struct Interrupted
{
    int signal;
};

/// Throws Interrupted when the program has been asked to end.
void stopIfInterrupted();

} // namespace velotrine
