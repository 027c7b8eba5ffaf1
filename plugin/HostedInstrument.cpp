#include "plugin/HostedInstrument.h"

#include "audiounit/Presets.h"
#include "audiounit/VelotrineComponent.h"
#include "engine/HostClock.h"
#include "plugin/HostValue.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

namespace velotrine {

namespace {

// Beyond these, a tempo or a metre is a mistake of the host's.
constexpr double minHostTempo = 1.0;
constexpr double maxHostTempo = 10000.0;
constexpr double minBeatsPerBar = 1.0;
constexpr double maxBeatsPerBar = 256.0;
constexpr double minBeatUnit = 1.0;
constexpr double maxBeatUnit = 128.0;

using RenderCall = ExclusiveCalls<>::Call;

/// 0 for a value that is out of range or not a number.
double orUnknown(double value, double min, double max) noexcept
{
    return value >= min && value <= max ? value : 0.0;
}

template <typename T>
void answer(T* question, T value) noexcept
{
    if (question != nullptr)
        *question = value;
}

} // namespace

HostedInstrument::HostedInstrument(InstrumentHost& host)
    : instrumentHost(host), unit(std::make_shared<VelotrineAudioUnit>(
                                velotrineComponentDescription(), AudioComponentInstantiationOptions::none))
{
    connectTransport();
    observeEdits();
    cycles.setup(unit->renderBlock());
}

HostedInstrument::~HostedInstrument()
{
    try {
        unit->parameterTree()->removeParameterObserver(editsToken);
    } catch (const std::exception&) {
        // Removing takes memory. The unit ends here, and nobody sets its values any more.
    }
    release();
    unit->setMusicalContextBlock({});
    unit->setTransportStateBlock({});
}

bool HostedInstrument::prepare(double sampleRate)
{
    const RenderCall call(renderCalls, "prepare: another call renders or prepares meanwhile");
    dropRenderResources();
    if (!takesSampleRate(sampleRate))
        return false;
    auto& bus = (*unit->outputBusses())[0];
    bus.setFormat({sampleRate, bus.format().channelCount});
    unit->setMaximumFramesToRender(CycleRenderer::defaultCycleFrames);
    try {
        unit->allocateRenderResources();
        cycles.setup(unit->renderBlock());
        noteStream.setup(sampleRate);
    } catch (const std::exception&) {
        dropRenderResources();
        throw;
    }
    return true;
}

void HostedInstrument::release()
{
    const RenderCall call(renderCalls, "release: another call renders or prepares meanwhile");
    dropRenderResources();
}

void HostedInstrument::dropRenderResources()
{
    if (unit->renderResourcesAllocated())
        unit->deallocateRenderResources();
    endAtOnce();
}

void HostedInstrument::reset() noexcept VELOTRINE_NONBLOCKING
{
    const RenderCall call(renderCalls, "reset: another call renders or prepares meanwhile");
    VELOTRINE_UNFOLLOWED(const bool isReady = unit->renderResourcesAllocated();) // one load
    if (!isReady)
        return;
    endAtOnce();
    auto& kernel = *unit->dspKernel;
    kernel.reset();
    kernel.voicePool->silence();
}

/// Of what was rendered, nothing more is handed out.
void HostedInstrument::endAtOnce() noexcept VELOTRINE_NONBLOCKING
{
    cycles.render({}, cycles.framesLeftOver());
    noteStream.endAll();
    isAtRest = false;
}

void HostedInstrument::setTransport(const std::optional<HostTransport>& newTransport) noexcept
    VELOTRINE_NONBLOCKING
{
    const RenderCall call(renderCalls, "setTransport: another call renders or prepares meanwhile");
    if (newTransport.has_value() != transportIsKnown || (newTransport && *newTransport != transport))
        isAtRest = false;
    transportIsKnown = newTransport.has_value();
    if (!newTransport)
        return;
    transport = *newTransport;
    hostPlays = transport.isPlaying;
    tempoIsKnown =
        orUnknown(transport.tempo, minHostTempo, maxHostTempo) > 0.0 || unit->dspKernel->hostTempo > 0.0;
    framesIntoTransport = cycles.framesLeftOver();
}

void HostedInstrument::connectTransport()
{
    unit->setMusicalContextBlock([this](double* tempo, double* numerator, std::int64_t* denominator,
                                        double* beat, std::int64_t* framesToBeat, double* barStart) {
        answer(beat, 0.0);
        answer(framesToBeat, std::int64_t{0});
        answer(barStart, 0.0);
        return answerMusicalContext(tempo, numerator, denominator);
    });
    unit->setTransportStateBlock(
        [this](AUHostTransportStateFlags* flags, double* position, double* loopStart, double* loopEnd) {
            answer(flags, hostPlays ? AUHostTransportStateMoving : AUHostTransportStateFlags{0});
            answer(position, 0.0);
            answer(loopStart, 0.0);
            answer(loopEnd, 0.0);
            return transportIsKnown.load();
        });
}

bool HostedInstrument::answerMusicalContext(double* tempo, double* numerator,
                                            std::int64_t* denominator) noexcept VELOTRINE_NONBLOCKING
{
    const auto tempoNow =
        transport.tempo + transport.tempoPerFrame * static_cast<double>(framesIntoTransport);
    framesIntoTransport += CycleRenderer::defaultCycleFrames;
    answer(tempo, orUnknown(tempoNow, minHostTempo, maxHostTempo));
    answer(numerator, orUnknown(transport.beatsPerBar, minBeatsPerBar, maxBeatsPerBar));
    answer(denominator, static_cast<std::int64_t>(orUnknown(transport.beatUnit, minBeatUnit, maxBeatUnit)));
    return transportIsKnown;
}

void HostedInstrument::render(StereoOutput output, int frames,
                              const NoteOutput& notes) noexcept VELOTRINE_NONBLOCKING
{
    const RenderCall call(renderCalls, "render: another call renders or prepares meanwhile");
    if (frames < 1)
        return;
    const auto leftOver = std::min(frames, cycles.framesLeftOver());
    renderCycles(output, leftOver, notes);
    const auto newFrames = frames - leftOver;
    if (newFrames == 0)
        return;
    const auto newOutput = output.from(leftOver);
    if (goesOnResting()) {
        newOutput.clear(newFrames);
        cycles.skip(newFrames);
        noteStream.play(newFrames, notes.from(leftOver)); // a note may end after its sound
    } else {
        renderCycles(newOutput, newFrames, notes.from(leftOver));
        noteWhetherItRests();
    }
}

void HostedInstrument::renderCycles(StereoOutput output, int frames,
                                    const NoteOutput& notes) noexcept VELOTRINE_NONBLOCKING
{
    const auto& kernel = *unit->dspKernel;
    const auto status = cycles.render(
        output, frames, CycleRenderer::LastCycle::whole, [&](int cycleFrame, int count, int frame) {
            noteStream.play(kernel.noteEvents(), cycleFrame, count, notes.from(frame));
        });
    if (status != noErr)
        noteStream.play(frames, notes);
}

void HostedInstrument::pause(const NoteOutput& notes) noexcept VELOTRINE_NONBLOCKING
{
    const RenderCall call(renderCalls, "pause: another call renders or prepares meanwhile");
    noteStream.endAll();
    noteStream.play(1, notes);
}

// A session has dozens of instruments that wait. Sixteen cycles that find again that there is nothing to do
// cost thirty times as much as clearing a block of 512 frames.
bool HostedInstrument::goesOnResting() const noexcept VELOTRINE_NONBLOCKING
{
    const auto& kernel = *unit->dspKernel;
    // Sync may have been switched on while no cycle asked the host.
    const bool isInStep = !kernel.sync || !transportIsKnown || kernel.hostPlaying == hostPlays;
    return isAtRest && isInStep && kernel.sync == syncAtRest &&
           kernel.internalPlaying == internalPlayingAtRest;
}

void HostedInstrument::noteWhetherItRests() noexcept VELOTRINE_NONBLOCKING
{
    const auto& kernel = *unit->dspKernel;
    syncAtRest = kernel.sync;
    internalPlayingAtRest = kernel.internalPlaying;
    isAtRest = kernel.isAtRest() && transport.tempoPerFrame == 0.0;
}

// A store between two cycles does what a parameter event at the start of the next one would, but needs no
// queue that could overflow, and can be read back at once.
bool HostedInstrument::setValue(ParameterAddress address, double value) noexcept VELOTRINE_NONBLOCKING
{
    const auto bounded = valueFromHost(address, value);
    if (!bounded)
        return false;
    unit->dspKernel->setParameter(address, *bounded);
    setByHost.insert(address);
    return true;
}

float HostedInstrument::value(ParameterAddress address) const noexcept VELOTRINE_NONBLOCKING
{
    return unit->dspKernel->parameter(address);
}

void HostedInstrument::followValues()
{
    for (const auto address : setByHost.takeAll())
        unit->parameterTree()->tellObserversOf(address, editsToken);
}

void HostedInstrument::observeEdits()
{
    editsToken = unit->parameterTree()->tokenByAddingParameterAutomationObserver(
        [this](const AUParameterAutomationEvent& event) { noteEdit(event); });
}

void HostedInstrument::noteEdit(const AUParameterAutomationEvent& event)
{
    switch (event.eventType) {
    case AUParameterAutomationEventType::touch:
        heldParameter = event.address;
        instrumentHost.beginGesture(event.address);
        break;
    case AUParameterAutomationEventType::release:
        heldParameter.reset();
        instrumentHost.endGesture(event.address);
        break;
    case AUParameterAutomationEventType::value:
        if (heldParameter == event.address)
            instrumentHost.valueChanged(event.address, event.value);
        else
            tellHost(event.address, event.value);
        break;
    }
}

/// A gesture that begins and ends at once.
void HostedInstrument::tellHost(ParameterAddress address, float value)
{
    instrumentHost.beginGesture(address);
    instrumentHost.valueChanged(address, value);
    instrumentHost.endGesture(address);
}

bool HostedInstrument::choosePreset(std::size_t number)
{
    if (number >= presetCount)
        return false;
    std::array<float, parameterCount> before{};
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        before[address] = value(address);
    {
        const std::scoped_lock lock(stateMutex);
        unit->setCurrentPreset(unit->factoryPresets()[number], editsToken);
    }
    const auto& values = presetTable()[number].values;
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        if (values[address] != before[address])
            tellHost(address, values[address]);
    return true;
}

bool HostedInstrument::chooseProgram(std::size_t number)
{
    constexpr auto holdTicks = static_cast<std::uint64_t>(programHoldSeconds / hostClockSecondsPerTick);
    {
        const std::scoped_lock lock(stateMutex);
        if (restoredAt && hostClockNow() - *restoredAt < holdTicks)
            return false;
    }
    return choosePreset(number);
}

std::size_t HostedInstrument::presetNumber() const
{
    const std::scoped_lock lock(stateMutex);
    const auto preset = unit->currentPreset();
    const auto isOurs =
        preset && preset->number >= 0 && preset->number < static_cast<std::int64_t>(presetCount);
    return isOurs ? static_cast<std::size_t>(preset->number) : 0;
}

Settings HostedInstrument::settings() const
{
    const std::scoped_lock lock(stateMutex);
    return settingsFromState(unit->fullState(), {});
}

void HostedInstrument::edit(const Settings& from, const Settings& to)
{
    {
        const std::scoped_lock lock(stateMutex);
        unit->setFullState(stateThatChanges(from, to), editsToken);
    }
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        if (from.values[address] != to.values[address])
            tellHost(address, value(address));
}

std::string HostedInstrument::saveState() const
{
    const std::scoped_lock lock(stateMutex);
    return hostedStateText(unit->fullState(), editorSize_);
}

std::optional<std::string> HostedInstrument::restoreState(std::string_view text)
{
    auto read = hostedStateFromText(text);
    if (!read.state)
        return "The state is refused: " + read.error + ".";
    const std::scoped_lock lock(stateMutex);
    unit->setFullState(*read.state, editsToken);
    editorSize_ = read.editorSize.value_or(editorSize_);
    restoredAt = hostClockNow();
    return std::nullopt;
}

EditorSize HostedInstrument::editorSize() const
{
    const std::scoped_lock lock(stateMutex);
    return editorSize_;
}

void HostedInstrument::setEditorSize(EditorSize size)
{
    const std::scoped_lock lock(stateMutex);
    editorSize_ = size.bounded();
}

std::string_view HostedInstrument::transportNotice() const noexcept
{
    if (!unit->dspKernel->sync)
        return "";
    if (!hostPlays)
        return "waiting for the host to play";
    return tempoIsKnown ? "" : "no tempo from the host";
}

} // namespace velotrine
