#include "engine/VelotrineDSPKernel.h"

#include "engine/FatalError.h"
#include "engine/SoftClip.h"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>

namespace velotrine {

namespace {

constexpr double internalQuartersPerBar = 4.0;

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

std::size_t checkedRing(std::int64_t ring) noexcept
{
    if (ring < 0 || ring >= ringCount)
        fatalError("there is no such ring");
    return static_cast<std::size_t>(ring);
}

} // namespace

void VelotrineDSPKernel::setParameter(ParameterAddress address, float value) noexcept VELOTRINE_NONBLOCKING
{
    const auto storeValue = [value](auto& field) {
        using Value = decltype(field.load());
        if constexpr (std::is_same_v<Value, bool>)
            field = value > 0.5f;
        else if constexpr (std::is_same_v<Value, std::int64_t>)
            field = wholeNumber(value);
        else
            field = value;
    };
    visitField(address, storeValue, *this);
}

float VelotrineDSPKernel::parameter(ParameterAddress address) const noexcept VELOTRINE_NONBLOCKING
{
    float value = 0.0f;
    visitField(
        address, [&value](const auto& field) { value = static_cast<float>(field.load()); }, *this);
    return value;
}

void VelotrineDSPKernel::setup(std::int64_t newMaxFrames, double newSampleRate)
{
    if (newMaxFrames < 0)
        fatalError("setup: a negative number of frames");
    auto newPool = std::make_unique<VoicePool>(newSampleRate);
    std::vector<float> newScratchBuf(static_cast<std::size_t>(newMaxFrames), 0.0f);

    // From here on nothing can fail.
    maxFrames = newMaxFrames;
    sampleRate = newSampleRate;
    voicePool = std::move(newPool);
    scratchBuf = std::move(newScratchBuf);
    reset();
}

void VelotrineDSPKernel::reset() noexcept VELOTRINE_NONBLOCKING
{
    putClockBack();
    armAnew();
    lastRingPhase.fill(0.0);
    hostPlayingLast = false;
    internalPlayingLast = false;
}

VelotrineDSPKernel::Position VelotrineDSPKernel::position() const noexcept VELOTRINE_NONBLOCKING
{
    Position position{.clockPhase = clockPhase,
                      .activityPhases = {},
                      .lfoOffsets = {},
                      .lfoPhases = lfoPhases,
                      .lastSpotIndex = lastSpotIndex,
                      .ringInitialised = ringInitialised,
                      .lastRingPhase = lastRingPhase,
                      .lastPitchClass = lastPitchClass,
                      .hostPlayingLast = hostPlayingLast,
                      .internalPlayingLast = internalPlayingLast};
    std::ranges::copy(activityPhases, position.activityPhases.begin());
    std::ranges::copy(lfoOffsets, position.lfoOffsets.begin());
    return position;
}

void VelotrineDSPKernel::restore(const Position& position) noexcept VELOTRINE_NONBLOCKING
{
    clockPhase = position.clockPhase;
    clockPhaseBuf = position.clockPhase;
    std::ranges::copy(position.activityPhases, activityPhases.begin());
    std::ranges::copy(position.lfoOffsets, lfoOffsets.begin());
    lfoPhases = position.lfoPhases;
    lastSpotIndex = position.lastSpotIndex;
    ringInitialised = position.ringInitialised;
    lastRingPhase = position.lastRingPhase;
    lastPitchClass = position.lastPitchClass;
    hostPlayingLast = position.hostPlayingLast;
    internalPlayingLast = position.internalPlayingLast;
}

void VelotrineDSPKernel::putClockBack() noexcept VELOTRINE_NONBLOCKING
{
    clockPhase = 0.0;
    clockPhaseBuf = 0.0;
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        lfoPhases[ring] = 0.0;
        activityPhases[ring] = 0.0;
        lfoOffsets[ring] = 0.0;
    }
}

