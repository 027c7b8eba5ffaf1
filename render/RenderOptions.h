#pragma once

#include "engine/ParameterAddress.h"
#include "render/AudioFileWriter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

/// What was typed after "velotrine render", option by option; empty where nothing was.
struct RenderArguments
{
    std::string preset;
    std::string state;
    std::vector<std::string> settings;
    std::string bars;
    std::string seconds;
    std::string tempo;
    std::string sampleRate;
    std::string block;
    std::string tail;
    std::string format;
    std::string midi;
    std::string saveState;
    std::string out;
    bool quiet = false;
};

/// The same, understood and checked.
struct RenderOptions
{
    enum class Tail
    {
        untilSilent,
        none,
        fixed,
    };

    std::optional<std::int64_t> presetNumber;
    std::string statePath;                                    ///< empty for none
    std::vector<std::pair<ParameterAddress, float>> settings; ///< within their ranges, in the order typed
    std::optional<float> tempo; ///< quarter notes a minute, minTempo to maxTempo
    double bars = 16.0;         ///< counts unless seconds are given
    std::optional<double> seconds;
    int sampleRate = 48000; ///< Hz
    int blockFrames = 32;
    Tail tail = Tail::untilSilent;
    double tailSeconds = 0.0; ///< of a fixed tail
    AudioContainer container = AudioContainer::wav;
    SampleFormat format = SampleFormat::s24;
    std::string midiPath;      ///< empty for none
    std::string saveStatePath; ///< empty for none
    std::string outPath;       ///< "-" is standard output
    bool quiet = false;
};

/// The longest sound that one rendering makes, in seconds: a day.
inline constexpr double maxRenderSeconds = 24.0 * 60.0 * 60.0;

/// Throws UsageError for the first argument that cannot be understood.
[[nodiscard]] RenderOptions renderOptions(const RenderArguments& arguments);

} // namespace velotrine
