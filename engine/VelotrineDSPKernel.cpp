#include "engine/VelotrineDSPKernel.h"

#include "engine/FatalError.h"
#include "engine/RandomGenerator.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace velotrine {

namespace {

constexpr double twoPi = 6.283185307179586;
constexpr double secondsPerMinute = 60.0;
constexpr double internalQuartersPerBar = 4.0;

/// Neighbouring rings turn against each other.
constexpr std::array<double, ringCount> ringDirections{1.0, -1.0, 1.0, -1.0, 1.0};

/// How far a ring stays behind the outermost one at full spread: 1 - 0.9^(4 - ring).
constexpr std::array<double, ringCount> ringSpreads{0.3439, 0.271, 0.19, 0.1, 0.0};

/// Turns per bar of the fastest ring, times quarters per bar, at Activity 1; and turns of wobble, times
/// quarters per bar squared, at Calories 1.
constexpr double rotationDepth = 0.25;
constexpr double wobbleDepth = 0.25;

/// Up to here all rings rotate alike.
constexpr double activityWithoutSpread = 0.5;

/// The wobbles come together again every eight bars.
constexpr double barsPerWobbleCycle = 8.0;

/// A spot at offset 0 is crossed just after the bar line, never on it, where the clock wraps.
constexpr double minPhaseOffset = 0.001;

/// Full Drudgery stops short of full feedback.
constexpr float feedbackPerDrudgery = 0.75f;

constexpr std::int64_t semitonesPerOctave = 12;
constexpr double concertPitch = 440.0;
constexpr double concertPitchNote = 69.0;

/// Cuts off the fraction.
std::int64_t wholeNumber(float value) noexcept
{
    constexpr float twoTo63 = 9223372036854775808.0f;
    if (!(value >= -twoTo63 && value < twoTo63))
        fatalError("a parameter that counts something is not a whole number of 64 bits");
    return static_cast<std::int64_t>(value);
}

double frequencyOf(std::int64_t note) noexcept
{
    return concertPitch * std::pow(2.0, (static_cast<double>(note) - concertPitchNote) /
                                            static_cast<double>(semitonesPerOctave));
}

/// Keeps a phase that moved by less than a turn within one turn.
double wrapBothWays(double phase) noexcept
{
    if (phase >= 1.0)
        return phase - 1.0;
    return phase < 0.0 ? phase + 1.0 : phase;
}

double wrapForward(double phase) noexcept
{
    return phase >= 1.0 ? phase - 1.0 : phase;
}

std::size_t checkedRing(std::int64_t ring) noexcept
{
    if (ring < 0 || ring >= ringCount)
        fatalError("there is no such ring");
    return static_cast<std::size_t>(ring);
}

} // namespace

/// The one place that knows which address means which field.
template <typename Kernel, typename Visitor>
void VelotrineDSPKernel::visitField(Kernel& kernel, ParameterAddress address, Visitor&& visitor) noexcept
{
    if (address >= parameterCount)
        return;

    if (address < globalParameterCount) {
        switch (static_cast<GlobalParameter>(address)) {
        case GlobalParameter::activity:
            return visitor(kernel.activity);
        case GlobalParameter::boredom:
            return visitor(kernel.boredom);
        case GlobalParameter::calories:
            return visitor(kernel.calories);
        case GlobalParameter::drudgery:
            return visitor(kernel.drudgery);
        case GlobalParameter::rootNote:
            return visitor(kernel.rootNote);
        case GlobalParameter::scaleType:
            return visitor(kernel.scaleType);
        case GlobalParameter::bpm:
            return visitor(kernel.bpm);
        case GlobalParameter::volume:
            return visitor(kernel.volume);
        case GlobalParameter::sync:
            return visitor(kernel.sync);
        }
    }

    const auto group = (address - globalParameterCount) / ringCount;
    const auto ring = (address - globalParameterCount) % ringCount;
    switch (static_cast<RingParameter>(group)) {
    case RingParameter::spots:
        return visitor(kernel.spotCounts[ring]);
    case RingParameter::phase:
        return visitor(kernel.phaseOffsets[ring]);
    case RingParameter::probability:
        return visitor(kernel.probabilities[ring]);
    case RingParameter::octave:
        return visitor(kernel.ringOctaves[ring]);
    case RingParameter::volume:
        return visitor(kernel.ringVolumes[ring]);
    case RingParameter::timbre:
        return visitor(kernel.ringTimbres[ring]);
    }
}

