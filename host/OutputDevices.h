#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <juce_audio_devices/juce_audio_devices.h>

namespace velotrine {

/// The ways to audio devices, the preferred one first.
using DeviceTypes = std::vector<std::unique_ptr<juce::AudioIODeviceType>>;
using DeviceTypeFactory = std::function<DeviceTypes()>;

/// JACK, which is there while a server runs, then ALSA; on macOS, Core Audio. They have not looked for
/// devices yet, and ALSA's looks only once: make new ones to look again, after the old ones are gone.
[[nodiscard]] DeviceTypes systemDeviceTypes();

struct OutputDevice
{
    std::string type; ///< "JACK", "ALSA"
    std::string name;

    bool operator==(const OutputDevice&) const = default;
};

/// Looks for the devices that play sound: type by type, each type's default first, so that the first of all
/// is the one to open when none is asked for. Needs no display. Any one thread.
[[nodiscard]] std::vector<OutputDevice> outputDevices(const DeviceTypes& types);

} // namespace velotrine
