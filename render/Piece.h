#pragma once

#include "audiounit/VelotrineAudioUnit.h"
#include "render/PieceLength.h"
#include "render/RenderOptions.h"
#include "takes/Take.h"

#include <memory>
#include <string>

namespace velotrine {

/// An instrument as the registry makes it. Throws WorkError.
[[nodiscard]] std::shared_ptr<VelotrineAudioUnit> makeAudioUnit();

/// What is to be rendered. Everything is a take: a preset is one in which nothing happens but that the clock
/// starts.
struct Piece
{
    Take take;
    std::string stateText; ///< the settings with which it begins, for a state file
    int sampleRate;        ///< Hz

    PieceFrames frames;
};

/// Reads what the options name, and finds out how long it is. Throws UsageError for a file that is not what
/// it should be, and for a length that there is not.
[[nodiscard]] Piece pieceOf(const RenderOptions& options);

} // namespace velotrine
