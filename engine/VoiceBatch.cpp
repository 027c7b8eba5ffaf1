#include "engine/VoiceBatch.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "engine/VoiceBatch.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "engine/SineOfHalfTurns-inl.h"

HWY_BEFORE_NAMESPACE();

namespace velotrine {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Floats = hn::Rebind<float, Doubles>;
using DoubleVector = hn::Vec<Doubles>;
using FloatVector = hn::Vec<Floats>;

/// Phase offset, in radians, of a modulator that feeds back fully at full output: 3π/2.
constexpr float feedbackScale = 4.712389f;
constexpr double halfTurnsPerRadian = 0.3183098861837907;

/// Voices side by side in memory, one lane each, and silent ones to the end of a vector.
struct VoiceLanes
{
    alignas(64) double carrierPhase[maxBatchVoices];
    alignas(64) double modPhase[maxBatchVoices];
    alignas(64) double carrierFreq[maxBatchVoices];
    alignas(64) double modFreq[maxBatchVoices];
    alignas(64) double sampleRate[maxBatchVoices];
    alignas(64) float amplitude[maxBatchVoices];
    alignas(64) float decayRate[maxBatchVoices];
    alignas(64) float gain[maxBatchVoices];
    alignas(64) float modIndex[maxBatchVoices];
    alignas(64) float modDecayRate[maxBatchVoices];
    alignas(64) float halfFeedback[maxBatchVoices];
    alignas(64) float lastMod1[maxBatchVoices];
    alignas(64) float lastMod2[maxBatchVoices];

    void gather(std::span<FMVoice* const> voices)
    {
        static constexpr FMVoice silentVoice;
        const std::size_t lanesPerVector = hn::Lanes(Doubles());
        const std::size_t vectors = (voices.size() + lanesPerVector - 1) / lanesPerVector;
        for (std::size_t i = 0; i < vectors * lanesPerVector; ++i) {
            const auto& voice = i < voices.size() ? *voices[i] : silentVoice;
            carrierPhase[i] = voice.carrierPhase;
            modPhase[i] = voice.modPhase;
            carrierFreq[i] = voice.carrierFreq;
            modFreq[i] = voice.carrierFreq * voice.modRatio;
            sampleRate[i] = voice.sampleRate;
            amplitude[i] = voice.amplitude;
            decayRate[i] = voice.decayRate;
            gain[i] = voice.gain;
            modIndex[i] = voice.currentModIndex;
            modDecayRate[i] = voice.modDecayRate;
            // What is fed back is the mean of two samples; halving here, once, rounds nothing.
            halfFeedback[i] = voice.feedback * feedbackScale * 0.5f;
            lastMod1[i] = voice.lastMod1;
            lastMod2[i] = voice.lastMod2;
        }
    }

    void scatter(std::span<FMVoice* const> voices) const
    {
        for (std::size_t i = 0; i < voices.size(); ++i) {
            auto& voice = *voices[i];
            // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign): gathered before
            voice.carrierPhase = carrierPhase[i];
            voice.modPhase = modPhase[i];
            voice.amplitude = amplitude[i];
            voice.currentModIndex = modIndex[i];
            voice.lastMod1 = lastMod1[i];
            voice.lastMod2 = lastMod2[i];
            if (voice.amplitude < FMVoice::silence)
                voice.active = false;
        }
    }
};

/// A phase pushed on by an angle in radians.
HWY_INLINE DoubleVector PushedOn(DoubleVector phase, FloatVector radians)
{
    const Doubles d;
    return hn::MulAdd(hn::PromoteTo(d, radians), hn::Set(d, halfTurnsPerRadian), phase);
}

HWY_INLINE DoubleVector FractionOf(DoubleVector turns)
{
    return hn::Sub(turns, hn::Floor(turns));
}

/// The phase one sample later. A turn is taken off as soon as it is full: beyond it phases round differently,
/// and the differences add up.
HWY_INLINE DoubleVector MovedOn(DoubleVector phase, DoubleVector step)
{
    const Doubles d;
    const auto turn = hn::Set(d, 2.0);
    const auto next = hn::Add(phase, step);
    return hn::Sub(next, hn::IfThenElseZero(hn::Ge(next, turn), turn));
}

HWY_INLINE DoubleVector HalfTurnsOf(DoubleVector turns)
{
    return hn::Mul(turns, hn::Set(Doubles(), 2.0));
}

HWY_INLINE DoubleVector TurnsOf(DoubleVector halfTurns)
{
    return hn::Mul(halfTurns, hn::Set(Doubles(), 0.5));
}

/// A vector of voices, in registers. Phases are in half turns, as the sine takes them; to double and to halve
/// rounds nothing.
struct VoiceVector
{
    DoubleVector carrierPhase;
    DoubleVector modPhase;
    DoubleVector carrierStep;
    DoubleVector modStep;
    FloatVector amplitude;
    FloatVector decayRate;
    FloatVector gain;
    FloatVector modIndex;
    FloatVector modDecayRate;
    FloatVector halfFeedback;
    FloatVector lastMod1;
    FloatVector lastMod2;

