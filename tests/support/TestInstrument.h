#pragma once

#include "audiounit/Parameters.h"
#include "audiounit/VelotrineAudioUnit.h"
#include "audiounit/VelotrineComponent.h"
#include "tests/support/OutputBuffers.h"

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velotrine {

inline std::shared_ptr<VelotrineAudioUnit> makeInstrument()
{
    return std::make_shared<VelotrineAudioUnit>(velotrineComponentDescription(),
                                                AudioComponentInstantiationOptions::none);
}

inline std::shared_ptr<AUParameter> parameterNamed(AUAudioUnit& unit, std::string_view identifier)
{
    for (const auto& parameter : unit.parameterTree()->allParameters())
        if (parameter->identifier() == identifier)
            return parameter;
    throw std::invalid_argument("no parameter " + std::string(identifier));
}

inline void setValue(AUAudioUnit& unit, std::string_view identifier, float value)
{
    parameterNamed(unit, identifier)->setValue(value);
}

inline float valueOf(AUAudioUnit& unit, std::string_view identifier)
{
    return parameterNamed(unit, identifier)->value();
}

inline std::array<float, parameterCount> valuesOf(const VelotrineDSPKernel& kernel)
{
    std::array<float, parameterCount> values{};
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        values[address] = kernel.parameter(address);
    return values;
}

inline void selectPreset(VelotrineAudioUnit& unit, std::size_t number)
{
    unit.setCurrentPreset(unit.factoryPresets().at(number));
}

/// Allocated, its own clock running at 300 BPM, every spot firing: notes come within the first few thousand
/// frames.
inline std::shared_ptr<VelotrineAudioUnit> makePlayingInstrument(AUAudioFrameCount maximumFrames = 512)
{
    auto unit = makeInstrument();
    setValue(*unit, "sync", 0.0f);
    setValue(*unit, "bpm", 300.0f);
    for (const auto* const ring : {"R1", "R2", "R3", "R4", "R5"}) {
        setValue(*unit, std::string("prob") + ring, 1.0f);
        setValue(*unit, std::string("spots") + ring, 16.0f);
    }
    unit->setMaximumFramesToRender(maximumFrames);
    unit->allocateRenderResources();
    unit->dspKernel->internalPlaying = true;
    return unit;
}

} // namespace velotrine
