#pragma once

#include "audiounit/MidiNote.h"
#include "render/TempoMap.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

/// A standard MIDI file of format 1 in the making: tempo and 4/4 metre in the first track, then one track for
/// each ring, on a channel of its own.
class MidiFile
{
public:
    static constexpr int ringTracks = 5;
    static constexpr int ticksPerQuarter = 960;

    /// @param bpm         quarter notes a minute, above 0, from the beginning on
    /// @param newComment  a text for the first track; empty for none
    explicit MidiFile(double bpm, std::string newComment = {}) : tempoMap(bpm), comment(std::move(newComment))
    {}

    /// Another tempo from a time on, in seconds, which is not before that of the call before.
    void setTempo(double seconds, double bpm) { tempoMap.set(seconds, bpm); }

    /// A note that the same ring starts again while it sounds ends there.
    /// @param start  seconds, 0 or more; notes of one ring come in the order of their start
    void addNote(double start, const MidiNote& note);

    /// The file, complete.
    [[nodiscard]] std::vector<std::uint8_t> bytes() const;

    /// Whether a file begins as one of MIDI does.
    [[nodiscard]] static bool isOne(std::span<const std::uint8_t> bytes);

    /// The first text in the first track of such a file, or "".
    [[nodiscard]] static std::string commentIn(std::span<const std::uint8_t> bytes);

private:
    struct Note
    {
        double start; ///< seconds
        double end;   ///< seconds
        std::uint8_t key;
        std::uint8_t velocity;
    };

    TempoMap tempoMap;
    std::string comment;
    std::array<std::vector<Note>, ringTracks> tracks;
};

} // namespace velotrine
