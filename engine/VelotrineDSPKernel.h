#pragma once

#include "engine/HostClock.h"
#include "engine/Nonblocking.h"
#include "engine/NoteEvent.h"
#include "engine/NoteGenerator.h"
#include "engine/ParameterAddress.h"
#include "engine/ParameterFields.h"
#include "engine/RandomGenerator.h"
#include "engine/RingClock.h"
#include "engine/RingCount.h"
#include "engine/Shared.h"
#include "engine/Timbre.h"
#include "engine/VoicePool.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace velotrine {

/// The whole instrument: five turning rings of spots, a hand that sweeps them once a bar, and the voices that
/// sound when it crosses a spot.
///
/// Threads: what is Shared may be read and written by anyone at any time, and takes effect within a render
/// cycle: each process call reads each parameter once, at its beginning. All else belongs to whoever renders.
/// setup() is called while nothing renders.
///
/// Values are kept as they are written; each reader bounds what it reads. A parameter that is not finite is
/// fatal where it makes a whole number or a position on a ring; callers keep such values out at their edges.
class VelotrineDSPKernel : public ParameterFields<Shared>
{
public:
    /// Where the piece is: what setup() and reset() put back to the start.
    struct Position
    {
        double clockPhase;
        PerRing<double> activityPhases;
        PerRing<double> lfoOffsets;
        PerRing<double> lfoPhases;
        PerRing<std::int64_t> lastSpotIndex;
        PerRing<bool> ringInitialised;
        PerRing<double> lastRingPhase;
        std::int64_t lastPitchClass;
        bool hostPlayingLast;
        bool internalPlayingLast;
    };

    /// What other threads may change at any moment, as one process call sees it.
    struct Inputs
    {
        ParameterSnapshot parameters;
        bool internalPlaying = false;
        std::uint32_t seed = defaultSeed;
        bool sameMusicAtEveryStart = false;
    };

    /// A tempo and a metre.
    struct Tempo
    {
        double quartersPerMinute;
        double quartersPerBar;
    };

    VelotrineDSPKernel() = default;
    VelotrineDSPKernel(const VelotrineDSPKernel&) = delete;
    VelotrineDSPKernel& operator=(const VelotrineDSPKernel&) = delete;

    // What the display reads

    /// Host clock ticks, ring by ring; 0 is never
    std::array<Shared<std::uint64_t>, std::size_t{ringCount} * maxSpotsPerRing> spotFireTimes{};
    Shared<double> clockPhaseBuf{0.0};        ///< bar phase, turns; exactly 0 while stopped
    PerRing<Shared<double>> activityPhases{}; ///< rotation of each ring, turns
    PerRing<Shared<double>> lfoOffsets{};     ///< wobble of each ring, turns

    // The host's tempo and transport, as of the current render cycle

    double hostTempo = 0.0;       ///< quarter notes a minute
    double hostBeatsPerBar = 0.0; ///< numerator of the time signature
    double hostBeatUnit = 0.0;    ///< its denominator
    bool hostPlaying = false;

    Shared<bool> internalPlaying{false}; ///< the internal clock runs: the play button

    // The dice

    /// Any number. A new one is thrown, that is, begins the generator anew, in the next process call.
    Shared<std::uint32_t> seed{defaultSeed};
    Shared<bool> sameMusicAtEveryStart{false}; ///< every start of the transport throws the seed again

    // What setup() makes

    double sampleRate = 44100.0;          ///< Hz
    std::unique_ptr<VoicePool> voicePool; ///< none before the first setup
    std::vector<float> scratchBuf;        ///< mono mix of the last call, maxFrames long
    std::int64_t maxFrames = 512;         ///< longest render cycle

    // Clock, rings and note chain

    double clockPhase = 0.0;     ///< turns; one turn is a bar
    PerRing<double> lfoPhases{}; ///< wobble oscillators, cycles
    /// Spot last crossed; -1 lets the next crossing count whatever it is
    PerRing<std::int64_t> lastSpotIndex{};
    /// The ring knows where it is: seen once since the start, or since it had no spots
    PerRing<bool> ringInitialised{};
    PerRing<double> lastRingPhase{};  ///< where the hand stood on the ring one frame ago, turns
    std::int64_t lastPitchClass = -1; ///< of the last note, 0..11; -1 before the first
    bool hostPlayingLast = false;     ///< as of the previous process call
    bool internalPlayingLast = false; ///< likewise
    std::uint64_t rngState = generatorState(defaultSeed); ///< one generator for firing and for notes
    std::uint32_t thrownSeed = defaultSeed;               ///< as of the previous process call

    int droppedNoteEvents = 0; ///< notes of the last process call for which noteEvents() had no room

    /// Stores a parameter under its address: 0 to 38, others are ignored. Counts and octaves are cut to whole
    /// numbers (fatal if not finite or beyond 64 bits), sync is on above 0.5. Any thread.
    void setParameter(ParameterAddress address, float value) noexcept VELOTRINE_NONBLOCKING;

    /// The value stored under an address; 0 for an address beyond 38. Any thread.
    [[nodiscard]] float parameter(ParameterAddress address) const noexcept VELOTRINE_NONBLOCKING;

