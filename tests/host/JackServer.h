#pragma once

#include "tests/render/ChildProcess.h"

#include <memory>

namespace velotrine {

/// A JACK server of the test's own, under the name that JACK_DEFAULT_SERVER gives, on JACK's dummy driver:
/// 48000 Hz, 256 frames. Throws when it does not begin to answer.
class JackServer
{
public:
    JackServer();

    /// Asks it to end, and waits until it has.
    ~JackServer();

    /// Ends it with no chance to take leave of its clients.
    void kill();

    /// Holds it up: it is there, and does nothing.
    void freeze() const;
    void thaw() const;

private:
    std::unique_ptr<ChildProcess> process;
};

/// The loudest sample that the application's outputs send to the server within some seconds; below 0 when the
/// server does not answer or the application is not connected to it.
[[nodiscard]] float peakOnJack(double seconds);

} // namespace velotrine
