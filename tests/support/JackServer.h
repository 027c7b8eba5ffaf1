#pragma once

#include "tests/support/ChildProcess.h"

#include <memory>
#include <string>
#include <vector>

namespace velotrine {

/// In Hz, of a server unless it is given another.
inline constexpr int jackRate = 48000;

/// Frames at a time.
inline constexpr int jackCycleFrames = 256;

/// A JACK server of the test's own, under the name that JACK_DEFAULT_SERVER gives, on JACK's dummy driver.
/// Throws if it does not start to answer.
class JackServer
{
public:
    /// @param options     further ones of the server's
    /// @param sampleRate  Hz
    explicit JackServer(const std::vector<std::string>& options = {}, int sampleRate = jackRate);
    JackServer(const JackServer&) = delete;
    JackServer& operator=(const JackServer&) = delete;

    /// Asks it to end, and waits until it has.
    ~JackServer();

    /// Ends it without a chance to tell its clients. What it leaves behind goes with this object.
    void kill();

    /// Stops it as a debugger would: it is there, and does nothing.
    void freeze() const;
    void thaw() const;

private:
    void start(const std::vector<std::string>& options, int sampleRate);
    void stop() const;
    void giveBackWhatTheKilledHeld();

    std::unique_ptr<ChildProcess> process;
    bool wasKilled = false;
};

} // namespace velotrine
