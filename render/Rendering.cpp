#include "render/Rendering.h"

#include "audiounit/MidiNote.h"
#include "commandline/Interruption.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velotrine {

namespace {

/// Until the piece itself has said more.
double startTempo(const Piece& piece)
{
    return static_cast<double>(piece.take.start.values[addressOf(GlobalParameter::bpm)]);
}

} // namespace

Rendering::Rendering(const Piece& piece, const RenderOptions& options, const std::string& origin)
    : progress(!options.quiet), tellProgress(options.onProgress), tail(options.tail),
      tailFrames(std::llround(options.tailSeconds * piece.sampleRate)), sampleRate(piece.sampleRate),
      frames(piece.frames)
{
    addPart(piece, options, options.outPath, std::nullopt, origin);
    for (int ring = 0; options.stems && ring < ringCount; ++ring)
        addPart(piece, options, stemPath(options.outPath, ring), ring, origin);
    if (!options.midiPath.empty())
        midi.emplace(startTempo(piece), origin);
}

void Rendering::addPart(const Piece& piece, const RenderOptions& options, const std::string& path,
                        std::optional<int> onlyRing, const std::string& origin)
{
    // A note rings for little more than a second.
    constexpr double longestNoteSeconds = 2.0;
    const double tailSeconds = std::max(options.tailSeconds, longestNoteSeconds);
    std::unique_ptr<SoundFile> file;
    if (!path.empty())
        file = std::make_unique<SoundFile>(
            path,
            AudioFileWriter::Format{.container = options.container,
                                    .samples = options.format,
                                    .sampleRate = sampleRate,
                                    .expectedFrames =
                                        frames.end - frames.from + std::llround(tailSeconds * sampleRate),
                                    .comment = origin},
            options.existing);
    parts.push_back({PlayingInstrument(piece, onlyRing), std::move(file)});
}

void Rendering::run()
{
    renderTo(frames.end);
    for (auto& part : parts)
        part.instrument.stop();
    renderTail();
    for (auto& part : parts)
        if (part.file)
            part.file->finish();
}

void Rendering::renderTo(std::int64_t last)
{
    while (frame < last)
        renderCycle(static_cast<int>(std::min<std::int64_t>(whole().cycleFrames(), last - frame)));
}

void Rendering::renderTail()
{
    switch (tail) {
    case RenderOptions::Tail::none:
        return;
    case RenderOptions::Tail::untilSilent:
        while (!whole().isSilent())
            renderCycle(whole().cycleFrames());
        return;
    case RenderOptions::Tail::fixed:
        return renderTo(frames.end + tailFrames);
    }
}

void Rendering::renderCycle(int count)
{
    for (auto& part : parts) {
        part.instrument.follow();
        part.instrument.render(count);
        write(part);
    }
    collectNotes();
    frame += count;

    constexpr std::int64_t framesBetweenWords = 4096;
    framesSinceWord += count;
    if (framesSinceWord < framesBetweenWords)
        return;
    framesSinceWord = 0;
    stopIfInterrupted();
    const auto fraction = static_cast<double>(frame) / static_cast<double>(frames.end);
    progress.update(fraction, secondsWritten());
    if (tellProgress)
        tellProgress(fraction);
}

void Rendering::write(Part& part) const
{
    const auto left = part.instrument.left();
    const auto unheard = static_cast<std::size_t>(
        std::clamp<std::int64_t>(frames.from - frame, 0, static_cast<std::int64_t>(left.size())));
    if (part.file)
        part.file->add(left.subspan(unheard), part.instrument.right().subspan(unheard));
}

void Rendering::collectNotes()
{
    if (!midi)
        return;
    const auto& kernel = whole().kernel();
    const auto secondsAt = [this](std::int64_t frameOfPiece) {
        return std::max(0.0, static_cast<double>(frameOfPiece - frames.barLine) / sampleRate);
    };
    // What comes before the beginning still counts for the tempo there.
    if (const auto tempo = kernel.tempo())
        midi->setTempo(secondsAt(frame), tempo->quartersPerMinute);
    for (const auto& event : kernel.noteEvents())
        if (const auto note = midiNote(event); note && frame >= frames.from)
            midi->addNote(secondsAt(frame + event.frame), *note);
}

double Rendering::secondsWritten() const
{
    return std::max(0.0, static_cast<double>(frame - frames.from) / sampleRate);
}

std::vector<OutputFile*> Rendering::outputs()
{
    std::vector<OutputFile*> outputs;
    for (const auto& part : parts)
        if (part.file)
            outputs.push_back(&part.file->output());
    return outputs;
}

void Rendering::sayWhatCameOfIt()
{
    if (const auto& file = parts.front().file)
        progress.finish(file->output().name().c_str(), secondsWritten());
}

} // namespace velotrine
