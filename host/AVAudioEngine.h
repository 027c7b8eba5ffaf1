#pragma once

#include "host/AVAudioMixerNode.h"
#include "host/AVAudioUnit.h"
#include "host/AudioDeviceOptions.h"
#include "host/AudioOutput.h"
#include "host/NoteSender.h"
#include "host/OutputDevices.h"
#include "host/SilentClock.h"

#include <functional>
#include <memory>
#include <optional>

#include <juce_events/juce_events.h>

namespace velotrine {

/// Plays one audio unit through an audio device, and keeps its clock going when there is none. Message
/// thread, whose loop must run for devices to be noticed as they come and go.
///
/// A device that goes away takes the sound with it, not the clock: from then on, frames are rendered for
/// nobody in real time. About once a second it is looked for again, and when it is back it plays on from
/// where the clock is. Should it run at another rate than before, notes that are sounding end there.
class AVAudioEngine final : private juce::Timer
{
public:
    /// @param makeNotePort  a way out for notes beside that of the device; what it makes may be null
    explicit AVAudioEngine(DeviceTypeFactory deviceTypes = systemDeviceTypes,
                           const NotePortFactory& makeNotePort = systemNotePort);
    ~AVAudioEngine() override;
    AVAudioEngine(const AVAudioEngine&) = delete;
    AVAudioEngine& operator=(const AVAudioEngine&) = delete;

    /// Before start().
    void setDeviceOptions(AudioDeviceOptions options) { deviceOptions = std::move(options); }

    /// Before start(). The engine plays one node; a further one replaces it.
    /// @param newNode  not empty
    void attach(std::shared_ptr<AVAudioUnit> newNode);

    [[nodiscard]] AVAudioMixerNode& mainMixerNode() noexcept { return mixer; }

    /// Before start(). Connects the attached node to the main mixer; other nodes or mixers are a fatal error.
    /// @param format  its rate is requested from the device when the device options name none; empty for the
    ///                device's own
    void connect(const std::shared_ptr<AVAudioUnit>& source, AVAudioMixerNode& destination,
                 const std::optional<AVAudioFormat>& format);

    /// Allocates the unit's render resources and begins to play, a JACK server preferred, else on the
    /// system's default device. With an error there is no sound; if that is because there is no device, the
    /// clock runs all the same, and a device that appears later is used. Further calls do nothing. Throws
    /// nothing.
    [[nodiscard]] std::optional<AUError> start();

    [[nodiscard]] bool hasDevice() const noexcept { return output.isOpen(); }

    /// Called after each render cycle, with its length, on the render thread: it must not wait. Set it before
    /// start(); what it reaches outlives the engine.
    std::function<void(int frames)> onCycleRendered;

    /// Called on the message thread whenever hasDevice() has changed after start().
    std::function<void()> onDeviceChanged;

private:
    void timerCallback() override;
    void pullSilently();
    void checkDevice();
    void lookForDevice();
    [[nodiscard]] std::optional<AUError> openDevice();
    void prepare(double sampleRate);
    [[nodiscard]] AURenderBlock observedBlock() const;
    void beginSilentPull();
    void endSilentPull();
    void tellOfDevice() const;

    AudioDeviceOptions deviceOptions;
    std::unique_ptr<NoteSender> noteSender; ///< null where there is no port
    AVAudioMixerNode mixer;
    AudioOutput output;
    std::shared_ptr<AVAudioUnit> node;
    bool isConnected = false;
    bool isStarted = false;
    std::optional<double> preparedRate; ///< Hz; what the unit is allocated for and the mixer renders

    SilentClock silentClock;
    bool pullsSilently = false;
    std::uint32_t requestsAtPullStart = 0;
    SilentClock::TimePoint lastCheck;
    int checksWithoutDevice = 0;
};

} // namespace velotrine