    HWY_INLINE void Load(const VoiceLanes& lanes, std::size_t lane)
    {
        const Doubles d;
        const Floats f;
        carrierPhase = HalfTurnsOf(hn::Load(d, lanes.carrierPhase + lane));
        modPhase = HalfTurnsOf(hn::Load(d, lanes.modPhase + lane));
        // A fast modulator at a low rate makes more than a turn a sample, of which only the fraction is
        // heard. Whole turns would pile up, since MovedOn takes off one, and cost digits of the sine.
        const auto sampleRate = hn::Load(d, lanes.sampleRate + lane);
        carrierStep = HalfTurnsOf(FractionOf(hn::Div(hn::Load(d, lanes.carrierFreq + lane), sampleRate)));
        modStep = HalfTurnsOf(FractionOf(hn::Div(hn::Load(d, lanes.modFreq + lane), sampleRate)));
        amplitude = hn::Load(f, lanes.amplitude + lane);
        decayRate = hn::Load(f, lanes.decayRate + lane);
        gain = hn::Load(f, lanes.gain + lane);
        modIndex = hn::Load(f, lanes.modIndex + lane);
        modDecayRate = hn::Load(f, lanes.modDecayRate + lane);
        halfFeedback = hn::Load(f, lanes.halfFeedback + lane);
        lastMod1 = hn::Load(f, lanes.lastMod1 + lane);
        lastMod2 = hn::Load(f, lanes.lastMod2 + lane);
    }

    HWY_INLINE void Store(VoiceLanes& lanes, std::size_t lane) const
    {
        const Doubles d;
        const Floats f;
        hn::Store(TurnsOf(carrierPhase), d, lanes.carrierPhase + lane);
        hn::Store(TurnsOf(modPhase), d, lanes.modPhase + lane);
        hn::Store(amplitude, f, lanes.amplitude + lane);
        hn::Store(modIndex, f, lanes.modIndex + lane);
        hn::Store(lastMod1, f, lanes.lastMod1 + lane);
        hn::Store(lastMod2, f, lanes.lastMod2 + lane);
    }

    /// Where the modulators stand, pushed on by their own last two samples.
    [[nodiscard]] HWY_INLINE DoubleVector ModHalfTurns() const
    {
        return PushedOn(modPhase, hn::Mul(halfFeedback, hn::Add(lastMod2, lastMod1)));
    }

    /// Where the carriers stand, pushed on by the modulators' last samples.
    [[nodiscard]] HWY_INLINE DoubleVector CarrierHalfTurns() const
    {
        return PushedOn(carrierPhase, hn::Mul(modIndex, lastMod1));
    }

    HWY_INLINE void MoveModsOn(DoubleVector sines)
    {
        const Floats f;
        lastMod2 = lastMod1;
        lastMod1 = hn::DemoteTo(f, sines);
        modPhase = MovedOn(modPhase, modStep);
    }

