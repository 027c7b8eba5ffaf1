#include "audiounit/MidiNote.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

std::optional<MidiNote> midiNote(const NoteEvent& event) noexcept VELOTRINE_NONBLOCKING
{
    constexpr long loudest = 127;
    if (event.note < 0 || event.note > MidiNote::highestKey || !(event.gain > 0.0f))
        return std::nullopt;
    // Synthesizers take the square of the velocity for the gain.
    const auto velocity =
        std::clamp(std::lround(std::sqrt(event.gain) * static_cast<float>(loudest)), 1L, loudest);
    return MidiNote{.channel = static_cast<std::uint8_t>(event.ring),
                    .key = static_cast<std::uint8_t>(event.note),
                    .velocity = static_cast<std::uint8_t>(velocity),
                    .seconds = static_cast<double>(event.decaySeconds)};
}

} // namespace velotrine
