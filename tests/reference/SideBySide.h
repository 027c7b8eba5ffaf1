#pragma once

#include "engine/ParameterAddress.h"
#include "engine/SimdTarget.h"
#include "engine/VelotrineDSPKernel.h"
#include "tests/reference/ScalarTranscription.h"
#include "tests/support/SimdTargetGuard.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace velotrine {

/// Random numbers that are the same with every standard library.
class Dice
{
public:
    explicit Dice(std::uint32_t seed) : generator(seed) {}

    /// In [low, high).
    [[nodiscard]] double between(double low, double high)
    {
        constexpr double values = 4294967296.0;
        return low + (high - low) * (static_cast<double>(generator()) / values);
    }

    /// In [0, count).
    [[nodiscard]] std::size_t below(std::size_t count) { return generator() % count; }

    [[nodiscard]] bool oneIn(std::size_t count) { return below(count) == 0; }

private:
    std::mt19937 generator;
};

/// The scalar transcription and one engine for each instruction set of this machine, all playing the same.
class SideBySide
{
public:
    SideBySide(int maxFrames, double sampleRate);

    void set(ParameterAddress address, float value);

    void set(GlobalParameter parameter, float value) { set(addressOf(parameter), value); }

    void setAllRings(RingParameter parameter, float value);
    void setInternalPlaying(bool playing);
    void setHostPlaying(bool playing);
    void setHostTempo(double quartersPerMinute, double beatsPerBar, double beatUnit);

    /// Renders the next frames everywhere and compares. Returns the first difference found, in words.
    [[nodiscard]] std::optional<std::string> process(int frames);

    [[nodiscard]] std::size_t notesFired() const { return noteCount; }

    [[nodiscard]] float peak() const { return loudest; }

    [[nodiscard]] double largestError() const { return worstSample; }

    /// The furthest that a sounding modulator has moved from one sample to the next, in turns.
    [[nodiscard]] double fastestModulator() const { return longestModStep; }

private:
    struct Player
    {
        SimdTarget target;
        std::unique_ptr<VelotrineDSPKernel> kernel;
    };

    [[nodiscard]] std::optional<std::string> compareNotes(const VelotrineDSPKernel& kernel) const;
    [[nodiscard]] std::optional<std::string> compareState(const VelotrineDSPKernel& kernel) const;
    [[nodiscard]] std::optional<std::string> compareSamples(int frames);

    reference::ScalarTranscription scalar;
    std::vector<Player> players;
    std::vector<float> scalarLeft;
    std::vector<float> scalarRight;
    std::vector<float> left;
    std::vector<float> right;
    std::int64_t framesBefore = 0;
    std::size_t noteCount = 0;
    float loudest = 0.0f;
    double worstSample = 0.0;
    double longestModStep = 0.0;
    SimdTargetGuard guard;
};

} // namespace velotrine
