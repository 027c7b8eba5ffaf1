#pragma once

#include "engine/ParameterAddress.h"
#include "render/AudioFileWriter.h"

#include <cstdint>
#include <functional>
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
    std::string take;
    std::vector<std::string> settings;
    std::string tempo;
    std::string seed;
    std::string bars;
    std::string seconds;
    std::string from;
    std::string sampleRate;
    std::string block;
    std::string tail;
    std::string format;
    std::string midi;
    std::string saveState;
    std::string out;
    bool stems = false;
    bool noClobber = false;
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
    std::string statePath;                                    ///< empty for none, "-" is standard input
    std::string takePath;                                     ///< likewise; not with a preset or a state
    std::vector<std::pair<ParameterAddress, float>> settings; ///< within their ranges, in the order typed
    std::optional<float> tempo; ///< quarter notes a minute, minTempo to maxTempo
    std::optional<std::uint32_t> seed;
    std::optional<double> bars;
    std::optional<double> seconds; ///< not with bars
    double fromBar = 0.0;          ///< where writing begins
    std::optional<int> sampleRate; ///< Hz
    std::optional<int> blockFrames;
    Tail tail = Tail::untilSilent;
    double tailSeconds = 0.0; ///< of a fixed tail
    AudioContainer container = AudioContainer::wav;
    SampleFormat format = SampleFormat::s24;
    std::string midiPath;      ///< empty for none
    std::string saveStatePath; ///< empty for none
    std::string outPath;       ///< "-" is standard output; empty for none, where notes are written
    bool stems = false;
    OutputFile::Existing existing = OutputFile::Existing::replaced;
    bool quiet = false;
    std::function<void(double fraction)> onProgress; ///< told now and then how much is done; may be empty
};

/// How long a piece is where neither the options nor a take say it.
inline constexpr double defaultBars = 16.0;

/// The longest sound that one rendering makes, in seconds: a day.
inline constexpr double maxRenderSeconds = 24.0 * 60.0 * 60.0;

/// Throws UsageError for the first argument that cannot be understood.
[[nodiscard]] RenderOptions renderOptions(const RenderArguments& arguments);

/// Throws UsageError where the container cannot hold sound at this rate.
/// @param sampleRate  Hz
void checkContainer(const RenderOptions& options, int sampleRate);

/// Where the sound of a ring alone goes: "a-R1.wav" beside "a.wav".
/// @param ring  0 to 4
[[nodiscard]] std::string stemPath(const std::string& outPath, int ring);

} // namespace velotrine
