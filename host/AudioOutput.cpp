#include "host/AudioOutput.h"

#include "audiounit/ParameterText.h"
#include "audiounit/SampleRateRange.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velotrine {

namespace {

constexpr double usualSampleRate = 48000.0; ///< Hz; what most hardware runs at by itself
constexpr int channelsWanted = 2;

/// The available value nearest to the wanted one; the wanted one where the device names none.
template <typename Value>
Value nearest(const juce::Array<Value>& values, Value wanted)
{
    const auto* const best = std::min_element(values.begin(), values.end(), [wanted](Value a, Value b) {
        return std::abs(a - wanted) < std::abs(b - wanted);
    });
    return best == values.end() ? wanted : *best;
}

int checksWithin(double seconds)
{
    return static_cast<int>(std::ceil(seconds * 1000.0 / AudioOutput::checkIntervalMilliseconds));
}

/// A device that has been silent for four buffers' time, and never less than for 0.3 s, is no longer there.
int patienceWith(juce::AudioIODevice& device)
{
    constexpr double shortest = 0.3;
    constexpr double buffers = 4.0;
    return checksWithin(
        std::max(shortest, buffers * device.getCurrentBufferSizeSamples() / device.getCurrentSampleRate()));
}

/// What went wrong with each type of device, for one error.
std::string complaint(const AudioDeviceOptions& options, const juce::StringArray& problems)
{
    const auto which = options.deviceName ? " called \"" + *options.deviceName + "\"" : std::string();
    return "There is no audio device" + which + " (" + problems.joinIntoString("; ").toStdString() + ").";
}

} // namespace

AudioOutput::AudioOutput(AVAudioMixerNode& source, DeviceTypeFactory deviceTypes)
    : mixer(source), makeTypes(std::move(deviceTypes))
{}

AudioOutput::~AudioOutput()
{
    close();
}

std::optional<AUError> AudioOutput::open(const AudioDeviceOptions& options, const Prepare& prepare)
{
    close();
    types.clear();
    types = makeTypes();

    juce::StringArray problems;
    for (const auto& type : types) {
        type->scanForDevices();
        const auto names = type->getDeviceNames(false);
        const auto name = options.deviceName ? juce::String::fromUTF8(options.deviceName->c_str())
                                             : names[type->getDefaultDeviceIndex(false)];
        juce::String problem = "none found";
        if (name.isNotEmpty() && names.contains(name))
            problem = openDevice(*type, name, options);
        if (device) {
            try {
                play(prepare);
                return std::nullopt;
            } catch (const AUError& error) {
                close();
                problem = juce::String::fromUTF8(error.what());
            }
        }
        problems.add(type->getTypeName() + ": " + problem);
    }
    return AUError(kAudioUnitErr_FailedInitialization, complaint(options, problems));
}

juce::String AudioOutput::openDevice(juce::AudioIODeviceType& type, const juce::String& name,
                                     const AudioDeviceOptions& options)
{
    std::unique_ptr<juce::AudioIODevice> opened(type.createDevice(name, {}));
    if (!opened)
        return "gone again";

    juce::BigInteger outputs;
    outputs.setRange(0, channelsWanted, true);
    const auto rate =
        nearest(opened->getAvailableSampleRates(), options.sampleRate.value_or(usualSampleRate));
    const auto frames = options.bufferFrames
                            ? nearest(opened->getAvailableBufferSizes(), *options.bufferFrames)
                            : opened->getDefaultBufferSize();
    auto problem = opened->open({}, outputs, rate, frames);
    if (problem.isNotEmpty())
        return problem;
    if (const auto given = opened->getCurrentSampleRate(); !isPlayable(given))
        return "it runs at " + juce::String(shortestText(static_cast<float>(given))) +
               " Hz; 8000 to 768000 Hz will do";
    if (opened->getCurrentBufferSizeSamples() <= 0)
        return "it has no buffer";
    device = std::move(opened);
    return {};
}

void AudioOutput::play(const Prepare& prepare)
{
    prepare(device->getCurrentSampleRate());
    patience = patienceWith(*device);
    checksWithoutRequest = 0;
    requestsAtLastCheck = requests();
    noteReceiver = dynamic_cast<NoteReceiver*>(device.get());
    mixer.setSendsNotes(true);
    device->start(this);
}

void AudioOutput::close()
{
    if (!device)
        return;
    endNotes();
    device->close();
    noteReceiver = nullptr;
    device.reset();
}

/// Other programs hold the keys that are down when a client leaves JACK.
void AudioOutput::endNotes()
{
    if (noteReceiver == nullptr || !device->isPlaying())
        return;
    mixer.setSendsNotes(false);
    // The first request may have begun before; with the third, the second has been heard.
    constexpr std::uint32_t enough = 3;
    constexpr std::uint32_t longestMilliseconds = 300;
    const auto before = requests();
    const auto start = juce::Time::getMillisecondCounter();
    while (requests() - before < enough && juce::Time::getMillisecondCounter() - start < longestMilliseconds)
        juce::Thread::sleep(1);
}

AudioOutput::State AudioOutput::check()
{
    if (!device)
        return State::closed;
    const auto now = requests();
    checksWithoutRequest = now == requestsAtLastCheck ? checksWithoutRequest + 1 : 0;
    requestsAtLastCheck = now;
    if (checksWithoutRequest < patience)
        return State::playing;
    // JACK closes the device when its server ends. The others just stop asking.
    return device->getTypeName() == "JACK" && device->isOpen() ? State::idle : State::lost;
}

void AudioOutput::audioDeviceIOCallbackWithContext(const float* const*, int, float* const* outputs,
                                                   int outputCount, int frames,
                                                   const juce::AudioIODeviceCallbackContext&)
{
    mixer.render(outputs, outputCount, frames, {noteReceiver});
    // Whoever reads this knows the request to be over: a device whose server has died ends without a word.
    requestCount.fetch_add(1, std::memory_order_release);
}

} // namespace velotrine
