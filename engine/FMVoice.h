#pragma once

#include "engine/Nonblocking.h"

#include <cstdint>

namespace velotrine {

/// One note: a sine carrier, phase-modulated by a sine modulator that feeds back on itself. No attack,
/// sustain or release: the note starts at full amplitude and decays; its modulation decays faster, so that it
/// starts bright and ends almost as a pure sine. Render thread only.
///
/// tests/reference/ScalarTranscription.cpp is the whole instrument in plain scalar arithmetic, to be read in
/// two minutes.
class FMVoice
{
public:
    /// 60 dB below full scale: where a decay time ends and a voice falls silent.
    static constexpr float silence = 0.001f;

    bool active = false;          ///< sounding; only then is it rendered
    std::int64_t ring = 0;        ///< the ring whose spot started the note, 0 to 4
    double carrierPhase = 0.0;    ///< in cycles, in [0, 1)
    double modPhase = 0.0;        ///< in cycles, in [0, 1)
    float amplitude = 0.0f;       ///< envelope: 1 at the start, multiplied by decayRate each sample
    double sampleRate = 44100.0;  ///< Hz
    double carrierFreq = 440.0;   ///< Hz
    double modRatio = 2.0;        ///< modulator frequency as a multiple of carrierFreq
    float modIndex = 3.0f;        ///< at the note's start, radians
    float decayRate = 0.9997f;    ///< factor on amplitude per sample
    float modDecayRate = 0.9995f; ///< factor on currentModIndex per sample
    float feedback = 0.0f;        ///< of the modulator on itself, 0 to 1
    float gain = 1.0f;            ///< the square of the ring's volume
    float currentModIndex = 0.0f; ///< runs down from modIndex
    float lastMod1 = 0.0f;        ///< modulator output one sample ago
    float lastMod2 = 0.0f;        ///< and two samples ago

    /// What a note is made of; all else follows from it.
    struct Note
    {
        std::int64_t ring;  ///< 0 to 4
        double frequency;   ///< Hz
        double modRatio;    ///< modulator frequency as a multiple of the carrier's
        float modIndex;     ///< radians
        float decaySeconds; ///< time to fall by 60 dB
        float gain;
        float feedback; ///< 0 to 1
    };

    /// Starts the note at phase 0 and full amplitude, cutting off whatever the voice was playing.
    void start(const Note& note) noexcept VELOTRINE_NONBLOCKING;

    /// Adds the next samples of the note to the buffer. A voice that has fallen by 60 dB by the end of the
    /// call turns itself inactive; an inactive one does nothing. A negative number of frames is a fatal
    /// error.
    /// @param buffer  mono, at least `frames` long
    void render(float* buffer, int frames) noexcept VELOTRINE_NONBLOCKING;
};

} // namespace velotrine
