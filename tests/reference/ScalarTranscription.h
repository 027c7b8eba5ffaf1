#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace velotrine::reference {

/// A note as it was fired.
struct FiredNote
{
    int frame; ///< of the crossing, counted from the start of the process call
    int ring;  ///< 0 to 4
    int spot;
    int note; ///< MIDI note number
    float gain;
    float decaySeconds;
};

/// One sine carrier, phase-modulated by one sine modulator that feeds back on itself.
struct ScalarVoice
{
    bool active = false;
    std::int64_t ring = 0;
    double carrierPhase = 0.0; ///< cycles
    double modPhase = 0.0;     ///< cycles
    float amplitude = 0.0f;
    double sampleRate = 44100.0; ///< Hz
    double carrierFreq = 440.0;  ///< Hz
    double modRatio = 2.0;
    float modIndex = 3.0f; ///< radians
    float decayRate = 0.9997f;
    float modDecayRate = 0.9995f;
    float feedback = 0.0f;
    float gain = 1.0f;
    float currentModIndex = 0.0f; ///< radians
    float lastMod1 = 0.0f;
    float lastMod2 = 0.0f;

    /// Adds the next samples to the buffer.
    void render(float* buffer, int frames);
};

/// The whole instrument in plain scalar arithmetic: every phase of every ring worked out in every frame,
/// every voice sample by sample with the library's sine. The engine must play the same notes and, within
/// rounding, the same samples; how much faster it does so is measured against this too. One thread only.
struct ScalarTranscription
{
    static constexpr std::size_t rings = 5;
    static constexpr std::size_t voiceCount = 16;

    template <typename T>
    using PerRing = std::array<T, rings>;

    // Parameters
    float activity = 0.5f;
    float boredom = 0.5f;
    float calories = 0.5f;
    float drudgery = 0.5f;
    float rootNote = 0.0f;
    float scaleType = 0.0f;
    float bpm = 120.0f;
    float volume = 0.8f;
    bool sync = true;
    PerRing<std::int64_t> spotCounts{4, 5, 6, 7, 8};
    PerRing<float> phaseOffsets{}; ///< turns
    PerRing<float> probabilities{0.75f, 0.75f, 0.75f, 0.75f, 0.75f};
    PerRing<std::int64_t> ringOctaves{1, 2, 3, 4, 5};
    PerRing<float> ringVolumes{0.7f, 0.7f, 0.7f, 0.7f, 0.7f};
    PerRing<float> ringTimbres{0.5f, 0.5f, 0.5f, 0.5f, 0.5f};

    // Transport
    double hostTempo = 0.0; ///< quarter notes a minute
    double hostBeatsPerBar = 0.0;
    double hostBeatUnit = 0.0;
    bool hostPlaying = false;
    bool internalPlaying = false;
    bool hostPlayingLast = false;
    bool internalPlayingLast = false;

    // Clock, rings and note chain; phases in turns
    double clockPhaseBuf = 0.0;
    PerRing<double> activityPhases{};
    PerRing<double> lfoOffsets{};
    double clockPhase = 0.0;
    PerRing<double> lfoPhases{};
    PerRing<std::int64_t> lastSpotIndex{};
    PerRing<bool> ringInitialised{};
    PerRing<double> lastRingPhase{};
    std::int64_t lastPitchClass = -1;
    std::uint64_t rngState = 12345;

    // Sound
    double sampleRate = 44100.0; ///< Hz
    std::int64_t maxFrames = 512;
    std::vector<float> scratchBuf;
    std::vector<ScalarVoice> voices;
    std::vector<int> triggerOrder; ///< indices of the sounding voices, oldest note first

    std::vector<FiredNote> firedNotes; ///< of the last process call, in firing order

    /// @param address  0 to 8 the global parameters, 9 to 38 six groups of five rings; others are ignored
    void setParameter(std::uint64_t address, float value);

    void setup(std::int64_t newMaxFrames, double newSampleRate);
    void reset();
    void process(float* left, float* right, int frameCount);

private:
    struct Tempo
    {
        bool runs;
        double quartersPerMinute;
        double quartersPerBar;
    };

    void noticeTransportEdges();
    [[nodiscard]] Tempo currentTempo() const;
    void runClock(const Tempo& tempo, int frameCount);
    void crossSpots(std::size_t ring, double local, int frame);
    [[nodiscard]] float drawUnit();
    [[nodiscard]] bool drawsFire(std::size_t ring);
    [[nodiscard]] std::int64_t nextNote(std::size_t ring);
    void fire(std::size_t ring, std::int64_t spot, int frame);
    [[nodiscard]] std::size_t chooseVoice();
};

} // namespace velotrine::reference
