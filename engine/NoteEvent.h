#pragma once

namespace velotrine {

/// A note as it was fired, with all that a MIDI track needs.
struct NoteEvent
{
    int frame;          ///< of the crossing, counted from the start of the process call
    int ring;           ///< 0 to 4, innermost first
    int spot;           ///< 0 is the one at the ring's start
    int note;           ///< MIDI note number
    float gain;         ///< the square of the ring's volume
    float decaySeconds; ///< time in which the note falls by 60 dB
};

} // namespace velotrine
