#include "engine/FMVoice.h"

#include "engine/FatalError.h"

#include <cmath>

namespace velotrine {

namespace {

constexpr double twoPi = 6.283185307179586;

/// Phase offset, in radians, of a modulator that feeds back fully at full output: 3π/2.
constexpr float feedbackScale = 4.712389f;

/// 60 dB below full scale: where a decay time ends and a voice falls silent.
constexpr float silence = 0.001f;

/// The modulation falls by 60 dB in two thirds of the amplitude's time.
constexpr float modDecaySpeed = 1.5f;

double advance(double phase, double step) noexcept
{
    const double next = phase + step;
    return next >= 1.0 ? next - 1.0 : next;
}

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

    const double carrierStep = carrierFreq / sampleRate;
    const double modStep = carrierFreq * modRatio / sampleRate;
    const float feedbackRadians = feedback * feedbackScale;

    for (int i = 0; i < frames; ++i) {
        const float fedBack = feedbackRadians * ((lastMod2 + lastMod1) * 0.5f);
        const auto mod = static_cast<float>(std::sin(modPhase * twoPi + static_cast<double>(fedBack)));
        const float deviation = currentModIndex * mod;
        const auto carrier =
            static_cast<float>(std::sin(carrierPhase * twoPi + static_cast<double>(deviation)));
        buffer[i] += (amplitude * gain) * carrier;

        carrierPhase = advance(carrierPhase, carrierStep);
        modPhase = advance(modPhase, modStep);
        amplitude *= decayRate;
        currentModIndex *= modDecayRate;
        lastMod2 = lastMod1;
        lastMod1 = mod;
    }

    if (amplitude < silence)
        active = false;
}

} // namespace velotrine
