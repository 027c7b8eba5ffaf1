#include "tests/host/FakeDevices.h"

namespace velotrine {

namespace {

class FakeDevice final : public juce::AudioIODevice
{
public:
    FakeDevice(FakeSound& itsSound, const juce::String& deviceName)
        : AudioIODevice(deviceName, itsSound.typeName), sound(itsSound)
    {}

    ~FakeDevice() override { close(); }

    juce::StringArray getOutputChannelNames() override { return {}; }

    juce::StringArray getInputChannelNames() override { return {}; }

    juce::Array<double> getAvailableSampleRates() override
    {
        return {sound.sampleRates.data(), static_cast<int>(sound.sampleRates.size())};
    }

    juce::Array<int> getAvailableBufferSizes() override
    {
        return {sound.bufferSizes.data(), static_cast<int>(sound.bufferSizes.size())};
    }

    int getDefaultBufferSize() override { return sound.bufferSizes.front(); }

    juce::String open(const juce::BigInteger&, const juce::BigInteger&, double sampleRate,
                      int bufferFrames) override
    {
        ++sound.openings;
        sound.openedName = getName().toStdString();
        sound.sampleRate = sampleRate;
        sound.bufferFrames = bufferFrames;
        opened = sound.openProblem.empty();
        return sound.openProblem;
    }

    void close() override
    {
        stop();
        opened = false;
    }

    bool isOpen() override { return opened; }

    void start(juce::AudioIODeviceCallback* callback) override
    {
        callback->audioDeviceAboutToStart(this);
        sound.callback = callback;
    }

    void stop() override
    {
        if (sound.callback != nullptr)
            sound.callback->audioDeviceStopped();
        sound.callback = nullptr;
    }

    bool isPlaying() override { return sound.callback != nullptr; }

    juce::String getLastError() override { return sound.openProblem; }

    int getCurrentBufferSizeSamples() override { return sound.bufferFrames; }

    double getCurrentSampleRate() override { return sound.sampleRate; }

    int getCurrentBitDepth() override { return 32; }

    juce::BigInteger getActiveOutputChannels() const override { return {}; }

    juce::BigInteger getActiveInputChannels() const override { return {}; }

    int getOutputLatencyInSamples() override { return 0; }

    int getInputLatencyInSamples() override { return 0; }

private:
    FakeSound& sound;
    bool opened = false;
};

class FakeDeviceType final : public juce::AudioIODeviceType
{
public:
    explicit FakeDeviceType(FakeSound& itsSound) : AudioIODeviceType(itsSound.typeName), sound(itsSound) {}

    void scanForDevices() override { isFound = sound.isPresent; }

    juce::StringArray getDeviceNames(bool wantInputs) const override
    {
        juce::StringArray names;
        if (isFound && !wantInputs) {
            for (const auto& name : sound.namesBefore)
                names.add(name);
            names.add(sound.deviceName);
        }
        return names;
    }

    int getDefaultDeviceIndex(bool) const override { return static_cast<int>(sound.namesBefore.size()); }

    int getIndexOfDevice(juce::AudioIODevice*, bool) const override { return 0; }

    bool hasSeparateInputsAndOutputs() const override { return true; }

    juce::AudioIODevice* createDevice(const juce::String& output, const juce::String&) override
    {
        return sound.isPresent ? new FakeDevice(sound, output) : nullptr;
    }

private:
    FakeSound& sound;
    bool isFound = false;
};

} // namespace

std::vector<std::vector<float>> FakeSound::request(int frames) const
{
    constexpr float untouched = 7.0f;
    std::vector<std::vector<float>> channels(static_cast<std::size_t>(channelCount),
                                             std::vector<float>(static_cast<std::size_t>(frames), untouched));
    std::vector<float*> pointers;
    pointers.reserve(channels.size());
    for (auto& channel : channels)
        pointers.push_back(channel.data());
    callback->audioDeviceIOCallbackWithContext(nullptr, 0, pointers.data(), channelCount, frames, {});
    return channels;
}

DeviceTypeFactory fakeDeviceTypes(std::vector<FakeSound*> sounds)
{
    return [sounds = std::move(sounds)] {
        DeviceTypes types;
        for (auto* const sound : sounds)
            types.push_back(std::make_unique<FakeDeviceType>(*sound));
        return types;
    };
}

} // namespace velotrine
