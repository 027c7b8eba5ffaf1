#pragma once

#include "engine/ClockPhases.h"
#include "engine/Nonblocking.h"
#include "engine/RingCount.h"
#include "engine/RingHands.h"

#include <cstddef>
#include <cstdint>

namespace velotrine {

/// Turns the bar clock and the rings, frame by frame, and says where the hand stands on each ring and for how
/// long nothing can happen there. Render thread only.
class RingClock
{
public:
    /// What sets the speeds.
    struct Settings
    {
        double quartersPerMinute;
        double quartersPerBar;
        double sampleRate;                ///< Hz
        double activity;                  ///< how fast the rings rotate, and how far apart their speeds are
        double calories;                  ///< depth of the wobble
        PerRing<double> phaseOffsets;     ///< turns; at least 0.001 is used
        PerRing<std::int64_t> spotCounts; ///< a ring with fewer than one has no spots

        bool operator==(const Settings&) const = default;
    };

    struct Phases
    {
        double bar;                ///< turns
        PerRing<double> wobbles;   ///< cycles
        PerRing<double> rotations; ///< turns

        bool operator==(const Phases&) const = default;
    };

    struct Hand
    {
        double wobble;   ///< of the ring, turns
        double position; ///< turns from the ring's start, in [0, 1) for all music
        int quietFrames; ///< frames after this one in which the hand reaches no spot and not the half turn
    };

    /// Begins at these phases. The settings hold until the next start.
    void start(const Settings& settings, const Phases& from) noexcept VELOTRINE_NONBLOCKING;

    /// @param frames  1 or more
    void advance(int frames) noexcept VELOTRINE_NONBLOCKING;

    [[nodiscard]] Phases phases() const noexcept VELOTRINE_NONBLOCKING;

    /// The hand as of the frame to which advance() has come.
    /// @param ring  0 to 4
    [[nodiscard]] Hand handOn(std::size_t ring) const noexcept VELOTRINE_NONBLOCKING;

    [[nodiscard]] std::int64_t spotCount(std::size_t ring) const noexcept VELOTRINE_NONBLOCKING
    {
        return spotCounts[ring];
    }

private:
    void setSpeeds(const Settings& settings) noexcept VELOTRINE_NONBLOCKING;
    void placeSpots(const Settings& settings) noexcept VELOTRINE_NONBLOCKING;
    void boundHandSpeed() noexcept VELOTRINE_NONBLOCKING;

    ClockPhases moving;
    RingHands hands; ///< as of the frame reached; valid while the motion is steady
    PerRing<std::int64_t> spotCounts{};
    bool isSteady = false; ///< the bounds of the hand's speed hold, and no phase leaves its turn
};

} // namespace velotrine
