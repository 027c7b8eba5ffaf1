#include "engine/RingClock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace velotrine {

namespace {

constexpr double twoPi = 6.283185307179586;
constexpr double secondsPerMinute = 60.0;

/// Neighbouring rings turn against each other.
constexpr PerRing<double> ringDirections{1.0, -1.0, 1.0, -1.0, 1.0};

/// How far a ring stays behind the outermost one at full spread: 1 - 0.9^(4 - ring).
constexpr PerRing<double> ringSpreads{0.3439, 0.271, 0.19, 0.1, 0.0};

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

/// The part of a turn behind the point, exactly: std::fmod(turns, 1.0), which a processor does not do itself.
double fractionOf(double turns) noexcept
{
    constexpr double allWhole = 4503599627370496.0; // 2^52
    if (!(std::abs(turns) < allWhole))
        return std::fmod(turns, 1.0);
    return turns - static_cast<double>(static_cast<std::int64_t>(turns));
}

} // namespace

void RingClock::start(const Settings& settings, const Phases& from) noexcept VELOTRINE_NONBLOCKING
{
    moving.rising[ClockPhases::barClock] = from.bar;
    std::ranges::copy(from.wobbles, moving.rising.begin());
    std::ranges::copy(from.rotations, moving.turning.begin());
    setSpeeds(settings);
    placeSpots(settings);
    boundHandSpeed();
    isSteady = isSteady && moving.areWithinTurn();
}

void RingClock::setSpeeds(const Settings& settings) noexcept VELOTRINE_NONBLOCKING
{
    const double quartersPerBar = settings.quartersPerBar;
    const double quartersPerFrame = settings.quartersPerMinute / (settings.sampleRate * secondsPerMinute);
    const double quartersPerWobbleCycle = quartersPerBar * barsPerWobbleCycle;
    const double spread = 2.0 * std::max(settings.activity - activityWithoutSpread, 0.0);

    const double barStep =
        settings.quartersPerMinute / (quartersPerBar * secondsPerMinute * settings.sampleRate);
    const double rotationStep = barStep / quartersPerBar * settings.activity * rotationDepth;
    const double wobbleAmplitude = (settings.calories * wobbleDepth) / (quartersPerBar * quartersPerBar);

    moving.risingSteps[ClockPhases::barClock] = barStep;
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        moving.turningSteps[ring] = rotationStep * ringDirections[ring] * (1.0 - spread * ringSpreads[ring]);
        // Ring 4 wobbles once a quarter note; each ring inside it makes one cycle less in eight bars.
        const auto missingCycles = static_cast<double>(ringCount - 1 - ring);
        moving.risingSteps[ring] =
            quartersPerFrame * (quartersPerWobbleCycle - missingCycles) / quartersPerWobbleCycle;
        hands.wobbleDepths[ring] = wobbleAmplitude * ringDirections[ring];
    }
}

void RingClock::placeSpots(const Settings& settings) noexcept VELOTRINE_NONBLOCKING
{
    spotCounts = settings.spotCounts;
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        const auto spots = static_cast<double>(spotCounts[ring]);
        hands.phaseOffsets[ring] = std::max(settings.phaseOffsets[ring], minPhaseOffset);
        hands.spotCounts[ring] = spots;
        hands.spotSpacings[ring] = 1.0 / spots;
    }
}

void RingClock::boundHandSpeed() noexcept VELOTRINE_NONBLOCKING
{
    const double barStep = moving.risingSteps[ClockPhases::barClock];
    double fastestAhead = 0.0;
    double fastestBack = 0.0;
    isSteady = barStep < 1.0;
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        const double rotationStep = moving.turningSteps[ring];
        const double wobbleStep = moving.risingSteps[ring];
        const double drift = barStep - rotationStep;
        // A sine never moves faster than its argument.
        const double fastestWobble = std::abs(hands.wobbleDepths[ring] * twoPi * wobbleStep);
        fastestAhead = std::max(fastestAhead, drift + fastestWobble);
        fastestBack = std::max(fastestBack, fastestWobble - drift);
        // Beyond it, the sum that makes the position can fall below 0, and the position jumps by a turn.
        constexpr double roomBelowZero = RingHands::spareTurns - 1.1;
        isSteady = isSteady && std::abs(rotationStep) < 1.0 && wobbleStep >= 0.0 && wobbleStep < 1.0 &&
                   hands.phaseOffsets[ring] + std::abs(hands.wobbleDepths[ring]) < roomBelowZero;
    }
    hands.leastFramesPerTurnAhead = 1.0 / fastestAhead;
    hands.leastFramesPerTurnBack = 1.0 / fastestBack;
}

void RingClock::advance(int frames) noexcept VELOTRINE_NONBLOCKING
{
    moving.advance(frames);
    if (isSteady)
        hands.find(moving);
}

RingClock::Phases RingClock::phases() const noexcept VELOTRINE_NONBLOCKING
{
    Phases phases{.bar = moving.rising[ClockPhases::barClock], .wobbles = {}, .rotations = {}};
    std::copy_n(moving.rising.begin(), ringCount, phases.wobbles.begin());
    std::copy_n(moving.turning.begin(), ringCount, phases.rotations.begin());
    return phases;
}

// What happens on a ring in a frame follows from the hand's position alone: past which spot it is, and
// whether past the half turn. So the last bits of the wobble's sine, and with them which way the hand goes
// and where it turns round, decide only within the margin of one of these. Anywhere else the vectors'
// position gives the same crossings.
RingClock::Hand RingClock::handOn(std::size_t ring) const noexcept VELOTRINE_NONBLOCKING
{
    constexpr int whileSilent = std::numeric_limits<int>::max();
    constexpr double forLong = 1.0e6;
    const bool hasSpots = spotCounts[ring] >= 1;
    if (isSteady && (!hasSpots || hands.distances[ring] > RingHands::decisionMargin)) {
        const int quietFrames =
            hasSpots ? static_cast<int>(std::min(hands.quietFrames[ring], forLong)) : whileSilent;
        return {.wobble = hands.wobbles[ring], .position = hands.positions[ring], .quietFrames = quietFrames};
    }

    // The library's sine, good to the last bit but one.
    const double wobble = hands.wobbleDepths[ring] * std::sin(twoPi * moving.rising[ring]);
    const double position = fractionOf(moving.rising[ClockPhases::barClock] - hands.phaseOffsets[ring] -
                                       moving.turning[ring] - wobble + RingHands::spareTurns);
    return {.wobble = wobble, .position = position, .quietFrames = hasSpots ? 0 : whileSilent};
}

} // namespace velotrine
