#include "commandline/Interruption.h"

#include <csignal>
#include <initializer_list>

namespace velotrine {

namespace {

volatile std::sig_atomic_t notedSignal = 0;

void note(int signal)
{
    notedSignal = signal;
}

} // namespace

void noteSignals()
{
    // Without SA_RESTART: a call that waits for another program, at a pipe, has to come back.
    struct sigaction noting = {};
    noting.sa_handler = note;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::sigaction(signal, &noting, nullptr);
    for (const int signal : {SIGPIPE, SIGXFSZ})
        std::signal(signal, SIG_IGN);
}

int interruptingSignal() noexcept
{
    return notedSignal;
}

void stopIfInterrupted()
{
    if (const int signal = interruptingSignal())
        throw Interrupted{signal};
}

} // namespace velotrine
