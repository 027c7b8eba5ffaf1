#pragma once

#include "audiounit/Parameters.h"
#include "plugin/HostedInstrument.h"

#include <juce_audio_processors/juce_audio_processors.h>

namespace velotrine {

/// One of the instrument's parameters as JUCE shows it to a host: values from 0 to 1, names, texts. It keeps
/// no value of its own. Any thread.
class VelotrineParameter final : public juce::HostedAudioProcessorParameter
{
public:
    /// @param parameterInfo  a row of the list of parameters
    /// @param owner          outlives the parameter
    VelotrineParameter(const ParameterInfo& parameterInfo, HostedInstrument& owner)
        : info(parameterInfo), instrument(owner)
    {}

    /// A plain value as a host has it, 0 to 1.
    [[nodiscard]] float normalised(float plain) const noexcept;

    float getValue() const override { return normalised(instrument.value(info.address)); }

    void setValue(float newValue) override;

    float getDefaultValue() const override { return normalised(info.initialValue); }

    juce::String getParameterID() const override { return info.identifier; }

    juce::String getName(int longest) const override { return juce::String(info.name).substring(0, longest); }

    juce::String getLabel() const override { return {}; }

    int getNumSteps() const override;

    bool isDiscrete() const override { return info.isDiscrete(); }

    bool isBoolean() const override { return info.unit == AudioUnitParameterUnit::boolean; }

    juce::String getText(float value, int longest) const override;
    float getValueForText(const juce::String& text) const override;

private:
    [[nodiscard]] double plain(double normalisedValue) const noexcept;

    const ParameterInfo& info;
    HostedInstrument& instrument;
};

} // namespace velotrine
