#pragma once

#include "audiounit/NoteOutput.h"
#include "tests/plugin/Lv2Host.h"

#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace velotrine {

/// A host's memory for a port of MIDI events.
class Lv2Notes
{
public:
    static constexpr std::size_t mostMessages = 4096;

    explicit Lv2Notes(Lv2Host& host)
        : sequence(host.idOf(LV2_ATOM__Sequence)), midiEvent(host.idOf(LV2_MIDI__MidiEvent)),
          memory((sizeof(LV2_Atom_Sequence) + mostMessages * bytesEach) / sizeof(std::uint64_t))
    {}

    /// As a host hands it over before each run.
    LV2_Atom_Sequence* emptied(std::size_t messages) noexcept
    {
        port().atom = {.size =
                           static_cast<std::uint32_t>(sizeof(LV2_Atom_Sequence_Body) + messages * bytesEach),
                       .type = 0};
        return &port();
    }

    /// What the plug-in has written. Allocates where there is no room for it.
    void readInto(std::vector<NoteMessage>& messages)
    {
        if (port().atom.type != sequence || port().body.unit != 0)
            throw std::runtime_error("the plug-in has written no sequence in frames");
        messages.clear();
        LV2_ATOM_SEQUENCE_FOREACH(&port(), event)
        {
            const auto* const bytes = reinterpret_cast<const std::uint8_t*>(event + 1);
            if (event->body.type != midiEvent || event->body.size != 3)
                throw std::runtime_error("the plug-in has written something else than notes");
            messages.push_back({.frame = static_cast<int>(event->time.frames),
                                .isOn = (bytes[0] & 0xF0) == 0x90,
                                .channel = static_cast<std::uint8_t>(bytes[0] & 0x0F),
                                .key = bytes[1],
                                .velocity = bytes[2]});
        }
    }

private:
    static constexpr std::size_t bytesEach = sizeof(LV2_Atom_Event) + 8; ///< three, padded

    LV2_Atom_Sequence& port() noexcept { return *reinterpret_cast<LV2_Atom_Sequence*>(memory.data()); }

    LV2_URID sequence, midiEvent;
    std::vector<std::uint64_t> memory;
};

} // namespace velotrine
