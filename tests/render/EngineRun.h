#pragma once

#include "engine/NoteEvent.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

/// The audio unit driven directly, without any of the command line's code, to compare it with.
struct EngineRun
{
    struct Setup
    {
        int preset = 1;
        std::vector<std::pair<std::string, float>> values; ///< by parameter identifier
        int sampleRate = 48000;                            ///< Hz
        int cycleFrames = 32;
        std::int64_t playedFrames = 0;
        std::int64_t tailFrames = 0;
        bool untilSilent = false; ///< after the tail, whole cycles until no voice sounds
    };

    struct Note
    {
        std::int64_t frame; ///< of the crossing, from the start
        NoteEvent event;
    };

    std::vector<float> left;
    std::vector<float> right;
    std::vector<Note> notes;

    /// Interleaved: L R L R.
    [[nodiscard]] std::vector<float> interleaved() const;
};

[[nodiscard]] EngineRun runEngine(const EngineRun::Setup& setup);

} // namespace velotrine
