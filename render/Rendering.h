#pragma once

#include "render/MidiFile.h"
#include "render/Piece.h"
#include "render/PlayingInstrument.h"
#include "render/ProgressBar.h"
#include "render/RenderOptions.h"
#include "render/SoundFile.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velotrine {

/// The work of one rendering: plays a piece, and writes what is to be written of it, piece by piece. Throws
/// WorkError, or Interrupted.
class Rendering
{
public:
    /// @param piece   must outlive it
    /// @param origin  what made the piece, for whoever reads the files
    Rendering(const Piece& piece, const RenderOptions& options, const std::string& origin);

    /// Plays the piece to its end, stops it, and lets it ring out.
    void run();

    /// The sound and the rings' stems, whole but not yet in their places.
    [[nodiscard]] std::vector<OutputFile*> outputs();

    /// The notes; none unless they were asked for.
    [[nodiscard]] const std::optional<MidiFile>& notes() const noexcept { return midi; }

    /// Tells a person on a terminal what came of it.
    void sayWhatCameOfIt();

private:
    /// An instrument, and where its sound goes.
    struct Part
    {
        PlayingInstrument instrument;
        std::unique_ptr<SoundFile> file; ///< none where only notes are wanted
    };

    void addPart(const Piece& piece, const RenderOptions& options, const std::string& path,
                 std::optional<int> onlyRing, const std::string& origin);

    [[nodiscard]] PlayingInstrument& whole() noexcept { return parts.front().instrument; }

    void renderTo(std::int64_t end);
    void renderTail();
    void renderCycle(int frames);
    void write(Part& part) const;
    void collectNotes();
    [[nodiscard]] double secondsWritten() const;

    std::vector<Part> parts; ///< the whole first
    std::optional<MidiFile> midi;
    ProgressBar progress;
    std::function<void(double fraction)> tellProgress;
    RenderOptions::Tail tail;
    std::int64_t tailFrames; ///< of a fixed tail
    int sampleRate;          ///< Hz
    PieceFrames frames;
    std::int64_t frame = 0; ///< of the piece, reached so far
    std::int64_t framesSinceWord = 0;
};

} // namespace velotrine
