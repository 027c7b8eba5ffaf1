#include "render/RenderJob.h"

#include "commandline/OutputFile.h"
#include "render/Origin.h"
#include "render/Piece.h"
#include "render/Rendering.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace velotrine {

namespace {

std::span<const std::uint8_t> bytesOf(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A second output beside the sound; none for an empty path.
std::unique_ptr<OutputFile> openOptional(const std::string& path, OutputFile::Existing existing)
{
    return path.empty() ? nullptr : std::make_unique<OutputFile>(path, existing);
}

} // namespace

void runRenderJob(const RenderOptions& options)
{
    const auto piece = pieceOf(options);
    const auto midiFile = openOptional(options.midiPath, options.existing);
    const auto stateFile = openOptional(options.saveStatePath, options.existing);
    Rendering rendering(piece, options, originText(piece.stateText));
    rendering.run();

    // All is written before anything appears.
    if (const auto& notes = rendering.notes(); midiFile && notes)
        midiFile->write(notes->bytes());
    if (stateFile)
        stateFile->write(bytesOf(piece.stateText));
    auto outputs = rendering.outputs();
    for (auto* const output : {midiFile.get(), stateFile.get()})
        if (output != nullptr)
            outputs.push_back(output);
    OutputFile::commitTogether(outputs);
    rendering.sayWhatCameOfIt();
}

} // namespace velotrine
