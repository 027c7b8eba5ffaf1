#pragma once

#include "audiounit/MidiNote.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace velotrine {

/// A standard MIDI file of format 1 in the making: tempo and 4/4 metre in the first track, then one track for
/// each ring, on a channel of its own.
class MidiFile
{
public:
    static constexpr int ringTracks = 5;
    static constexpr int ticksPerQuarter = 960;

    /// @param bpm  quarter notes a minute, within the bounds of the internal tempo
    explicit MidiFile(double bpm) : quartersPerMinute(bpm) {}

    /// A note that the same ring starts again while it sounds ends there.
    /// @param start  seconds, 0 or more; notes of one ring come in the order of their start
    void addNote(double start, const MidiNote& note);

    /// The file, complete.
    [[nodiscard]] std::vector<std::uint8_t> bytes() const;

private:
    struct Note
    {
        std::int64_t start; ///< ticks
        std::int64_t end;   ///< ticks, after start
        std::uint8_t key;
        std::uint8_t velocity;
    };

    struct Track
    {
        std::vector<Note> notes;
        /// 1 + index in `notes` of this key's latest note; 0 until it is played.
        std::array<std::size_t, MidiNote::highestKey + 1> latestAtKey{};
    };

    [[nodiscard]] std::int64_t ticksAt(double seconds) const;

    double quartersPerMinute;
    std::array<Track, ringTracks> tracks;
};

} // namespace velotrine
