#pragma once

#include "audiounit/MidiNote.h"
#include "audiounit/NoteOutput.h"
#include "engine/Nonblocking.h"
#include "engine/NoteEvent.h"
#include "engine/RingCount.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace velotrine {

/// The notes of one instrument on their way to one receiver, key by key: midiNote() says which they are and
/// how long they last.
///
/// A key that is struck again while it is held goes up first. Each key that went down goes up once, whatever
/// happens in between: where a receiver has no room, notes are left out, and ends of notes wait until it has.
///
/// The frame of a message is that of the spot's crossing, to the sample. The sound of the note begins up to
/// 31 frames before, with the render cycle in which the crossing lies (CycleRenderer).
///
/// Render thread; never allocates or waits.
class NoteStream
{
public:
    /// All keys that are down go up at the next chance; lengths count at this rate from now on.
    /// @param newSampleRate  Hz
    void setup(double newSampleRate) noexcept VELOTRINE_NONBLOCKING;

    /// All keys that are down go up at the next chance.
    void endAll() noexcept VELOTRINE_NONBLOCKING;

    /// The next frames, which lie in a render cycle.
    /// @param fired       the cycle's notes, as the kernel has them
    /// @param cycleFrame  where in the cycle the frames begin
    /// @param frames      how many there are; none of the messages lies beyond them
    /// @param output      counts frames from the first of these
    void play(std::span<const NoteEvent> fired, int cycleFrame, int frames,
              const NoteOutput& output) noexcept VELOTRINE_NONBLOCKING;

    /// The next frames, in which nothing fires.
    void play(int frames, const NoteOutput& output) noexcept VELOTRINE_NONBLOCKING
    {
        play({}, 0, frames, output);
    }

    /// Whether no key is down.
    [[nodiscard]] bool isSilent() const noexcept VELOTRINE_NONBLOCKING { return nextEnd == keyIsUp; }

private:
    static constexpr auto keyIsUp = std::numeric_limits<std::int64_t>::max();
    static constexpr std::size_t keysPerChannel = MidiNote::highestKey + 1;

    /// The frames that are being played, and where their messages go.
    struct Stretch
    {
        std::int64_t start;
        const NoteOutput& output;
    };

    /// False where the receiver had no room, here and below.
    bool endKeysUntil(std::int64_t frame, const Stretch& stretch) noexcept VELOTRINE_NONBLOCKING;
    bool endKey(std::size_t index, std::int64_t frame, const Stretch& stretch) noexcept VELOTRINE_NONBLOCKING;
    bool strike(const MidiNote& note, std::int64_t frame,
                const Stretch& stretch) noexcept VELOTRINE_NONBLOCKING;

    static constexpr auto allUp = [] {
        std::array<std::int64_t, keysPerChannel * ringCount> ends{};
        ends.fill(keyIsUp);
        return ends;
    }();

    double sampleRate = 44100.0;                                      ///< Hz
    std::int64_t now = 0;                                             ///< frames played so far
    std::array<std::int64_t, keysPerChannel* ringCount> ends = allUp; ///< when each key goes up
    std::int64_t nextEnd = keyIsUp;                                   ///< the first of these
};

} // namespace velotrine
