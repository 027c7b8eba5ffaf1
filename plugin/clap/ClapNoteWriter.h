#pragma once

#include "audiounit/NoteOutput.h"
#include "engine/Nonblocking.h"

#include <clap/events.h>
#include <clap/ext/note-ports.h>

#include <cstddef>
#include <cstdint>

namespace velotrine {

/// Puts notes into a host's list of events, in one of the dialects that the port offers.
class ClapNoteWriter final : public NoteReceiver
{
public:
    static constexpr std::uint32_t dialects = CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI;

    /// The format's own where the host knows it, or does not say what it knows.
    [[nodiscard]] static constexpr clap_note_dialect dialectFor(std::uint32_t hostsDialects) noexcept
    {
        const bool isMidi = (hostsDialects & dialects) == CLAP_NOTE_DIALECT_MIDI;
        return isMidi ? CLAP_NOTE_DIALECT_MIDI : CLAP_NOTE_DIALECT_CLAP;
    }

    /// @param list  null takes nothing
    ClapNoteWriter(const clap_output_events_t* list, clap_note_dialect dialectToWrite) noexcept
        : out(list), dialect(dialectToWrite)
    {}

    [[nodiscard]] bool take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING override
    {
        return dialect == CLAP_NOTE_DIALECT_MIDI ? takeAsMidi(message) : takeAsNote(message);
    }

private:
    bool takeAsNote(const NoteMessage& message) const noexcept VELOTRINE_NONBLOCKING
    {
        constexpr double highestVelocity = 127.0;
        clap_event_note_t event{};
        event.header =
            headerOf(sizeof event, message.frame, message.isOn ? CLAP_EVENT_NOTE_ON : CLAP_EVENT_NOTE_OFF);
        event.note_id = -1; // a channel's key is enough to know it by
        event.port_index = 0;
        event.channel = message.channel;
        event.key = message.key;
        event.velocity = message.velocity / highestVelocity;
        return push(event.header);
    }

    bool takeAsMidi(const NoteMessage& message) const noexcept VELOTRINE_NONBLOCKING
    {
        clap_event_midi_t event{};
        event.header = headerOf(sizeof event, message.frame, CLAP_EVENT_MIDI);
        event.port_index = 0;
        const auto bytes = message.bytes();
        for (std::size_t i = 0; i < bytes.size(); ++i)
            event.data[i] = bytes[i];
        return push(event.header);
    }

    bool push(const clap_event_header_t& event) const noexcept VELOTRINE_NONBLOCKING
    {
        if (out == nullptr)
            return false;
        VELOTRINE_UNFOLLOWED(return out->try_push(out, &event);) // the host's own code
    }

    static clap_event_header_t headerOf(std::uint32_t size, int frame, std::uint16_t type) noexcept
    {
        return {.size = size,
                .time = static_cast<std::uint32_t>(frame),
                .space_id = CLAP_CORE_EVENT_SPACE_ID,
                .type = type,
                .flags = 0};
    }

    const clap_output_events_t* out;
    clap_note_dialect dialect;
};

} // namespace velotrine