void VelotrineDSPKernel::armAnew() noexcept VELOTRINE_NONBLOCKING
{
    lastSpotIndex.fill(0);
    ringInitialised.fill(false);
    lastPitchClass = -1;
}

void VelotrineDSPKernel::process(float* left, float* right, int frameCount) noexcept VELOTRINE_NONBLOCKING
{
    firedNoteCount = 0;
    droppedNoteEvents = 0;
    if (frameCount < 1)
        return;
    if (!voicePool)
        fatalError("process: there are no voices before setup");
    if (std::cmp_greater(frameCount, scratchBuf.size()))
        fatalError("process: more frames than setup was told of");

    readInputs();
    if (inputsInForce.seed != thrownSeed)
        throwDice(inputsInForce.seed);
    noticeTransportEdges();
    const auto& parameters = inputsInForce.parameters;
    if (const auto inForce = tempoFor(parameters.sync, parameters.bpm); inForce && clockRuns())
        runClock(*inForce, frameCount);

    std::fill_n(scratchBuf.begin(), frameCount, 0.0f);
    if (voicePool->isSilent()) {
        std::fill_n(left, frameCount, 0.0f);
        std::fill_n(right, frameCount, 0.0f);
    } else {
        voicePool->render(scratchBuf.data(), frameCount);
        softClip(scratchBuf.data(), parameters.volume, left, right, frameCount);
    }
    voicePool->forgetSilentVoices();
    clockPhaseBuf = clockPhase;
}

bool VelotrineDSPKernel::isAtRest() const noexcept VELOTRINE_NONBLOCKING
{
    const bool edgesAreNoticed = hostPlaying == hostPlayingLast && internalPlaying == internalPlayingLast;
    const bool isRunning = sync ? hostPlaying : internalPlaying.load();
    return edgesAreNoticed && !isRunning && voicePool && voicePool->triggerOrder.empty() &&
           voicePool->isSilent();
}

void VelotrineDSPKernel::readInputs() noexcept VELOTRINE_NONBLOCKING
{
    readOnce(*this, inputsInForce.parameters);
    inputsInForce.internalPlaying = internalPlaying;
    inputsInForce.seed = seed;
    inputsInForce.sameMusicAtEveryStart = sameMusicAtEveryStart;
}

void VelotrineDSPKernel::throwDice(std::uint32_t newSeed) noexcept VELOTRINE_NONBLOCKING
{
    thrownSeed = newSeed;
    rngState = generatorState(newSeed);
}

void VelotrineDSPKernel::noticeTransportEdges() noexcept VELOTRINE_NONBLOCKING
{
    const bool running = clockRuns();
    const bool ranBefore = inputsInForce.parameters.sync ? hostPlayingLast : internalPlayingLast;

    if (ranBefore && !running)
        putClockBack();
    if (running && !ranBefore) {
        armAnew();
        if (inputsInForce.sameMusicAtEveryStart)
            throwDice(inputsInForce.seed);
    }

    hostPlayingLast = hostPlaying;
    internalPlayingLast = inputsInForce.internalPlaying;
}

bool VelotrineDSPKernel::clockRuns() const noexcept VELOTRINE_NONBLOCKING
{
    return inputsInForce.parameters.sync ? hostPlaying : inputsInForce.internalPlaying;
}

std::optional<VelotrineDSPKernel::Tempo> VelotrineDSPKernel::tempoFor(
    bool followsHost, float internalTempo) const noexcept VELOTRINE_NONBLOCKING
{
    if (!followsHost)
        // The order of min and max makes NaN the upper bound.
        return Tempo{static_cast<double>(std::max(minTempo, std::min(maxTempo, internalTempo))),
                     internalQuartersPerBar};
    if (!(hostTempo > 0.0))
        return std::nullopt;
    if (!(hostBeatsPerBar > 0.0))
        return Tempo{hostTempo, internalQuartersPerBar};
    return Tempo{hostTempo, hostBeatsPerBar * 4.0 / (hostBeatUnit > 0.0 ? hostBeatUnit : 4.0)};
}

