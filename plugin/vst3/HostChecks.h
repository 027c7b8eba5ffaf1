#pragma once

#include "plugin/HostedInstrument.h"

#include <juce_audio_basics/juce_audio_basics.h>
#include <pluginterfaces/vst/ivstaudioprocessor.h>

#include <array>
#include <exception>

namespace velotrine {

// What JUCE's VST3 wrapper calls where cmake/JuceCorrections.cmake has corrected it.

/// Whether a block can be processed, as the format says it. The output is cleared in any case, as far as
/// there is one. Render thread.
/// @param isActive  whether the host has said that it will process
[[nodiscard]] Steinberg::tresult checkBlock(const Steinberg::Vst::ProcessData& block, bool isActive) noexcept;

/// The host's own two channels, for any number of frames; no channel if either is missing or the host has
/// switched the bus off. Only for a block that is checked. Render thread.
template <typename Sample>
[[nodiscard]] juce::AudioBuffer<Sample> outputOf(const Steinberg::Vst::ProcessData& block,
                                                 bool isSwitchedOn) noexcept;

/// Throws unless the bytes are all of a state: the instrument's, and what the wrapper adds of its own.
void checkState(const void* bytes, int size);

/// What a function answers, or how the format says that it has thrown: a host may be written in anything.
template <typename Function>
Steinberg::tresult answerOf(Function&& function)
{
    try {
        return function();
    } catch (const std::bad_alloc&) {
        return Steinberg::kOutOfMemory;
    } catch (const std::exception&) {
        return Steinberg::kResultFalse;
    }
}

} // namespace velotrine
