#pragma once

#include "host/AVAudioMixerNode.h"
#include "host/AudioDeviceOptions.h"
#include "host/OutputDevices.h"
#include "platform/AUError.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace velotrine {

/// The audio device that plays what a mixer renders. Message thread; the device calls the mixer on a thread
/// of its own.
class AudioOutput final : private juce::AudioIODeviceCallback
{
public:
    enum class State
    {
        closed,
        playing,
        idle, ///< open, but it asks for no sound: a JACK client whose server stands still
        lost, ///< open no longer, or stuck; close it
    };

    /// Makes the mixer's source ready to render at a rate in Hz. Throws AUError when that cannot be done.
    using Prepare = std::function<void(double sampleRate)>;

    static constexpr int checkIntervalMilliseconds = 100;

    /// @param source  outlives this
    AudioOutput(AVAudioMixerNode& source, DeviceTypeFactory deviceTypes);
    ~AudioOutput() override;
    AudioOutput(const AudioOutput&) = delete;
    AudioOutput& operator=(const AudioOutput&) = delete;

    /// Opens the device of the requested name, or the first default that opens, prepares at its rate, and
    /// lets it play. No error when it does.
    [[nodiscard]] std::optional<AUError> open(const AudioDeviceOptions& options, const Prepare& prepare);

    /// When this returns, the device asks for no more sound. Where it takes notes, those that are held end
    /// first, which takes it some buffers.
    void close();

    [[nodiscard]] bool isOpen() const noexcept { return device != nullptr; }

    /// Call it once an interval; it takes a few to find out whether the device still asks for sound.
    [[nodiscard]] State check();

    /// How many of the device's requests for sound are over. Any thread.
    [[nodiscard]] std::uint32_t requests() const noexcept
    {
        return requestCount.load(std::memory_order_acquire);
    }

private:
    [[nodiscard]] juce::String openDevice(juce::AudioIODeviceType& type, const juce::String& name,
                                          const AudioDeviceOptions& options);
    void play(const Prepare& prepare);
    void endNotes();

    void audioDeviceIOCallbackWithContext(const float* const* inputs, int inputCount, float* const* outputs,
                                          int outputCount, int frames,
                                          const juce::AudioIODeviceCallbackContext& context) override;

    void audioDeviceAboutToStart(juce::AudioIODevice*) override {}

    void audioDeviceStopped() override {}

    AVAudioMixerNode& mixer;
    const DeviceTypeFactory makeTypes;
    DeviceTypes types; ///< the device's own is among them, and outlives it
    std::unique_ptr<juce::AudioIODevice> device;
    NoteReceiver* noteReceiver = nullptr; ///< the device, if it takes notes as well
    std::atomic<std::uint32_t> requestCount{0};
    std::uint32_t requestsAtLastCheck = 0;
    int checksWithoutRequest = 0;
    int patience = 0; ///< checks without a request that are nothing unusual
};

} // namespace velotrine