RingClock::Settings VelotrineDSPKernel::ringSettings(const Tempo& tempo) const noexcept VELOTRINE_NONBLOCKING
{
    const auto& parameters = inputsInForce.parameters;
    RingClock::Settings settings{.quartersPerMinute = tempo.quartersPerMinute,
                                 .quartersPerBar = tempo.quartersPerBar,
                                 .sampleRate = sampleRate,
                                 .activity = static_cast<double>(parameters.activity),
                                 .calories = static_cast<double>(parameters.calories),
                                 .phaseOffsets = {},
                                 .spotCounts = parameters.spotCounts};
    for (std::size_t ring = 0; ring < ringCount; ++ring)
        settings.phaseOffsets[ring] = static_cast<double>(parameters.phaseOffsets[ring]);
    return settings;
}

RingClock::Phases VelotrineDSPKernel::ringPhases() const noexcept VELOTRINE_NONBLOCKING
{
    RingClock::Phases phases{.bar = clockPhase, .wobbles = lfoPhases, .rotations = {}};
    std::ranges::copy(activityPhases, phases.rotations.begin());
    return phases;
}

void VelotrineDSPKernel::keepPhases(const RingClock::Phases& phases) noexcept VELOTRINE_NONBLOCKING
{
    clockPhase = phases.bar;
    lfoPhases = phases.wobbles;
    std::ranges::copy(phases.rotations, activityPhases.begin());
}

// The clock and the rings move frame by frame, but most of the time no hand can reach a spot for hundreds of
// frames. So each ring is looked at only when something may happen on it: on the first frame, unless all is
// as the last call left it, on the last, for the display, and in between when the hand may have come to a
// spot.
void VelotrineDSPKernel::runClock(const Tempo& tempo, int frameCount) noexcept VELOTRINE_NONBLOCKING
{
    auto nextLook = startRings(ringSettings(tempo));
    const int lastFrame = frameCount - 1;

    for (int frame = -1; frame < lastFrame;) {
        const int next =
            static_cast<int>(std::min<std::int64_t>(*std::ranges::min_element(nextLook), lastFrame));
        ringClock.advance(next - frame);
        frame = next;
        for (std::size_t ring = 0; ring < ringCount; ++ring)
            if (nextLook[ring] <= frame || frame == lastFrame)
                nextLook[ring] = std::int64_t{frame} + 1 + lookAtRing(ring, frame);
    }
    leaveRings(nextLook, frameCount);
}

PerRing<std::int64_t> VelotrineDSPKernel::startRings(const RingClock::Settings& settings) noexcept
    VELOTRINE_NONBLOCKING
{
    const auto phases = ringPhases();
    const bool goesOn = settings == ringsLeft.settings && phases == ringClock.phases() &&
                        ringInitialised == ringsLeft.initialised &&
                        lastSpotIndex == ringsLeft.lastSpotIndex && lastRingPhase == ringsLeft.lastRingPhase;
    if (goesOn)
        return ringsLeft.nextLook;
    ringClock.start(settings, phases);
    ringsLeft.settings = settings;
    return {};
}

void VelotrineDSPKernel::leaveRings(const PerRing<std::int64_t>& nextLook,
                                    int frameCount) noexcept VELOTRINE_NONBLOCKING
{
    keepPhases(ringClock.phases());
    ringsLeft.initialised = ringInitialised;
    ringsLeft.lastSpotIndex = lastSpotIndex;
    ringsLeft.lastRingPhase = lastRingPhase;
    for (std::size_t ring = 0; ring < ringCount; ++ring)
        ringsLeft.nextLook[ring] = nextLook[ring] - frameCount;
}

int VelotrineDSPKernel::lookAtRing(std::size_t ring, int frame) noexcept VELOTRINE_NONBLOCKING
{
    const auto hand = ringClock.handOn(ring);
    lfoOffsets[ring] = hand.wobble;
    if (ringClock.spotCount(ring) < 1)
        ringInitialised[ring] = false;
    else
        crossSpots(ring, hand.position, frame);
    return hand.quietFrames;
}

