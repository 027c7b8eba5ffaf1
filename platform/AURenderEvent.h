#pragma once

#include "platform/AudioTypes.h"

#include <array>
#include <cstdint>

namespace velotrine {

enum class AURenderEventType : std::uint8_t
{
    parameter = 1,
    parameterRamp = 2,
    midi = 8,
    midiSysEx = 9,
    midiEventList = 10,
};

/// One event of a render cycle, linked to the next. Only the fields of its type mean anything. The list
/// belongs to the caller and stays as it is during the render call.
struct AURenderEvent
{
    const AURenderEvent* next = nullptr;
    AUEventSampleTime eventSampleTime = 0;
    AURenderEventType eventType = AURenderEventType::parameter;

    // parameter, parameterRamp
    AUParameterAddress parameterAddress = 0;
    AUValue value = 0.0f; ///< of a ramp, the value at its end
    AUAudioFrameCount rampDurationSampleFrames = 0;

    // midi
    std::array<std::uint8_t, 3> midiData{};
};

} // namespace velotrine
