#pragma once

#include <optional>
#include <string>

namespace velotrine {

/// What is wished of the audio device; what is not said is left to it.
struct AudioDeviceOptions
{
    std::optional<std::string> deviceName; ///< one of outputDevices(); none is the system's default
    std::optional<double> sampleRate;      ///< Hz, above 0; the device's nearest is taken
    std::optional<int> bufferFrames;       ///< 1 or more; the device's nearest is taken
};

} // namespace velotrine
