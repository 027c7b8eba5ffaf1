#pragma once

#include "engine/Nonblocking.h"
#include "engine/NoteEvent.h"

#include <cstdint>
#include <optional>

namespace velotrine {

/// A fired note as other instruments understand it, in a file or on a wire.
struct MidiNote
{
    static constexpr int highestKey = 127;

    std::uint8_t channel;  ///< 0 to 4: the ring, innermost first
    std::uint8_t key;      ///< 0 to 127
    std::uint8_t velocity; ///< 1 to 127
    double seconds;        ///< how long the key is held: the time in which the note falls by 60 dB
};

/// None for a silent note (gain 0), and for one outside MIDI's keys. Any thread; never waits.
[[nodiscard]] std::optional<MidiNote> midiNote(const NoteEvent& event) noexcept VELOTRINE_NONBLOCKING;

} // namespace velotrine
