#pragma once

#include "tests/support/ChildProcess.h"

#include <memory>
#include <string>
#include <vector>

namespace velotrine {

/// A JACK server of the test's own, under the name that JACK_DEFAULT_SERVER gives, on JACK's dummy driver:
/// 48000 Hz, 256 frames. Throws when it does not begin to answer.
class JackServer
{
public:
    /// @param options  further ones of the server's
    explicit JackServer(const std::vector<std::string>& options = {});

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

} // namespace velotrine
