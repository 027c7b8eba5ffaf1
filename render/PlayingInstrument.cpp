#include "render/PlayingInstrument.h"

#include "commandline/Errors.h"

#include <algorithm>
#include <string>

namespace velotrine {

namespace {

int longestCycle(const Take& take)
{
    double longest = take.start.cycleFrames;
    for (const auto& change : take.changes)
        if (change.target == TakeTarget::cycleFrames)
            longest = std::max(longest, change.value);
    return static_cast<int>(longest);
}

} // namespace

PlayingInstrument::PlayingInstrument(const Piece& piece, std::optional<int> newOnlyRing)
    : player(piece.take, piece.sampleRate), onlyRing(newOnlyRing)
{
    const auto longest = longestCycle(piece.take);
    unit->setMaximumFramesToRender(static_cast<AUAudioFrameCount>(longest));
    const auto& bus = *unit->outputBusses();
    bus[0].setFormat({static_cast<double>(piece.sampleRate), bus[0].format().channelCount});
    unit->allocateRenderResources();
    renderer.setup(unit->renderBlock(), longest);
    leftCycle.resize(static_cast<std::size_t>(longest));
    rightCycle.resize(static_cast<std::size_t>(longest));
    player.begin(*unit->dspKernel);
}

void PlayingInstrument::follow()
{
    if (!isStopped)
        player.apply(*unit->dspKernel);
    for (int ring = 0; onlyRing && ring < ringCount; ++ring)
        if (ring != *onlyRing)
            unit->dspKernel->ringVolumes[static_cast<std::size_t>(ring)] = 0.0f;
}

void PlayingInstrument::stop()
{
    unit->dspKernel->internalPlaying = false;
    unit->dspKernel->hostPlaying = false;
    isStopped = true;
}

void PlayingInstrument::render(int frames)
{
    const auto status =
        renderer.render({leftCycle.data(), rightCycle.data()}, frames, CycleRenderer::LastCycle::cutShort);
    if (status != noErr)
        throw WorkError("the instrument refused to render (error " + std::to_string(status) + ")");
    framesOfCycle = static_cast<std::size_t>(frames);
    player.advance(frames);
}

} // namespace velotrine
