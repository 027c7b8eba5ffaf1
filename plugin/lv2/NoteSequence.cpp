#include "plugin/lv2/NoteSequence.h"

#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>

#include <cstddef>
#include <cstring>

namespace velotrine {

NoteSequence::NoteSequence(const LV2_URID_Map& map)
    : sequence(map.map(map.handle, LV2_ATOM__Sequence)), midiEvent(map.map(map.handle, LV2_MIDI__MidiEvent))
{}

void NoteSequence::begin() noexcept VELOTRINE_NONBLOCKING
{
    room = 0;
    if (port == nullptr || port->atom.size < sizeof port->body)
        return;
    room = port->atom.size;
    port->atom = {.size = sizeof port->body, .type = sequence};
    port->body = {.unit = 0, .pad = 0}; // frames
}

bool NoteSequence::take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING
{
    const auto bytes = message.bytes();
    constexpr auto size = static_cast<std::uint32_t>(bytes.size());
    const auto padded = static_cast<std::uint32_t>(sizeof(LV2_Atom_Event)) + lv2_atom_pad_size(size);
    if (room == 0 || room - port->atom.size < padded)
        return false;
    // A sequence's events are padded, so the next begins where the last ends.
    auto* const place = reinterpret_cast<std::byte*>(port) + sizeof port->atom + port->atom.size;
    LV2_Atom_Event event{};
    event.time.frames = message.frame;
    event.body = {.size = size, .type = midiEvent};
    std::memcpy(place, &event, sizeof event);
    std::memcpy(place + sizeof event, bytes.data(), size);
    port->atom.size += padded;
    return true;
}

} // namespace velotrine
