#include "engine/VelotrineDSPKernel.h"

#include "engine/FatalError.h"
#include "engine/RandomGenerator.h"
#include "engine/SoftClip.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

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

/// The part of a turn behind the point, exactly: std::fmod(turns, 1.0), which a processor does not do itself.
double fractionOf(double turns) noexcept
{
    constexpr double allWhole = 4503599627370496.0; // 2^52
    if (!(std::abs(turns) < allWhole))
        return std::fmod(turns, 1.0);
    return turns - static_cast<double>(static_cast<std::int64_t>(turns));
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
    if (std::cmp_greater(frameCount, scratchBuf.size()))
        fatalError("process: more frames than setup was told of");

    const Transport transport{.followsHost = sync, .internalPlaying = internalPlaying};
    noticeTransportEdges(transport);
    if (const auto tempo = currentTempo(transport))
        runClock(*tempo, frameCount);

    std::fill_n(scratchBuf.begin(), frameCount, 0.0f);
    if (voicePool->isSilent()) {
        std::fill_n(left, frameCount, 0.0f);
        std::fill_n(right, frameCount, 0.0f);
    } else {
        voicePool->render(scratchBuf.data(), frameCount);
        softClip(scratchBuf.data(), volume, left, right, frameCount);
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

VelotrineDSPKernel::Motion VelotrineDSPKernel::motionAt(const Tempo& tempo) const noexcept
    VELOTRINE_NONBLOCKING
{
    const double quartersPerBar = tempo.quartersPerBar;
    const double quartersPerFrame = tempo.quartersPerMinute / (sampleRate * secondsPerMinute);
    const double quartersPerWobbleCycle = quartersPerBar * barsPerWobbleCycle;
    const auto active = static_cast<double>(activity.load());
    const double spread = 2.0 * std::max(active - activityWithoutSpread, 0.0);

    Motion motion{};
    motion.barStep = tempo.quartersPerMinute / (quartersPerBar * secondsPerMinute * sampleRate);
    motion.wobbleAmplitude =
        (static_cast<double>(calories.load()) * wobbleDepth) / (quartersPerBar * quartersPerBar);
    const double rotationStep = motion.barStep / quartersPerBar * active * rotationDepth;
    for (std::size_t r = 0; r < ringCount; ++r) {
        auto& ring = motion.rings[r];
        ring.ring = r;
        ring.direction = ringDirections[r];
        ring.rotationStep = rotationStep * ringDirections[r] * (1.0 - spread * ringSpreads[r]);
        // Ring 4 wobbles once a quarter note; each ring inside it makes one cycle less in eight bars.
        const auto missingCycles = static_cast<double>(ringCount - 1 - r);
        ring.wobbleStep =
            quartersPerFrame * (quartersPerWobbleCycle - missingCycles) / quartersPerWobbleCycle;
        ring.phaseOffset = std::max(static_cast<double>(phaseOffsets[r].load()), minPhaseOffset);
        ring.spotCount = spotCounts[r];
    }
    boundHandSpeed(motion);
    return motion;
}

void VelotrineDSPKernel::boundHandSpeed(Motion& motion) noexcept VELOTRINE_NONBLOCKING
{
    double fastestAhead = 0.0;
    double fastestBack = 0.0;
    motion.isSteady = motion.barStep < 1.0;
    for (const auto& ring : motion.rings) {
        const double drift = motion.barStep - ring.rotationStep;
        // A sine never moves faster than its argument.
        const double fastestWobble = std::abs(motion.wobbleAmplitude * twoPi * ring.wobbleStep);
        fastestAhead = std::max(fastestAhead, drift + fastestWobble);
        fastestBack = std::max(fastestBack, fastestWobble - drift);
        // Otherwise the hand's position can jump by a turn.
        constexpr double roomBelowZero = 1.9;
        motion.isSteady = motion.isSteady && std::abs(ring.rotationStep) < 1.0 && ring.wobbleStep >= 0.0 &&
                          ring.wobbleStep < 1.0 &&
                          ring.phaseOffset + std::abs(motion.wobbleAmplitude) < roomBelowZero;
    }
    motion.framesPerTurnAhead = 1.0 / fastestAhead;
    motion.framesPerTurnBack = 1.0 / fastestBack;
}

// The clock and the rings move frame by frame, but most of the time no hand can reach a spot for hundreds of
// frames. So each ring is looked at only when something may happen on it: on the first frame, because
// parameters may have changed, on the last, for the display, and in between when the hand may have come to a
// spot.
void VelotrineDSPKernel::runClock(const Tempo& tempo, int frameCount) noexcept VELOTRINE_NONBLOCKING
{
    auto motion = motionAt(tempo);
    loadPhases(motion);
    loadHands(motion);
    motion.isSteady = motion.isSteady && phases.areWithinTurn();
    PerRing<int> nextLook{};
    const int lastFrame = frameCount - 1;

    for (int frame = -1; frame < lastFrame;) {
        const int next = std::min(*std::ranges::min_element(nextLook), lastFrame);
        phases.advance(next - frame);
        frame = next;
        if (motion.isSteady)
            hands.find(phases);
        for (const auto& ring : motion.rings)
            if (nextLook[ring.ring] <= frame || frame == lastFrame)
                nextLook[ring.ring] =
                    frame + 1 + std::min(lookAtRing(motion, ring, frame), lastFrame - frame);
    }
    storePhases();
}

void VelotrineDSPKernel::loadPhases(const Motion& motion) noexcept VELOTRINE_NONBLOCKING
{
    for (const auto& ring : motion.rings) {
        phases.rising[ring.ring] = lfoPhases[ring.ring];
        phases.risingSteps[ring.ring] = ring.wobbleStep;
        phases.turning[ring.ring] = activityPhases[ring.ring];
        phases.turningSteps[ring.ring] = ring.rotationStep;
    }
    phases.rising[ClockPhases::barClock] = clockPhase;
    phases.risingSteps[ClockPhases::barClock] = motion.barStep;
}

void VelotrineDSPKernel::storePhases() noexcept VELOTRINE_NONBLOCKING
{
    clockPhase = phases.rising[ClockPhases::barClock];
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        lfoPhases[ring] = phases.rising[ring];
        activityPhases[ring] = phases.turning[ring];
    }
}

void VelotrineDSPKernel::loadHands(const Motion& motion) noexcept VELOTRINE_NONBLOCKING
{
    for (const auto& ring : motion.rings) {
        const auto spots = static_cast<double>(ring.spotCount);
        hands.wobbleDepths[ring.ring] = motion.wobbleAmplitude * ring.direction;
        hands.phaseOffsets[ring.ring] = ring.phaseOffset;
        hands.spotCounts[ring.ring] = spots;
        hands.spotSpacings[ring.ring] = 1.0 / spots;
    }
    hands.framesPerTurnAhead = motion.framesPerTurnAhead;
    hands.framesPerTurnBack = motion.framesPerTurnBack;
}

// What happens on a ring in a frame follows from the hand's position alone: past which spot it is, and
// whether past the half turn. So the last bits of the wobble's sine, and with them which way the hand goes
// and where it turns round, decide only within the margin of one of these. Anywhere else the vectors'
// position gives the same crossings.
int VelotrineDSPKernel::lookAtRing(const Motion& motion, const RingMotion& ring,
                                   int frame) noexcept VELOTRINE_NONBLOCKING
{
    constexpr int whileSilent = std::numeric_limits<int>::max();
    constexpr double forLong = 1.0e6;
    const auto r = ring.ring;
    const bool hasSpots = ring.spotCount >= 1;
    if (motion.isSteady && (!hasSpots || hands.distances[r] > RingHands::decisionMargin)) {
        moveHandTo(ring, hands.wobbles[r], hands.positions[r], frame);
        return hasSpots ? static_cast<int>(std::min(hands.quietFrames[r], forLong)) : whileSilent;
    }

    // The library's sine, good to the last bit but one.
    const double wobble = hands.wobbleDepths[r] * std::sin(twoPi * phases.rising[r]);
    // Three turns more than needed keep the argument positive.
    const double hand = fractionOf(phases.rising[ClockPhases::barClock] - ring.phaseOffset -
                                   phases.turning[r] - wobble + 3.0);
    moveHandTo(ring, wobble, hand, frame);
    return hasSpots ? 0 : whileSilent;
}

void VelotrineDSPKernel::moveHandTo(const RingMotion& ring, double wobble, double hand,
                                    int frame) noexcept VELOTRINE_NONBLOCKING
{
    lfoOffsets[ring.ring] = wobble;
    if (ring.spotCount < 1)
        ringInitialised[ring.ring] = false;
    else
        crossSpots(ring, hand, frame);
}

void VelotrineDSPKernel::crossSpots(const RingMotion& ring, double hand,
                                    int frame) noexcept VELOTRINE_NONBLOCKING
{
    const auto r = ring.ring;
    const bool passedTheStart = lastRingPhase[r] > 0.5 && hand < 0.5;
    if (ringInitialised[r] && passedTheStart)
        lastSpotIndex[r] = -1;
    lastRingPhase[r] = hand;

    const double spotPosition = hand * static_cast<double>(ring.spotCount);
    if (!std::isfinite(spotPosition))
        fatalError("a ring's position is not finite");
    // The remainder by the number of spots, which rounding can make as large as that number; a division takes
    // longer than all the rest.
    const auto rounded = static_cast<std::int64_t>(spotPosition);
    const auto spot = std::abs(rounded) == ring.spotCount ? 0 : rounded;

    if (!ringInitialised[r]) {
        ringInitialised[r] = true;
        lastSpotIndex[r] = spot;
    } else if (spot != lastSpotIndex[r]) {
        lastSpotIndex[r] = spot;
        if (drawsFire(r))
            fireSpot(r, spot, frame);
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

} // namespace velotrine