    /// Prepares for rendering: a new pool of silent voices, the clock at 0. Allocates; where that throws, all
    /// stays as it was.
    /// @param newMaxFrames   longest render cycle to come; negative is a fatal error
    /// @param newSampleRate  Hz
    void setup(std::int64_t newMaxFrames, double newSampleRate);

    /// Puts clock, rings and note chain back to the start. Parameters, random state and sounding notes stay.
    void reset() noexcept VELOTRINE_NONBLOCKING;

    /// For carrying the piece over a new setup(). Not while rendering.
    [[nodiscard]] Position position() const noexcept VELOTRINE_NONBLOCKING;

    /// Goes on from a position, as if nothing had been set up since. Not while rendering.
    void restore(const Position& position) noexcept VELOTRINE_NONBLOCKING;

    /// Renders the next frames: moves the clock and the rings on, starts the notes that fire, and writes the
    /// mix of all voices, soft-clipped, to both channels. Notes start at the first frame of the call in which
    /// they fire. Needs setup() and at most maxFrames frames; does nothing for fewer than one.
    void process(float* left, float* right, int frameCount) noexcept VELOTRINE_NONBLOCKING;

    /// Whether process() would do nothing but clear its output, until a parameter, internalPlaying or the
    /// host's transport changes. Render thread.
    [[nodiscard]] bool isAtRest() const noexcept VELOTRINE_NONBLOCKING;

    /// By which the clock goes, or would go if it ran; none while it follows a host that has told no tempo.
    /// Render thread.
    [[nodiscard]] std::optional<Tempo> tempo() const noexcept VELOTRINE_NONBLOCKING
    {
        return tempoFor(sync, bpm);
    }

    /// What the last process call saw. Render thread.
    [[nodiscard]] const Inputs& inputs() const noexcept VELOTRINE_NONBLOCKING { return inputsInForce; }

    /// The notes fired in the last process call, in firing order, up to 256; see droppedNoteEvents.
    [[nodiscard]] std::span<const NoteEvent> noteEvents() const noexcept VELOTRINE_NONBLOCKING
    {
        return {firedNotes.data(), firedNoteCount};
    }

    /// Draws the next note of the chain for a ring. Returns its MIDI note number.
    /// @param ring  0 to 4; others are a fatal error
    [[nodiscard]] std::int64_t nextNote(std::int64_t ring) noexcept VELOTRINE_NONBLOCKING;

    /// Draws the next note for a ring and starts a voice on it, as a fired spot does.
    /// @param ring  0 to 4; others are a fatal error
    void triggerVoice(std::int64_t ring) noexcept VELOTRINE_NONBLOCKING;

private:
    static constexpr std::size_t maxNoteEvents = 256;

    struct StartedNote
    {
        std::int64_t note;
        float gain;
        float decaySeconds;
    };

    void readInputs() noexcept VELOTRINE_NONBLOCKING;
    void throwDice(std::uint32_t seed) noexcept VELOTRINE_NONBLOCKING;
    /// At a stop: clock, rotation and wobble back to 0.
    void putClockBack() noexcept VELOTRINE_NONBLOCKING;
    /// At a start: the rings find out where they are, and the note chain begins.
    void armAnew() noexcept VELOTRINE_NONBLOCKING;
    void noticeTransportEdges() noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool clockRuns() const noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] std::optional<Tempo> tempoFor(bool followsHost,
                                                float internalTempo) const noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] RingClock::Settings ringSettings(const Tempo& tempo) const noexcept VELOTRINE_NONBLOCKING;
    void runClock(const Tempo& tempo, int frameCount) noexcept VELOTRINE_NONBLOCKING;
    /// Returns in which frame to look at each ring.
    [[nodiscard]] PerRing<std::int64_t> startRings(const RingClock::Settings& settings) noexcept
        VELOTRINE_NONBLOCKING;
    void leaveRings(const PerRing<std::int64_t>& nextLook, int frameCount) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] RingClock::Phases ringPhases() const noexcept VELOTRINE_NONBLOCKING;
    void keepPhases(const RingClock::Phases& phases) noexcept VELOTRINE_NONBLOCKING;
    /// Returns for how many frames after this one nothing can happen on the ring.
    int lookAtRing(std::size_t ring, int frame) noexcept VELOTRINE_NONBLOCKING;
    void crossSpots(std::size_t ring, double hand, int frame) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool drawsFire(std::size_t ring) noexcept VELOTRINE_NONBLOCKING;
    void fireSpot(std::size_t ring, std::int64_t spot, int frame) noexcept VELOTRINE_NONBLOCKING;
    std::int64_t drawNote(std::size_t ring) noexcept VELOTRINE_NONBLOCKING;
    StartedNote startNote(std::size_t ring) noexcept VELOTRINE_NONBLOCKING;

    Inputs inputsInForce;

    /// How a call left the rings. While all is still so, ringClock goes on from there.
    struct RingsLeft
    {
        RingClock::Settings settings{};
        PerRing<bool> initialised{};
        PerRing<std::int64_t> lastSpotIndex{};
        PerRing<double> lastRingPhase{};
        PerRing<std::int64_t> nextLook{}; ///< frames from the next call's first one
    };

    RingClock ringClock; ///< as of the last frame
    RingsLeft ringsLeft;
    std::array<NoteEvent, maxNoteEvents> firedNotes{};
    std::size_t firedNoteCount = 0;
};

} // namespace velotrine