void VelotrineDSPKernel::crossSpots(std::size_t ring, double hand, int frame) noexcept VELOTRINE_NONBLOCKING
{
    const auto spotCount = ringClock.spotCount(ring);
    const bool passedTheStart = lastRingPhase[ring] > 0.5 && hand < 0.5;
    if (ringInitialised[ring] && passedTheStart)
        lastSpotIndex[ring] = -1;
    lastRingPhase[ring] = hand;

    const double spotPosition = hand * static_cast<double>(spotCount);
    if (!std::isfinite(spotPosition))
        fatalError("a ring's position is not finite");
    // The remainder by the number of spots, which rounding can make as large as that number; a division takes
    // longer than all the rest.
    const auto rounded = static_cast<std::int64_t>(spotPosition);
    const auto spot = std::abs(rounded) == spotCount ? 0 : rounded;

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
    const float probability = inputsInForce.parameters.probabilities[ring];
    return probability >= 1.0f || drawUnit(rngState) < probability;
}

void VelotrineDSPKernel::fireSpot(std::size_t ring, std::int64_t spot,
                                  int frame) noexcept VELOTRINE_NONBLOCKING
{
    // A spot can be beyond the display's 16, or, in bars shorter than any music, negative.
    if (spot >= 0 && spot < maxSpotsPerRing)
        spotFireTimes[ring * maxSpotsPerRing + static_cast<std::size_t>(spot)] = hostClockNow();

    const auto started = startNote(ring);
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
    readInputs();
    return drawNote(checked);
}

void VelotrineDSPKernel::triggerVoice(std::int64_t ring) noexcept VELOTRINE_NONBLOCKING
{
    const auto checked = checkedRing(ring);
    if (!voicePool)
        fatalError("triggerVoice: there are no voices before setup");
    readInputs();
    startNote(checked);
}

std::int64_t VelotrineDSPKernel::drawNote(std::size_t ring) noexcept VELOTRINE_NONBLOCKING
{
    const auto& parameters = inputsInForce.parameters;
    const auto lastScale = static_cast<std::int64_t>(scaleCount) - 1;
    lastPitchClass =
        drawPitchClass({.root = wholeNumber(parameters.rootNote) % semitonesPerOctave,
                        .scale = std::clamp(wholeNumber(parameters.scaleType), std::int64_t{0}, lastScale),
                        .lastPitchClass = lastPitchClass,
                        .boredom = parameters.boredom},
                       rngState);

    const auto octave = parameters.ringOctaves[ring];
    constexpr auto highestOctave = INT64_MAX / semitonesPerOctave - 1;
    if (octave > highestOctave || octave < -highestOctave)
        fatalError("nextNote: the octave is beyond 64 bits");
    return octave * semitonesPerOctave + lastPitchClass;
}

VelotrineDSPKernel::StartedNote VelotrineDSPKernel::startNote(std::size_t ring) noexcept VELOTRINE_NONBLOCKING
{
    const auto& parameters = inputsInForce.parameters;
    const auto note = drawNote(ring);
    const float ringVolume = parameters.ringVolumes[ring];
    const auto timbre = timbreParameters(parameters.ringTimbres[ring]);
    const float gain = ringVolume * ringVolume;
    // The order of min and max makes NaN the lower bound.
    const float feedback = std::min(1.0f, std::max(0.0f, parameters.drudgery * feedbackPerDrudgery));

    voicePool->allocate().start({.ring = static_cast<std::int64_t>(ring),
                                 .frequency = frequencyOf(note),
                                 .modRatio = timbre.modRatio,
                                 .modIndex = timbre.modIndex,
                                 .decaySeconds = timbre.decaySeconds,
                                 .gain = gain,
                                 .feedback = feedback});
    return {.note = note, .gain = gain, .decaySeconds = timbre.decaySeconds};
}

} // namespace velotrine
