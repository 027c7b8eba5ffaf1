#pragma once

#include "audiounit/NoteOutput.h"
#include "engine/Nonblocking.h"

#include <pluginterfaces/vst/ivstevents.h>

namespace velotrine {

/// Puts notes into a host's list of events.
struct Vst3NoteWriter final : NoteReceiver
{
    [[nodiscard]] bool take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING override
    {
        using Event = Steinberg::Vst::Event;
        constexpr float highestVelocity = 127.0f;
        constexpr int notNamed = -1; // a channel's key is enough to know a note by
        if (list == nullptr)
            return false;
        Event event{};
        event.sampleOffset = message.frame;
        const float velocity = static_cast<float>(message.velocity) / highestVelocity;
        if (message.isOn) {
            event.type = Event::kNoteOnEvent;
            event.noteOn = {.channel = message.channel,
                            .pitch = message.key,
                            .tuning = 0.0f,
                            .velocity = velocity,
                            .length = 0, // as long as its end has not come
                            .noteId = notNamed};
        } else {
            event.type = Event::kNoteOffEvent;
            event.noteOff = {.channel = message.channel,
                             .pitch = message.key,
                             .velocity = velocity,
                             .noteId = notNamed,
                             .tuning = 0.0f};
        }
        VELOTRINE_UNFOLLOWED(return list->addEvent(event) == Steinberg::kResultOk;) // the host's own code
    }

    Steinberg::Vst::IEventList* list = nullptr;
};

} // namespace velotrine
