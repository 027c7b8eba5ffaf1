#include "plugin/vst3/VelotrineParameter.h"

#include "audiounit/ParameterText.h"
#include "plugin/HostValue.h"

namespace velotrine {

float VelotrineParameter::normalised(float plain) const noexcept
{
    return juce::jlimit(0.0f, 1.0f, (plain - info.minValue) / (info.maxValue - info.minValue));
}

double VelotrineParameter::plain(double normalisedValue) const noexcept
{
    const auto min = static_cast<double>(info.minValue);
    return min + normalisedValue * (static_cast<double>(info.maxValue) - min);
}

void VelotrineParameter::setValue(float newValue)
{
    instrument.setValue(info.address, plain(static_cast<double>(newValue)));
}

int VelotrineParameter::getNumSteps() const
{
    return info.isDiscrete() ? static_cast<int>(info.maxValue - info.minValue) + 1
                             : juce::AudioProcessor::getDefaultNumParameterSteps();
}

juce::String VelotrineParameter::getText(float value, int longest) const
{
    const auto bounded = valueFromHost(info.address, plain(static_cast<double>(value)));
    const auto text = bounded ? parameterText(info, *bounded) : std::string();
    return longest > 0 ? juce::String(text).substring(0, longest) : juce::String(text);
}

/// A text that means nothing leaves the value as it is: JUCE has no word for an error here.
float VelotrineParameter::getValueForText(const juce::String& text) const
{
    const auto read = parameterFromText(info, text.toStdString());
    const auto bounded = read ? valueFromHost(info.address, static_cast<double>(*read)) : std::nullopt;
    return bounded ? normalised(*bounded) : getValue();
}

} // namespace velotrine
