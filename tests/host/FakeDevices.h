#pragma once

#include "host/OutputDevices.h"

#include <memory>
#include <string>
#include <vector>

namespace velotrine {

/// A kind of audio device, whose default device asks for sound when the test says so.
struct FakeSound
{
    bool isPresent = true;
    std::string typeName = "Fake";
    std::string deviceName = "Loudspeaker";
    std::vector<std::string> namesBefore{}; ///< of devices that are listed before the default one
    std::string openProblem{};              ///< empty when it opens
    std::vector<double> sampleRates{48000.0};
    std::vector<int> bufferSizes{256};
    int channelCount = 2;

    /// Has the device ask for sound, as its own thread would; one list of samples for each channel. Needs a
    /// device that plays.
    std::vector<std::vector<float>> request(int frames) const;

    // What the device was told
    juce::AudioIODeviceCallback* callback = nullptr; ///< while it plays
    double sampleRate = 0.0;
    int bufferFrames = 0;
    std::string openedName{};
    int openings = 0;
};

/// Types that look into these, in order; they outlive the types.
[[nodiscard]] DeviceTypeFactory fakeDeviceTypes(std::vector<FakeSound*> sounds);

} // namespace velotrine
