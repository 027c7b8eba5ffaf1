#pragma once

namespace velotrine {

/// What a music host says of its transport. A value that it does not know, or that makes no sense, is 0, and
/// the one before it stays in force.
struct HostTransport
{
    double tempo = 0.0;         ///< quarter notes a minute
    double tempoPerFrame = 0.0; ///< what the tempo grows by with each frame, until the host says more
    double beatsPerBar = 0.0;   ///< numerator of the time signature
    double beatUnit = 0.0;      ///< its denominator
    bool isPlaying = false;

    bool operator==(const HostTransport&) const = default;
};

} // namespace velotrine
