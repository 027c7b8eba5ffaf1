#pragma once

#include "engine/ClockPhases.h"
#include "engine/HostClock.h"
#include "engine/Nonblocking.h"
#include "engine/NoteEvent.h"
#include "engine/NoteGenerator.h"
#include "engine/ParameterAddress.h"
#include "engine/RingCount.h"
#include "engine/RingHands.h"
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
/// cycle. All else belongs to whoever renders. setup() is called while nothing renders.
///
/// Values are kept as they are written; each reader bounds what it reads. A parameter that is not finite
/// where a whole number or a position on a ring comes of it is a fatal error, and the callers' edges keep
/// such values out.
class VelotrineDSPKernel
{
public:
    template <typename T>
    using PerRing = std::array<T, ringCount>;

    VelotrineDSPKernel() = default;
    VelotrineDSPKernel(const VelotrineDSPKernel&) = delete;
    VelotrineDSPKernel& operator=(const VelotrineDSPKernel&) = delete;

    // Global parameters

    Shared<float> activity{
        0.5f}; ///< 0..1: how fast the rings rotate, and above 0.5 how far apart their speeds are
    Shared<float> boredom{0.5f};   ///< 0..1: from learned to chromatic note choice; NaN counts as 0
    Shared<float> calories{0.5f};  ///< 0..1: depth of the rings' wobble
    Shared<float> drudgery{0.5f};  ///< 0..1: feedback of the voices' modulators; NaN counts as 0
    Shared<float> rootNote{0.0f};  ///< 0..11, 0 is C
    Shared<float> scaleType{0.0f}; ///< 0..3, bounded to it
    Shared<float> bpm{
        120.0f}; ///< internal tempo, quarter notes a minute, bounded to 40..300; NaN counts as 300
    Shared<float> volume{0.8f}; ///< 0..1, before the soft clip
    Shared<bool> sync{true};    ///< follow the host's tempo and transport rather than the internal clock

    // Ring parameters

    PerRing<Shared<std::int64_t>> spotCounts{4, 5, 6, 7, 8}; ///< 0..16, evenly spaced
    PerRing<Shared<float>> phaseOffsets{0, 0, 0, 0, 0};      ///< turns, 0..1; at least 0.001 is used
    PerRing<Shared<float>> probabilities{0.75f, 0.75f, 0.75f, 0.75f, 0.75f}; ///< that a crossed spot fires
    PerRing<Shared<std::int64_t>> ringOctaves{1, 2, 3, 4, 5}; ///< MIDI note = 12 x octave + pitch class
    PerRing<Shared<float>> ringVolumes{0.7f, 0.7f, 0.7f, 0.7f, 0.7f}; ///< 0..1, squared for the gain
    PerRing<Shared<float>> ringTimbres{0.5f, 0.5f, 0.5f, 0.5f, 0.5f}; ///< 0..1, see timbreParameters

    // What the display reads

    std::array<Shared<std::uint64_t>, std::size_t{ringCount} * maxSpotsPerRing>
        spotFireTimes{};                      ///< host clock ticks, ring by ring; 0 is never
    Shared<double> clockPhaseBuf{0.0};        ///< bar phase, turns; exactly 0 while stopped
    PerRing<Shared<double>> activityPhases{}; ///< rotation of each ring, turns
    PerRing<Shared<double>> lfoOffsets{};     ///< wobble of each ring, turns

    // The host's tempo and transport, as of the current render cycle

    double hostTempo = 0.0;       ///< quarter notes a minute
    double hostBeatsPerBar = 0.0; ///< numerator of the time signature
    double hostBeatUnit = 0.0;    ///< its denominator
    bool hostPlaying = false;

    Shared<bool> internalPlaying{false}; ///< the internal clock runs: the play button

    // What setup() makes

    double sampleRate = 44100.0;          ///< Hz
    std::unique_ptr<VoicePool> voicePool; ///< none before the first setup
    std::vector<float> scratchBuf;        ///< mono mix of the last call, maxFrames long
    std::int64_t maxFrames = 512;         ///< longest render cycle

    // Clock, rings and note chain