    /// Adds the carriers' samples to the mix.
    HWY_INLINE void MoveCarriersOn(DoubleVector sines, FloatVector& mix)
    {
        const Floats f;
        mix = hn::MulAdd(hn::Mul(amplitude, gain), hn::DemoteTo(f, sines), mix);
        carrierPhase = MovedOn(carrierPhase, carrierStep);
        amplitude = hn::Mul(amplitude, decayRate);
        modIndex = hn::Mul(modIndex, modDecayRate);
    }
};

/// Renders `count` vectors of voices together. One voice, sample t (tests/reference/ScalarTranscription.cpp):
///
///     mod[t]  = sin(2π modPhase + feedback 3π/2 (mod[t - 1] + mod[t - 2]) / 2)
///     mix[t] += amplitude gain sin(2π carrierPhase + modIndex mod[t])
///
/// after which both phases go on by frequency / sampleRate, and amplitude and modIndex decay by their rates.
///
/// The modulators are one frame ahead: a modulator waits long for its own last sample, and the carriers'
/// sines of the frame before fill the time.
template <std::size_t count>
HWY_NOINLINE void RenderVectors(VoiceLanes& lanes, std::size_t firstLane, float* HWY_RESTRICT buffer,
                                int frames)
{
    const Doubles d;
    const Floats f;
    VoiceVector voices[count];
    for (std::size_t v = 0; v < count; ++v)
        voices[v].Load(lanes, firstLane + v * hn::Lanes(d));

    DoubleVector modSines[count];
    for (std::size_t v = 0; v < count; ++v)
        modSines[v] = voices[v].ModHalfTurns();
    SinesOfHalfTurns(d, modSines);
    for (std::size_t v = 0; v < count; ++v)
        voices[v].MoveModsOn(modSines[v]);

    const int lastFrame = frames - 1;
    for (int frame = 0; frame < lastFrame; ++frame) {
        DoubleVector sines[2 * count];
        for (std::size_t v = 0; v < count; ++v) {
            sines[v] = voices[v].ModHalfTurns();
            sines[count + v] = voices[v].CarrierHalfTurns();
        }
        SinesOfHalfTurns(d, sines);
        auto mix = hn::Zero(f);
        for (std::size_t v = 0; v < count; ++v) {
            voices[v].MoveModsOn(sines[v]);
            voices[v].MoveCarriersOn(sines[count + v], mix);
        }
        buffer[frame] += hn::GetLane(hn::SumOfLanes(f, mix));
    }

    DoubleVector carrierSines[count];
    for (std::size_t v = 0; v < count; ++v)
        carrierSines[v] = voices[v].CarrierHalfTurns();
    SinesOfHalfTurns(d, carrierSines);
    auto mix = hn::Zero(f);
    for (std::size_t v = 0; v < count; ++v)
        voices[v].MoveCarriersOn(carrierSines[v], mix);
    buffer[lastFrame] += hn::GetLane(hn::SumOfLanes(f, mix));

    for (std::size_t v = 0; v < count; ++v)
        voices[v].Store(lanes, firstLane + v * hn::Lanes(d));
}

void RenderVoices(std::span<FMVoice* const> voices, float* buffer, int frames)
{
    // Whatever is read has been gathered; clearing the rest would cost as much again.
    VoiceLanes lanes; // NOLINT(cppcoreguidelines-pro-type-member-init)
    lanes.gather(voices);
    const std::size_t lanesPerVector = hn::Lanes(Doubles());
    for (std::size_t lane = 0; frames > 0 && lane < voices.size();) {
        const std::size_t vectorsLeft = (voices.size() - lane + lanesPerVector - 1) / lanesPerVector;
        const std::size_t vectors = vectorsLeft >= 4 ? 4 : vectorsLeft >= 2 ? 2 : 1;
        if (vectors == 4)
            RenderVectors<4>(lanes, lane, buffer, frames);
        else if (vectors == 2)
            RenderVectors<2>(lanes, lane, buffer, frames);
        else
            RenderVectors<1>(lanes, lane, buffer, frames);
        lane += vectors * lanesPerVector;
    }
    lanes.scatter(voices);
}

} // namespace HWY_NAMESPACE
} // namespace velotrine

HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace velotrine {

HWY_EXPORT(RenderVoices);

void renderVoices(std::span<FMVoice* const> voices, float* buffer, int frames) noexcept VELOTRINE_NONBLOCKING
{
    // A table of pointers, one for each instruction set, none of which waits for anything.
    VELOTRINE_UNFOLLOWED(HWY_DYNAMIC_DISPATCH(RenderVoices)(voices, buffer, frames);)
}

} // namespace velotrine

#endif
