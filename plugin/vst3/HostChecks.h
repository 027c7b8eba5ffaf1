#pragma once

#include "plugin/HostCall.h"
#include "plugin/HostedInstrument.h"

#include <juce_audio_processors/juce_audio_processors.h>
#include <pluginterfaces/vst/ivstaudioprocessor.h>
#include <pluginterfaces/vst/ivstevents.h>

#include <type_traits>

namespace velotrine {

// What JUCE's VST3 wrapper calls where cmake/JuceCorrections.cmake has corrected it.

/// Whether a block can be processed, in the format's words. If not, its output is cleared, as far as there is
/// one. Render thread.
/// @param isActive  whether the host has said that it will process
[[nodiscard]] Steinberg::tresult checkBlock(const Steinberg::Vst::ProcessData& block, bool isActive) noexcept;

/// The host's own two channels, for any number of frames; no channel if either is missing or the host has
/// switched the bus off. All other channels are cleared. Only for a block that checkBlock() has passed.
/// Render thread.
template <typename Sample>
[[nodiscard]] juce::AudioBuffer<Sample> outputOf(const Steinberg::Vst::ProcessData& block,
                                                 bool isSwitchedOn) noexcept;

/// Where the plug-in's notes go in the block that comes next; null for nowhere. The wrapper's own way takes
/// memory for them, and does not hear that a host's list is full. Render thread.
void giveNotesTo(juce::AudioProcessor& plugin,
                 Steinberg::Vst::IEventList* list) noexcept VELOTRINE_NONBLOCKING;

/// Throws unless the bytes are a whole state: the instrument's part, and what the wrapper adds to it.
void checkState(const void* bytes, int size);

/// What a function answers; if it throws, kResultFalse or null.
template <typename Function>
auto answerOrFailure(Function&& function)
{
    using Answer = std::invoke_result_t<Function>;
    if constexpr (std::is_pointer_v<Answer>)
        return answerOrNothing(function);
    else
        return answerOr(static_cast<Answer>(Steinberg::kResultFalse), function);
}

} // namespace velotrine
