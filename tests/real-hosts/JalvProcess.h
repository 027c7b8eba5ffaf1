#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/JackServer.h"

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

/// The LV2 plug-in in jalv, as JACK's client "velotrine", on a JACK server of its own: 48000 Hz, 256 frames.
class JalvProcess
{
public:
    /// @param values       of parameters, by identifier
    /// @param environment  added to what jalv sees of this process's own
    explicit JalvProcess(const std::map<std::string, double>& values,
                         const std::vector<std::pair<std::string, std::string>>& environment = {});

    /// Asks it to end, and waits until it has taken leave of JACK.
    ~JalvProcess();

    JalvProcess(const JalvProcess&) = delete;
    JalvProcess& operator=(const JalvProcess&) = delete;

private:
    std::unique_ptr<JackServer> server;
    std::array<int, 2> input{};
    std::unique_ptr<ChildProcess> jalv; ///< ends before the server
};

} // namespace velotrine
