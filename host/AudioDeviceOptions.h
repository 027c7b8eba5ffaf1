#pragma once

#include <optional>
#include <string>

namespace velotrine {

/// Requested device settings; an empty one leaves the choice to the device.
struct AudioDeviceOptions
{
    std::optional<std::string> deviceName; ///< one of outputDevices(); none is the system's default
    std::optional<double> sampleRate;      ///< Hz, above 0; the device's nearest is taken
    std::optional<int> bufferFrames;       ///< 1 or more; the device's nearest is taken
};

} // namespace velotrine
