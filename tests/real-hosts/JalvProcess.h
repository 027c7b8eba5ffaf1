#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/JackServer.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

/// Of the server's cycles, whole ones.
constexpr int cyclesIn(double seconds)
{
    return static_cast<int>(seconds * jackRate / jackCycleFrames);
}

/// The text of a state in which all but the volume has its initial value.
[[nodiscard]] std::string stateWithVolume(double volume);

/// The LV2 plug-in in jalv, as JACK's client "velotrine", on a JACK server of its own: 48000 Hz, 256 frames.
class JalvProcess
{
public:
    /// @param values       of parameters, by identifier
    /// @param environment  added to what jalv sees of this process's own
    /// @param states       texts that are its presets "urn:velotrine:state0" and so on
    explicit JalvProcess(const std::map<std::string, double>& values,
                         const std::vector<std::pair<std::string, std::string>>& environment = {},
                         const std::vector<std::string>& states = {});

    /// Asks it to end, and waits until it has taken leave of JACK.
    ~JalvProcess();

    JalvProcess(const JalvProcess&) = delete;
    JalvProcess& operator=(const JalvProcess&) = delete;

    /// A line at its prompt, such as "bpm = 90" or "preset urn:velotrine:state0".
    void type(const std::string& line) const;

private:
    TemporaryFolder folder;
    std::unique_ptr<JackServer> server;
    std::array<int, 2> input{};
    std::unique_ptr<ChildProcess> jalv; ///< ends before the server
};

} // namespace velotrine