void VelotrineDSPKernel::setParameter(ParameterAddress address, float value) noexcept VELOTRINE_NONBLOCKING
{
    visitField(*this, address, [value](auto& field) {
        using Value = decltype(field.load());
        if constexpr (std::is_same_v<Value, bool>)
            field = value > 0.5f;
        else if constexpr (std::is_same_v<Value, std::int64_t>)
            field = wholeNumber(value);
        else
            field = value;
    });
}

float VelotrineDSPKernel::parameter(ParameterAddress address) const noexcept VELOTRINE_NONBLOCKING
{
    float value = 0.0f;
    visitField(*this, address, [&value](const auto& field) { value = static_cast<float>(field.load()); });
    return value;
}

void VelotrineDSPKernel::setup(std::int64_t newMaxFrames, double newSampleRate)
{
    if (newMaxFrames < 0)
        fatalError("setup: a negative number of frames");
    maxFrames = newMaxFrames;
    sampleRate = newSampleRate;
    voicePool = std::make_unique<VoicePool>(sampleRate);
    scratchBuf.assign(static_cast<std::size_t>(maxFrames), 0.0f);
    reset();
}

void VelotrineDSPKernel::reset() noexcept VELOTRINE_NONBLOCKING
{
    clockPhase = 0.0;
    clockPhaseBuf = 0.0;
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        lfoPhases[ring] = 0.0;
        lastSpotIndex[ring] = 0;
        ringInitialised[ring] = false;
        activityPhases[ring] = 0.0;
        lfoOffsets[ring] = 0.0;
        lastRingPhase[ring] = 0.0;
    }
    lastPitchClass = -1;
    hostPlayingLast = false;
    internalPlayingLast = false;
}

void VelotrineDSPKernel::process(float* left, float* right, int frameCount) noexcept VELOTRINE_NONBLOCKING
{
    firedNoteCount = 0;
    droppedNoteEvents = 0;
    if (frameCount < 1)
        return;
    if (!voicePool)
        fatalError("process: there are no voices before setup");
    if (frameCount > maxFrames)
        fatalError("process: more frames than setup was told of");

    const Transport transport{.followsHost = sync, .internalPlaying = internalPlaying};
    noticeTransportEdges(transport);
    if (const auto tempo = currentTempo(transport))
        runClock(*tempo, frameCount);

    std::fill_n(scratchBuf.begin(), frameCount, 0.0f);
    voicePool->render(scratchBuf.data(), frameCount);
    writeOutput(left, right, frameCount);
    voicePool->forgetSilentVoices();
    clockPhaseBuf = clockPhase;
}

void VelotrineDSPKernel::noticeTransportEdges(const Transport& transport) noexcept VELOTRINE_NONBLOCKING
{
    const bool running = transport.followsHost ? hostPlaying : transport.internalPlaying;
    const bool ranBefore = transport.followsHost ? hostPlayingLast : internalPlayingLast;

    if (ranBefore && !running) {
        clockPhase = 0.0;
        clockPhaseBuf = 0.0;
        for (std::size_t ring = 0; ring < ringCount; ++ring) {
            lfoPhases[ring] = 0.0;
            activityPhases[ring] = 0.0;
            lfoOffsets[ring] = 0.0;
        }
    }
    if (running && !ranBefore) {
        lastSpotIndex.fill(0);
        ringInitialised.fill(false);
        lastPitchClass = -1;
    }

    hostPlayingLast = hostPlaying;
    internalPlayingLast = transport.internalPlaying;
}

std::optional<VelotrineDSPKernel::Tempo> VelotrineDSPKernel::currentTempo(
    const Transport& transport) const noexcept VELOTRINE_NONBLOCKING
{
    if (!transport.followsHost) {
        if (!transport.internalPlaying)
            return std::nullopt;
        // The order of min and max makes NaN the upper bound.
        const float bounded = std::max(40.0f, std::min(300.0f, bpm.load()));
        return Tempo{static_cast<double>(bounded), internalQuartersPerBar};
    }

    if (!(hostTempo > 0.0 && hostPlaying))
        return std::nullopt;
    if (!(hostBeatsPerBar > 0.0))
        return Tempo{hostTempo, internalQuartersPerBar};
    return Tempo{hostTempo, hostBeatsPerBar * 4.0 / (hostBeatUnit > 0.0 ? hostBeatUnit : 4.0)};
}

