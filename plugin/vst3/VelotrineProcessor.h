#pragma once

#include "audiounit/Identity.h"
#include "engine/Nonblocking.h"
#include "plugin/HostedInstrument.h"
#include "plugin/InstrumentHost.h"
#include "plugin/vst3/VelotrineParameter.h"
#include "plugin/vst3/Vst3NoteWriter.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>

namespace velotrine {

/// The instrument as JUCE's plug-in wrappers want it: VST3, and on macOS AU and AUv3. Threads: as
/// juce::AudioProcessor says.
class VelotrineProcessor final : public juce::AudioProcessor, private InstrumentHost
{
public:
    VelotrineProcessor();

    const juce::String getName() const override { return identity::name; }

    bool acceptsMidi() const override { return false; }

    bool producesMidi() const override { return true; }

    double getTailLengthSeconds() const override { return 0.0; }

    bool isBusesLayoutSupported(const BusesLayout& layout) const override;
    void prepareToPlay(double sampleRate, int maxFrames) override;
    void releaseResources() override;
    void reset() override;
    using AudioProcessor::processBlock;
    void processBlock(juce::AudioBuffer<float>& buffer,
                      juce::MidiBuffer& midi) noexcept VELOTRINE_NONBLOCKING override;

    using AudioProcessor::processBlockBypassed;

    /// JUCE's own expects two channels, which a host may not have.
    void processBlockBypassed(juce::AudioBuffer<float>& buffer, juce::MidiBuffer&) override
    {
        buffer.clear();
        instrument.pause({&notes});
    }

    /// Where notes go in the blocks to come; null for nowhere. Render thread.
    void giveNotesTo(Steinberg::Vst::IEventList* list) noexcept { notes.list = list; }

    int getNumPrograms() override;
    int getCurrentProgram() override;
    void setCurrentProgram(int index) override;
    const juce::String getProgramName(int index) override;

    /// The presets' names are fixed.
    void changeProgramName(int, const juce::String&) override {}

    void getStateInformation(juce::MemoryBlock& state) override;
    void setStateInformation(const void* state, int size) override;

    bool hasEditor() const override { return true; }

    juce::AudioProcessorEditor* createEditor() override;

private:
    void beginGesture(ParameterAddress address) override;
    void valueChanged(ParameterAddress address, float value) override;
    void endGesture(ParameterAddress address) override;
    void stateChanged() override;

    Vst3NoteWriter notes;
    HostedInstrument instrument{*this};
    std::array<VelotrineParameter*, parameterCount> parameters{}; ///< JUCE owns them
};

} // namespace velotrine
