#pragma once

#include "engine/ParameterAddress.h"

#include <clap/events.h>

#include <cstdint>

namespace velotrine {

/// Puts the editor's edits into a host's list of events, all at one frame. Each returns whether the host took
/// it. Render thread.
struct ClapEventWriter
{
    bool begin(ParameterAddress address) const noexcept
    {
        return gesture(address, CLAP_EVENT_PARAM_GESTURE_BEGIN);
    }

    bool value(ParameterAddress address, float newValue) const noexcept
    {
        clap_event_param_value_t event{};
        event.header = headerOf(sizeof event, frame, CLAP_EVENT_PARAM_VALUE);
        event.param_id = static_cast<clap_id>(address);
        event.note_id = event.port_index = event.channel = event.key = -1; // not of one note
        event.value = static_cast<double>(newValue);
        return out.try_push(&out, &event.header);
    }

    bool end(ParameterAddress address) const noexcept
    {
        return gesture(address, CLAP_EVENT_PARAM_GESTURE_END);
    }

    const clap_output_events_t& out;
    std::uint32_t frame;

private:
    bool gesture(ParameterAddress address, std::uint16_t type) const noexcept
    {
        clap_event_param_gesture_t event{};
        event.header = headerOf(sizeof event, frame, type);
        event.param_id = static_cast<clap_id>(address);
        return out.try_push(&out, &event.header);
    }

    static clap_event_header_t headerOf(std::uint32_t size, std::uint32_t frame, std::uint16_t type) noexcept
    {
        return {.size = size, .time = frame, .space_id = CLAP_CORE_EVENT_SPACE_ID, .type = type, .flags = 0};
    }
};

} // namespace velotrine