VelotrineDSPKernel::PerRing<VelotrineDSPKernel::RingMotion> VelotrineDSPKernel::ringMotions(
    const Tempo& tempo) const noexcept VELOTRINE_NONBLOCKING
{
    const double quartersPerBar = tempo.quartersPerBar;
    const double barsPerFrame = tempo.quartersPerMinute / (quartersPerBar * secondsPerMinute * sampleRate);
    const double quartersPerFrame = tempo.quartersPerMinute / (sampleRate * secondsPerMinute);
    const double quartersPerWobbleCycle = quartersPerBar * barsPerWobbleCycle;
    const auto active = static_cast<double>(activity.load());
    const double rotationStep = barsPerFrame / quartersPerBar * active * rotationDepth;
    const double spread = 2.0 * std::max(active - activityWithoutSpread, 0.0);
    const double wobbleAmplitude =
        (static_cast<double>(calories.load()) * wobbleDepth) / (quartersPerBar * quartersPerBar);

    PerRing<RingMotion> motions{};
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        // Ring 4 wobbles once a quarter note; each ring inside it makes one cycle less in eight bars.
        const auto missingCycles = static_cast<double>(ringCount - 1 - ring);
        motions[ring] = {
            .ring = ring,
            .direction = ringDirections[ring],
            .rotationStep = rotationStep * ringDirections[ring] * (1.0 - spread * ringSpreads[ring]),
            .wobbleStep =
                quartersPerFrame * (quartersPerWobbleCycle - missingCycles) / quartersPerWobbleCycle,
            .wobbleAmplitude = wobbleAmplitude,
            .phaseOffset = std::max(static_cast<double>(phaseOffsets[ring].load()), minPhaseOffset),
            .spotCount = spotCounts[ring],
        };
    }
    return motions;
}

void VelotrineDSPKernel::runClock(const Tempo& tempo, int frameCount) noexcept VELOTRINE_NONBLOCKING
{
    const double barsPerFrame =
        tempo.quartersPerMinute / (tempo.quartersPerBar * secondsPerMinute * sampleRate);
    const auto motions = ringMotions(tempo);

    for (int frame = 0; frame < frameCount; ++frame) {
        clockPhase = wrapForward(clockPhase + barsPerFrame);
        for (const auto& motion : motions)
            turnRing(motion, frame);
    }
}

// Positions are accumulated step by step, in this order of operations: crossings often fall exactly on a
// frame, and then the rounding of the last bit decides which.
void VelotrineDSPKernel::turnRing(const RingMotion& motion, int frame) noexcept VELOTRINE_NONBLOCKING
{
    const auto ring = motion.ring;
    const double rotation = wrapBothWays(activityPhases[ring] + motion.rotationStep);
    activityPhases[ring] = rotation;
    lfoPhases[ring] = wrapForward(lfoPhases[ring] + motion.wobbleStep);
    const double wobble = motion.wobbleAmplitude * std::sin(twoPi * lfoPhases[ring]) * motion.direction;
    lfoOffsets[ring] = wobble;

    if (motion.spotCount < 1) {
        ringInitialised[ring] = false;
        return;
    }
    // Three turns more than needed keep the argument positive.
    crossSpots(motion, std::fmod(clockPhase - motion.phaseOffset - rotation - wobble + 3.0, 1.0), frame);
}

void VelotrineDSPKernel::crossSpots(const RingMotion& motion, double handPosition,
                                    int frame) noexcept VELOTRINE_NONBLOCKING
{
    const auto ring = motion.ring;
    const bool passedTheStart = lastRingPhase[ring] > 0.5 && handPosition < 0.5;
    if (ringInitialised[ring] && passedTheStart)
        lastSpotIndex[ring] = -1;
    lastRingPhase[ring] = handPosition;

    const double spotPosition = handPosition * static_cast<double>(motion.spotCount);
    if (!std::isfinite(spotPosition))
        fatalError("a ring's position is not finite");
    const auto spot = static_cast<std::int64_t>(spotPosition) % motion.spotCount;

    if (!ringInitialised[ring]) {
        ringInitialised[ring] = true;
        lastSpotIndex[ring] = spot;
    } else if (spot != lastSpotIndex[ring]) {
        lastSpotIndex[ring] = spot;
        if (drawsFire(ring))
            fireSpot(ring, spot, frame);
    }
}