    double clockPhase = 0.0;     ///< turns; one turn is a bar
    PerRing<double> lfoPhases{}; ///< wobble oscillators, cycles
    PerRing<std::int64_t>
        lastSpotIndex{};              ///< spot last crossed; -1 lets the next crossing count whatever it is
    PerRing<bool> ringInitialised{};  ///< the ring knows where it is: seen once since the start, or since it
                                      ///< had no spots
    PerRing<double> lastRingPhase{};  ///< where the hand stood on the ring one frame ago, turns
    std::int64_t lastPitchClass = -1; ///< of the last note, 0..11; -1 is none yet
    bool hostPlayingLast = false;     ///< as of the previous process call
    bool internalPlayingLast = false; ///< likewise
    std::uint64_t rngState = 12345;   ///< one generator for firing and for notes

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

    /// Renders the next frames: moves the clock and the rings on, starts the notes that fire, and writes the
    /// mix of all voices, soft-clipped, to both channels. Notes start at the first frame of the call in which
    /// they fire. Needs setup() and at most maxFrames frames; does nothing for fewer than one.
    void process(float* left, float* right, int frameCount) noexcept VELOTRINE_NONBLOCKING;

    /// Whether process() would do nothing but clear its output, until a parameter, internalPlaying or the
    /// host's transport changes. Render thread.
    [[nodiscard]] bool isAtRest() const noexcept VELOTRINE_NONBLOCKING;

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

    /// What other threads may change at any moment, as one process call sees it.
    struct Transport
    {
        bool followsHost;
        bool internalPlaying;
    };

    /// The tempo and metre in force while the clock runs.
    struct Tempo
    {
        double quartersPerMinute;
        double quartersPerBar;
    };

    /// How one ring moves and what is on it, constant for one process call.
    struct RingMotion
    {
        std::size_t ring;
        double direction;    ///< +1 or -1
        double rotationStep; ///< turns per frame
        double wobbleStep;   ///< cycles per frame
        double phaseOffset;  ///< turns
        std::int64_t spotCount;
    };

    /// How the clock and all rings move, constant for one process call.
    struct Motion
    {
        double barStep;         ///< bars per frame
        double wobbleAmplitude; ///< turns
        PerRing<RingMotion> rings;
        double framesPerTurnAhead; ///< the hand takes at least so long for a turn on any ring
        double framesPerTurnBack;  ///< and so long for one the other way round
        bool isSteady;             ///< these two bounds hold, and no phase leaves its turn
    };

    struct StartedNote
    {
        std::int64_t note;
        float gain;
        float decaySeconds;
    };

    template <typename Kernel, typename Visitor>
    static void visitField(Kernel& kernel, ParameterAddress address, Visitor&& visitor) noexcept;

    void noticeTransportEdges(const Transport& transport) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] std::optional<Tempo> currentTempo(const Transport& transport) const noexcept
        VELOTRINE_NONBLOCKING;
    [[nodiscard]] Motion motionAt(const Tempo& tempo) const noexcept VELOTRINE_NONBLOCKING;
    static void boundHandSpeed(Motion& motion) noexcept VELOTRINE_NONBLOCKING;
    void runClock(const Tempo& tempo, int frameCount) noexcept VELOTRINE_NONBLOCKING;
    void loadPhases(const Motion& motion) noexcept VELOTRINE_NONBLOCKING;
    void storePhases() noexcept VELOTRINE_NONBLOCKING;
    void loadHands(const Motion& motion) noexcept VELOTRINE_NONBLOCKING;
    /// Returns for how many frames after this one nothing can happen on the ring.
    int lookAtRing(const Motion& motion, const RingMotion& ring, int frame) noexcept VELOTRINE_NONBLOCKING;
    void moveHandTo(const RingMotion& ring, double wobble, double hand,
                    int frame) noexcept VELOTRINE_NONBLOCKING;
    void crossSpots(const RingMotion& ring, double hand, int frame) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool drawsFire(std::size_t ring) noexcept VELOTRINE_NONBLOCKING;
    void fireSpot(std::size_t ring, std::int64_t spot, int frame) noexcept VELOTRINE_NONBLOCKING;
    StartedNote startNote(std::int64_t ring) noexcept VELOTRINE_NONBLOCKING;

    ClockPhases phases; ///< working copy of clock and rings during a process call
    RingHands hands;    ///< likewise, as of the frame looked at last; valid while the motion is steady
    std::array<NoteEvent, maxNoteEvents> firedNotes{};
    std::size_t firedNoteCount = 0;
};

} // namespace velotrine
