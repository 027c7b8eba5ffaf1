#include "plugin/vst3/VelotrineProcessor.h"

#include "audiounit/Presets.h"
#include "plugin/HostCall.h"
#include "plugin/vst3/HostChecks.h"
#include "plugin/vst3/VelotrineEditor.h"
#if JUCE_LINUX
#include "plugin/X11Connection.h"
#endif

#include <optional>
#include <string>

namespace velotrine {

namespace {

#if JUCE_LINUX
// As the library is loaded: the wrapper connects to the X server before it makes the processor.
[[maybe_unused]] const bool x11ServerIsReady = prepareX11Server();
#endif

/// None where the host reports nothing: JUCE then answers with zeros.
std::optional<HostTransport> transportOf(const juce::AudioPlayHead* head)
{
    const auto position = head != nullptr ? head->getPosition() : juce::nullopt;
    if (!position)
        return std::nullopt;
    HostTransport transport;
    transport.tempo = position->getBpm().orFallback(0.0);
    if (const auto metre = position->getTimeSignature()) {
        transport.beatsPerBar = metre->numerator;
        transport.beatUnit = metre->denominator;
    }
    transport.isPlaying = position->getIsPlaying();
    if (transport.tempo == 0.0 && !transport.isPlaying)
        return std::nullopt;
    return transport;
}

} // namespace

VelotrineProcessor::VelotrineProcessor()
    : AudioProcessor(BusesProperties().withOutput("Output", juce::AudioChannelSet::stereo(), true))
{
    for (const auto& info : parameterTable()) {
        parameters[info.address] = new VelotrineParameter(info, instrument);
        addParameter(parameters[info.address]);
    }
}

bool VelotrineProcessor::isBusesLayoutSupported(const BusesLayout& layout) const
{
    return layout.inputBuses.isEmpty() && layout.getMainOutputChannelSet() == juce::AudioChannelSet::stereo();
}

void VelotrineProcessor::prepareToPlay(double sampleRate, int)
{
    // A rate that no device has leaves the instrument silent.
    std::ignore = instrument.prepare(sampleRate);
}

void VelotrineProcessor::releaseResources()
{
    instrument.release();
}

void VelotrineProcessor::reset()
{
    instrument.reset();
}

void VelotrineProcessor::processBlock(juce::AudioBuffer<float>& buffer,
                                      juce::MidiBuffer&) noexcept VELOTRINE_NONBLOCKING
{
    // JUCE's wrapper, which has the host's words by then.
    VELOTRINE_UNFOLLOWED(const auto transport = transportOf(getPlayHead());)
    instrument.setTransport(transport);
    const auto channel = [&buffer](int index) {
        return index < buffer.getNumChannels() ? buffer.getWritePointer(index) : nullptr;
    };
    instrument.render({channel(0), channel(1)}, buffer.getNumSamples(), {&notes});
}

int VelotrineProcessor::getNumPrograms()
{
    return presetCount;
}

int VelotrineProcessor::getCurrentProgram()
{
    return static_cast<int>(instrument.presetNumber());
}

void VelotrineProcessor::setCurrentProgram(int index)
{
    if (index >= 0)
        instrument.chooseProgram(static_cast<std::size_t>(index));
}

const juce::String VelotrineProcessor::getProgramName(int index)
{
    if (index < 0 || index >= getNumPrograms())
        return {};
    const auto name = presetTable()[static_cast<std::size_t>(index)].name;
    return juce::String(name.data(), name.size());
}

void VelotrineProcessor::getStateInformation(juce::MemoryBlock& state)
{
    const auto text = instrument.saveState();
    state.replaceAll(text.data(), text.size());
}

void VelotrineProcessor::setStateInformation(const void* state, int size)
{
    const auto bytes = state != nullptr && size > 0 ? static_cast<std::size_t>(size) : 0;
    // The formats have no log to say it in.
    if (instrument.restoreState({static_cast<const char*>(state), bytes}))
        return;
    // The state is taken, whether or not there is memory to say so.
    answerOrNothing([this] { updateHostDisplay(ChangeDetails{}.withProgramChanged(true)); });
}

juce::AudioProcessorEditor* VelotrineProcessor::createEditor()
{
    return new VelotrineEditor(*this, instrument);
}

void VelotrineProcessor::beginGesture(ParameterAddress address)
{
    parameters[address]->beginChangeGesture();
}

void VelotrineProcessor::valueChanged(ParameterAddress address, float value)
{
    // The value is set already; setting it once more from 0..1 could change its last digit.
    parameters[address]->sendValueChangedMessageToListeners(parameters[address]->normalised(value));
}

void VelotrineProcessor::endGesture(ParameterAddress address)
{
    parameters[address]->endChangeGesture();
}

void VelotrineProcessor::stateChanged()
{
    updateHostDisplay(ChangeDetails{}.withNonParameterStateChanged(true));
}

void giveNotesTo(juce::AudioProcessor& plugin,
                 Steinberg::Vst::IEventList* list) noexcept VELOTRINE_NONBLOCKING
{
    static_cast<VelotrineProcessor&>(plugin).giveNotesTo(list); // there is no other
}

} // namespace velotrine

/// What JUCE's wrappers ask for a plug-in.
juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    return new velotrine::VelotrineProcessor();
}