bool VelotrineDSPKernel::drawsFire(std::size_t ring) noexcept VELOTRINE_NONBLOCKING
{
    const float probability = probabilities[ring];
    return probability >= 1.0f || drawUnit(rngState) < probability;
}

void VelotrineDSPKernel::fireSpot(std::size_t ring, std::int64_t spot,
                                  int frame) noexcept VELOTRINE_NONBLOCKING
{
    // A spot can be beyond the display's 16, or, in bars shorter than any music, negative.
    if (spot >= 0 && spot < maxSpotsPerRing)
        spotFireTimes[ring * maxSpotsPerRing + static_cast<std::size_t>(spot)] = hostClockNow();

    const auto started = startNote(static_cast<std::int64_t>(ring));
    if (firedNoteCount == firedNotes.size()) {
        ++droppedNoteEvents;
        return;
    }
    firedNotes[firedNoteCount++] = {.frame = frame,
                                    .ring = static_cast<int>(ring),
                                    .spot = static_cast<int>(spot),
                                    .note = static_cast<int>(started.note),
                                    .gain = started.gain,
                                    .decaySeconds = started.decaySeconds};
}

std::int64_t VelotrineDSPKernel::nextNote(std::int64_t ring) noexcept VELOTRINE_NONBLOCKING
{
    const auto checked = checkedRing(ring);
    const auto lastScale = static_cast<std::int64_t>(scaleCount) - 1;
    lastPitchClass = drawPitchClass({.root = wholeNumber(rootNote) % semitonesPerOctave,
                                     .scale = std::clamp(wholeNumber(scaleType), std::int64_t{0}, lastScale),
                                     .lastPitchClass = lastPitchClass,
                                     .boredom = boredom},
                                    rngState);

    const std::int64_t octave = ringOctaves[checked];
    constexpr auto highestOctave = INT64_MAX / semitonesPerOctave - 1;
    if (octave > highestOctave || octave < -highestOctave)
        fatalError("nextNote: the octave is beyond 64 bits");
    return octave * semitonesPerOctave + lastPitchClass;
}

void VelotrineDSPKernel::triggerVoice(std::int64_t ring) noexcept VELOTRINE_NONBLOCKING
{
    startNote(ring);
}

VelotrineDSPKernel::StartedNote VelotrineDSPKernel::startNote(std::int64_t ring) noexcept
    VELOTRINE_NONBLOCKING
{
    if (!voicePool)
        fatalError("triggerVoice: there are no voices before setup");

    const auto note = nextNote(ring);
    const auto index = static_cast<std::size_t>(ring);
    const float ringVolume = ringVolumes[index];
    const auto timbre = timbreParameters(ringTimbres[index]);
    const float gain = ringVolume * ringVolume;
    // The order of min and max makes NaN the lower bound.
    const float feedback = std::min(1.0f, std::max(0.0f, drudgery.load() * feedbackPerDrudgery));

    voicePool->allocate().start({.ring = ring,
                                 .frequency = frequencyOf(note),
                                 .modRatio = timbre.modRatio,
                                 .modIndex = timbre.modIndex,
                                 .decaySeconds = timbre.decaySeconds,
                                 .gain = gain,
                                 .feedback = feedback});
    return {.note = note, .gain = gain, .decaySeconds = timbre.decaySeconds};
}

void VelotrineDSPKernel::writeOutput(float* left, float* right,
                                     int frameCount) const noexcept VELOTRINE_NONBLOCKING
{
    const float gain = volume;
    for (int i = 0; i < frameCount; ++i) {
        const float mix = gain * scratchBuf[static_cast<std::size_t>(i)];
        const float sample = std::isfinite(mix) ? std::tanh(mix) : 0.0f;
        left[i] = sample;
        right[i] = sample;
    }
}

} // namespace velotrine
