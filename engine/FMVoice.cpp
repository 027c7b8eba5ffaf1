#include "engine/FMVoice.h"

#include "engine/FatalError.h"
#include "engine/VoiceBatch.h"

#include <cmath>

namespace velotrine {

namespace {

/// The modulation falls by 60 dB in two thirds of the amplitude's time.
constexpr float modDecaySpeed = 1.5f;

} // namespace

void FMVoice::start(const Note& note) noexcept VELOTRINE_NONBLOCKING
{
    const float decaySamples = note.decaySeconds * static_cast<float>(sampleRate);

    ring = note.ring;
    carrierFreq = note.frequency;
    modRatio = note.modRatio;
    modIndex = note.modIndex;
    currentModIndex = note.modIndex;
    gain = note.gain;
    feedback = note.feedback;
    decayRate = std::pow(silence, 1.0f / decaySamples);
    modDecayRate = std::pow(silence, modDecaySpeed / decaySamples);
    amplitude = 1.0f;
    lastMod1 = 0.0f;
    lastMod2 = 0.0f;
    carrierPhase = 0.0;
    modPhase = 0.0;
    active = true;
}

void FMVoice::render(float* buffer, int frames) noexcept VELOTRINE_NONBLOCKING
{
    if (frames < 0)
        fatalError("FMVoice::render: a negative number of frames");
    if (!active)
        return;

    FMVoice* const batch[] = {this};
    renderVoices(batch, buffer, frames);
}

} // namespace velotrine
