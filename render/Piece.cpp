#include "render/Piece.h"

#include "audiounit/ParameterText.h"
#include "audiounit/StateText.h"
#include "audiounit/VelotrineComponent.h"
#include "commandline/Errors.h"
#include "commandline/InputText.h"
#include "takes/TakeText.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <iostream>
#include <utility>

namespace velotrine {

namespace {

std::string readUpTo(std::size_t mostBytes, const std::string& option, const std::string& path)
{
    std::ifstream file;
    if (path != "-")
        file.open(path, std::ios::binary);
    auto text = textUpTo(mostBytes, path == "-" ? std::cin : file);
    if (!text)
        throw UsageError(option + " " + path, std::string("it could not be read: ") + std::strerror(errno));
    return std::move(*text);
}

void loadState(AUAudioUnit& unit, const std::string& path)
{
    const auto read = stateFromText(readUpTo(maxStateBytes, "--state", path));
    if (!read.state)
        throw UsageError("--state " + path, read.error);
    unit.setFullState(*read.state);
}

Take readTake(const std::string& path)
{
    auto read = takeFromText(readUpTo(maxTakeMebibytes << 20, "--take", path));
    if (!read.take)
        throw UsageError("--take " + path, read.error);
    const auto plays = [](const TakeChange& change) {
        return change.value != 0.0 &&
               (change.target == TakeTarget::play || change.target == TakeTarget::hostPlaying);
    };
    const bool hostPlays = read.take->start.host && read.take->start.host->isPlaying;
    if (!hostPlays && std::ranges::none_of(read.take->changes, plays))
        throw UsageError("--take " + path,
                         R"(nothing in it plays; the change {"bar": 0, "play": true} starts the clock)");
    return std::move(*read.take);
}

/// The settings are made on an instrument, which checks and bounds them as for any host.
void applySettings(VelotrineAudioUnit& unit, const RenderOptions& options, const Take& take)
{
    const auto tree = unit.parameterTree();
    if (!options.takePath.empty()) {
        for (const auto& parameter : tree->allParameters())
            parameter->setValue(take.start.values[parameter->address()]);
        unit.dspKernel->seed = take.start.seed;
        unit.dspKernel->sameMusicAtEveryStart = take.start.sameMusicAtEveryStart;
    }
    if (options.presetNumber)
        unit.setCurrentPreset(unit.factoryPresets()[static_cast<std::size_t>(*options.presetNumber)]);
    if (!options.statePath.empty())
        loadState(unit, options.statePath);
    for (const auto& [address, value] : options.settings)
        tree->parameterWithAddress(address)->setValue(value);
    if (options.tempo)
        tree->parameterWithAddress(addressOf(GlobalParameter::bpm))->setValue(*options.tempo);
    if (options.seed)
        unit.dspKernel->seed = *options.seed;
}

void takeSettings(const VelotrineAudioUnit& unit, const RenderOptions& options, Take& take)
{
    auto& start = take.start;
    for (const auto& parameter : unit.parameterTree()->allParameters())
        start.values[parameter->address()] = parameter->value();
    start.seed = unit.dspKernel->seed;
    start.sameMusicAtEveryStart = unit.dspKernel->sameMusicAtEveryStart;
    if (options.seed)
        start.generator.reset();
    if (options.blockFrames) {
        start.cycleFrames = *options.blockFrames;
        std::erase_if(take.changes,
                      [](const auto& change) { return change.target == TakeTarget::cycleFrames; });
    }
}

} // namespace

std::shared_ptr<VelotrineAudioUnit> makeAudioUnit()
{
    registerVelotrineComponent();
    std::shared_ptr<AUAudioUnit> unit;
    AUAudioUnit::instantiate(
        velotrineComponentDescription(), AudioComponentInstantiationOptions::loadInProcess,
        [&unit](std::shared_ptr<AUAudioUnit> made, const std::optional<AUError>& error) {
            if (!made)
                throw WorkError(error ? error->what() : "the instrument could not be made");
            unit = std::move(made);
        });
    return std::dynamic_pointer_cast<VelotrineAudioUnit>(unit);
}

Piece pieceOf(const RenderOptions& options)
{
    Piece piece{};
    if (options.takePath.empty())
        piece.take.changes.push_back({.time = {}, .value = 1.0, .target = TakeTarget::play});
    else
        piece.take = readTake(options.takePath);

    const auto unit = makeAudioUnit();
    applySettings(*unit, options, piece.take);
    takeSettings(*unit, options, piece.take);
    piece.stateText = textFromState(unit->fullState());
    piece.sampleRate =
        options.sampleRate.value_or(static_cast<int>(std::lround(piece.take.start.sampleRate)));
    if (!options.outPath.empty())
        checkContainer(options, piece.sampleRate);
    piece.frames = framesOf(piece.take, options, piece.sampleRate);
    return piece;
}

} // namespace velotrine
