#include "host/AVAudioEngine.h"

#include "audiounit/VelotrineAudioUnit.h"
#include "engine/FatalError.h"

#include <algorithm>
#include <utility>

namespace velotrine {

namespace {

using std::chrono::steady_clock;

constexpr double silentSampleRate = 44100.0; ///< Hz, where neither device nor options name one
constexpr int pullIntervalMilliseconds = 8;  ///< twice a frame of a 60 Hz display
constexpr int restIntervalMilliseconds = 40; ///< while nothing moves: a fifth of the processor time
constexpr int checksBetweenLooks = 1000 / AudioOutput::checkIntervalMilliseconds;
constexpr int outputChannels = 2;

const VelotrineDSPKernel* kernelOf(const AUAudioUnit& unit)
{
    const auto* const instrument = dynamic_cast<const VelotrineAudioUnit*>(&unit);
    return instrument != nullptr ? instrument->dspKernel.get() : nullptr;
}

/// Whether there is something to see; a stopped instrument's clock stands at exactly 0.
bool isMoving(const AUAudioUnit& unit)
{
    const auto* const kernel = kernelOf(unit);
    return kernel == nullptr || kernel->clockPhaseBuf != 0.0;
}

/// Allocates anew. The instrument plays on from where it is, not from the start of its piece.
void allocate(AUAudioUnit& unit, double sampleRate)
{
    auto* const instrument = dynamic_cast<VelotrineAudioUnit*>(&unit);
    const auto position =
        instrument == nullptr ? std::nullopt : std::optional(instrument->dspKernel->position());
    unit.deallocateRenderResources();
    (*unit.outputBusses())[0].setFormat({sampleRate, outputChannels});
    unit.allocateRenderResources();
    if (position)
        instrument->dspKernel->restore(*position);
}

} // namespace

AVAudioEngine::AVAudioEngine(DeviceTypeFactory deviceTypes, const NotePortFactory& makeNotePort)
    : output(mixer, std::move(deviceTypes))
{
    if (auto port = makeNotePort()) {
        noteSender = std::make_unique<NoteSender>(std::move(port));
        mixer.setNoteSender(noteSender.get());
    }
}

AVAudioEngine::~AVAudioEngine()
{
    stopTimer();
    output.close();
}

void AVAudioEngine::attach(std::shared_ptr<AVAudioUnit> newNode)
{
    if (!newNode || isStarted)
        fatalError("AVAudioEngine: no node to attach, or too late");
    node = std::move(newNode);
    isConnected = false;
}

void AVAudioEngine::connect(const std::shared_ptr<AVAudioUnit>& source, AVAudioMixerNode& destination,
                            const std::optional<AVAudioFormat>& format)
{
    if (!node || source != node || &destination != &mixer || isStarted)
        fatalError(
            "AVAudioEngine: only the attached node and the main mixer can be connected, before a start");
    if (format && !deviceOptions.sampleRate)
        deviceOptions.sampleRate = format->sampleRate;
    node->audioUnit()->setMaximumFramesToRender(CycleRenderer::defaultCycleFrames);
    isConnected = true;
}

std::optional<AUError> AVAudioEngine::start()
{
    if (isStarted)
        return std::nullopt;
    if (!isConnected)
        return AUError(kAudioUnitErr_FailedInitialization, "No audio unit is connected to the engine.");

    isStarted = true;
    lastCheck = steady_clock::now();
    auto error = openDevice();
    if (error)
        beginSilentPull();
    else
        endSilentPull();
    return error;
}

std::optional<AUError> AVAudioEngine::openDevice()
{
    return output.open(deviceOptions, [this](double sampleRate) { prepare(sampleRate); });
}

void AVAudioEngine::prepare(double sampleRate)
{
    if (preparedRate == sampleRate)
        return;
    preparedRate.reset();
    auto& unit = *node->audioUnit();
    allocate(unit, sampleRate);
    mixer.setSource(observedBlock(), kernelOf(unit));
    preparedRate = sampleRate;
}

AURenderBlock AVAudioEngine::observedBlock() const
{
    auto block = node->audioUnit()->renderBlock();
    if (!onCycleRendered)
        return block;
    return [block = std::move(block),
            tell = onCycleRendered](AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                                    AUAudioFrameCount frames, int bus, AudioBufferList* buffers,
                                    const AURenderEvent* events, const AURenderPullInputBlock* pullInput) {
        const auto status = block(flags, time, frames, bus, buffers, events, pullInput);
        tell(static_cast<int>(frames));
        return status;
    };
}

void AVAudioEngine::beginSilentPull()
{
    if (!preparedRate) {
        try {
            prepare(deviceOptions.sampleRate.value_or(silentSampleRate));
        } catch (const AUError&) {
            mixer.setSource(nullptr);
        }
    }
    silentClock.start(steady_clock::now(), preparedRate.value_or(silentSampleRate));
    requestsAtPullStart = output.requests();
    pullsSilently = true;
    startTimer(pullIntervalMilliseconds);
}

void AVAudioEngine::endSilentPull()
{
    pullsSilently = false;
    startTimer(AudioOutput::checkIntervalMilliseconds);
}

void AVAudioEngine::timerCallback()
{
    const auto now = steady_clock::now();
    if (pullsSilently)
        pullSilently();
    if (now - lastCheck >= std::chrono::milliseconds(AudioOutput::checkIntervalMilliseconds)) {
        lastCheck = now;
        checkDevice();
    }
}

void AVAudioEngine::pullSilently()
{
    // An idle device that asks for sound again drives the clock itself.
    if (output.requests() != requestsAtPullStart)
        return endSilentPull();
    mixer.render(nullptr, 0, silentClock.framesDue(steady_clock::now()));
    const auto interval = isMoving(*node->audioUnit()) ? pullIntervalMilliseconds : restIntervalMilliseconds;
    if (getTimerInterval() != interval)
        startTimer(interval);
}

void AVAudioEngine::checkDevice()
{
    switch (output.check()) {
    case AudioOutput::State::playing:
        return;
    case AudioOutput::State::idle:
        if (!pullsSilently)
            beginSilentPull();
        return;
    case AudioOutput::State::lost:
        output.close();
        checksWithoutDevice = 0;
        if (!pullsSilently)
            beginSilentPull();
        return tellOfDevice();
    case AudioOutput::State::closed:
        if (++checksWithoutDevice >= checksBetweenLooks)
            lookForDevice();
        return;
    }
}

void AVAudioEngine::lookForDevice()
{
    checksWithoutDevice = 0;
    if (openDevice()) {
        // A device at whose rate the unit could not be prepared leaves it without resources.
        if (!preparedRate)
            beginSilentPull();
        return;
    }
    endSilentPull();
    tellOfDevice();
}

void AVAudioEngine::tellOfDevice() const
{
    if (onDeviceChanged)
        onDeviceChanged();
}

} // namespace velotrine
