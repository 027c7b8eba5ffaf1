#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace velotrine {

/// A MIDI file taken apart, byte by byte, by the rules of the format.
struct MidiContent
{
    struct Event
    {
        std::int64_t tick; ///< from the start
        int status;        ///< 0x80 to 0xEF, or 0xFF for a meta event
        int type;          ///< of a meta event
        std::vector<std::uint8_t> data;
    };

    struct Note
    {
        std::int64_t start; ///< ticks
        std::int64_t end;   ///< ticks
        int channel;
        int key;
        int velocity;

        bool operator==(const Note&) const = default;
    };

    using Track = std::vector<Event>;

    int format = 0;
    int ticksPerQuarter = 0;
    std::vector<Track> tracks;

    /// The notes of a track in the order of their starts. Throws when a note is started twice, never ended,
    /// or ended without a start.
    [[nodiscard]] std::vector<Note> notes(std::size_t track) const;

    /// The events of a track that are meta events of a type.
    [[nodiscard]] std::vector<Event> meta(std::size_t track, int type) const;
};

/// Throws std::runtime_error for anything that is not exactly a MIDI file.
[[nodiscard]] MidiContent readMidi(std::span<const std::uint8_t> bytes);
[[nodiscard]] MidiContent readMidi(const std::string& bytes);

} // namespace velotrine
