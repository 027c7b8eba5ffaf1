#pragma once

namespace velotrine {

/// A music host's transport. A value that the host does not know, or that makes no sense, is 0, and the
/// previous one stays in force.
struct HostTransport
{
    double tempo = 0.0;         ///< quarter notes a minute
    double tempoPerFrame = 0.0; ///< what each frame adds to the tempo, until the host's next report
    double beatsPerBar = 0.0;   ///< numerator of the time signature
    double beatUnit = 0.0;      ///< its denominator
    bool isPlaying = false;

    bool operator==(const HostTransport&) const = default;
};

} // namespace velotrine
