#include "audiounit/VelotrineAudioUnit.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "engine/FatalError.h"

#include <string>
#include <utility>

namespace velotrine {

namespace {

constexpr double defaultSampleRate = 44100.0;
constexpr std::uint32_t outputChannels = 2;

std::shared_ptr<AUParameter> makeParameter(const ParameterInfo& info)
{
    auto parameter = AUParameterTree::createParameter({.identifier = info.identifier,
                                                       .name = info.name,
                                                       .address = info.address,
                                                       .minValue = info.minValue,
                                                       .maxValue = info.maxValue,
                                                       .unit = info.unit,
                                                       .unitName = {},
                                                       .flags = info.flags,
                                                       .valueStrings = {},
                                                       .dependentParameters = {}});
    parameter->setValue(info.initialValue);
    return parameter;
}

float* samplesOf(const AudioBuffer& buffer) noexcept
{
    return static_cast<float*>(buffer.mData);
}

void readMusicalContext(VelotrineDSPKernel& kernel,
                        const AUHostMusicalContextBlock& musicalContext) noexcept VELOTRINE_NONBLOCKING
{
    double tempo = 0.0;
    double beatsPerBar = 0.0;
    std::int64_t beatUnit = 0;
    double beatPosition = 0.0;
    std::int64_t framesToNextBeat = 0;
    double barStart = 0.0;
    // The host's own code.
    VELOTRINE_UNFOLLOWED(const bool isKnown = musicalContext(&tempo, &beatsPerBar, &beatUnit, &beatPosition,
                                                             &framesToNextBeat, &barStart);)
    if (!isKnown)
        return;
    if (tempo > 0.0)
        kernel.hostTempo = tempo;
    if (beatsPerBar > 0.0)
        kernel.hostBeatsPerBar = beatsPerBar;
    if (beatUnit >= 1)
        kernel.hostBeatUnit = static_cast<double>(beatUnit);
}

void readTransportState(VelotrineDSPKernel& kernel,
                        const AUHostTransportStateBlock& transportState) noexcept VELOTRINE_NONBLOCKING
{
    AUHostTransportStateFlags flags = 0;
    double samplePosition = 0.0;
    double loopStart = 0.0;
    double loopEnd = 0.0;
    // The host's own code.
    VELOTRINE_UNFOLLOWED(const bool isKnown = transportState(&flags, &samplePosition, &loopStart, &loopEnd);)
    if (isKnown)
        kernel.hostPlaying = (flags & AUHostTransportStateMoving) != 0;
}

} // namespace

VelotrineAudioUnit::VelotrineAudioUnit(const AudioComponentDescription& description,
                                       AudioComponentInstantiationOptions options)
    : AUAudioUnit(description, options),
      pcmFormat(AVAudioFormat::standardFormat(defaultSampleRate, outputChannels))
{
    if (!pcmFormat)
        fatalError("VelotrineAudioUnit: there is no standard stereo format");
    outputBus = std::make_shared<AUAudioUnitBus>(*pcmFormat);
    _parameterTree = makeParameterTree();
}

std::shared_ptr<AUParameterTree> VelotrineAudioUnit::makeParameterTree() const
{
    std::vector<std::shared_ptr<AUParameter>> parameters;
    for (const auto& info : parameterTable())
        parameters.push_back(makeParameter(info));

    auto tree = AUParameterTree::createTree(std::move(parameters));
    const std::weak_ptr<KernelHandle> weakHandle = kernelHandle;
    tree->setImplementorValueObserver([weakHandle](const AUParameter& parameter, AUValue value) {
        if (const auto handle = weakHandle.lock())
            handle->kernel->setParameter(parameter.address(), value);
    });
    tree->setImplementorValueProvider([weakHandle](const AUParameter& parameter) {
        const auto handle = weakHandle.lock();
        return handle ? handle->kernel->parameter(parameter.address()) : 0.0f;
    });
    return tree;
}

std::shared_ptr<AUAudioUnitBusArray> VelotrineAudioUnit::inputBusses()
{
    return std::make_shared<AUAudioUnitBusArray>(*this, AUAudioUnitBusType::input);
}

std::shared_ptr<AUAudioUnitBusArray> VelotrineAudioUnit::outputBusses()
{
    if (!_outputBusses)
        _outputBusses = std::make_shared<AUAudioUnitBusArray>(*this, AUAudioUnitBusType::output,
                                                              std::vector{existingOutputBus()});
    return _outputBusses;
}

const std::shared_ptr<AUAudioUnitBus>& VelotrineAudioUnit::existingOutputBus() const noexcept
{
    if (!outputBus)
        fatalError("VelotrineAudioUnit: there is no output bus");
    return outputBus;
}

void VelotrineAudioUnit::makeRenderResources()
{
    ContextHolder newContext{musicalContextBlock(), transportStateBlock()};
    dspKernel->setup(maxFrames, existingOutputBus()->format().sampleRate);
    *contextHolder = std::move(newContext);
}

void VelotrineAudioUnit::dropRenderResources()
{
    *contextHolder = {};
}

AUInternalRenderBlock VelotrineAudioUnit::internalRenderBlock()
{
    return [kernel = dspKernel, context = contextHolder](AudioUnitRenderActionFlags*, const AudioTimeStamp*,
                                                         AUAudioFrameCount frameCount, int,
                                                         AudioBufferList* output, const AURenderEvent* events,
                                                         const AURenderPullInputBlock*) -> AUAudioUnitStatus {
        readHostContext(*kernel, *context);
        applyEvents(*kernel, events);
        if (output != nullptr)
            renderInto(*kernel, *output, static_cast<int>(frameCount));
        return noErr;
    };
}

void VelotrineAudioUnit::readHostContext(VelotrineDSPKernel& kernel,
                                         const ContextHolder& context) noexcept VELOTRINE_NONBLOCKING
{
    if (!kernel.sync)
        return;
    if (context.musicalContext)
        readMusicalContext(kernel, context.musicalContext);
    // Somebody may have switched sync off in the meantime.
    if (kernel.sync && context.transportState)
        readTransportState(kernel, context.transportState);
}

void VelotrineAudioUnit::applyEvents(VelotrineDSPKernel& kernel,
                                     const AURenderEvent* events) noexcept VELOTRINE_NONBLOCKING
{
    for (const auto* event = events; event != nullptr; event = event->next)
        if (event->eventType == AURenderEventType::parameter ||
            event->eventType == AURenderEventType::parameterRamp)
            kernel.setParameter(event->parameterAddress, event->value);
}

void VelotrineAudioUnit::renderInto(VelotrineDSPKernel& kernel, const AudioBufferList& output,
                                    int frameCount) noexcept VELOTRINE_NONBLOCKING
{
    const auto& buffers = output.mBuffers;
    if (buffers.empty())
        return;
    if (buffers.size() == 1) {
        if (auto* const mono = samplesOf(buffers[0]))
            kernel.process(mono, mono, frameCount);
        return;
    }
    auto* const left = samplesOf(buffers[0]);
    auto* const right = samplesOf(buffers[1]);
    if (left == nullptr || right == nullptr)
        fatalError("render: a stereo output without memory for its samples");
    kernel.process(left, right, frameCount);
}

const std::vector<AUAudioUnitPreset>& VelotrineAudioUnit::factoryPresets()
{
    if (_factoryPresets.empty())
        for (const auto& preset : presetTable())
            _factoryPresets.push_back(
                {static_cast<std::int64_t>(_factoryPresets.size()), std::string(preset.name)});
    return _factoryPresets;
}

void VelotrineAudioUnit::applyCurrentPreset(const std::optional<AUAudioUnitPreset>& preset,
                                            AUParameterObserverToken originator)
{
    _currentPreset = preset;
    if (!preset || preset->number < 0 || preset->number >= static_cast<std::int64_t>(presetCount) ||
        !_parameterTree)
        return;

    const auto& values = presetTable()[static_cast<std::size_t>(preset->number)].values;
    for (ParameterAddress address = 0; address < values.size(); ++address)
        if (const auto parameter = _parameterTree->parameterWithAddress(address))
            parameter->setValue(values[address], originator);
}

void VelotrineAudioUnit::restoreCurrentPreset(const std::optional<AUAudioUnitPreset>& preset)
{
    _currentPreset = preset;
}

void VelotrineAudioUnit::addFurtherValues(AUFullState& state) const
{
    if (const std::uint32_t seed = dspKernel->seed; seed != defaultSeed)
        state.furtherValues.emplace_back(seedKey, seed);
    if (dspKernel->sameMusicAtEveryStart)
        state.furtherValues.emplace_back(sameMusicAtEveryStartKey, true);
}

void VelotrineAudioUnit::restoreFurtherValues(const AUFullState& state)
{
    auto seed = defaultSeed;
    bool sameMusicAtEveryStart = false;
    for (const auto& [name, value] : state.furtherValues) {
        if (const auto* const number = std::get_if<std::uint32_t>(&value); number && name == seedKey)
            seed = *number;
        if (const auto* const isOn = std::get_if<bool>(&value); isOn && name == sameMusicAtEveryStartKey)
            sameMusicAtEveryStart = *isOn;
    }
    dspKernel->seed = seed;
    dspKernel->sameMusicAtEveryStart = sameMusicAtEveryStart;
}

} // namespace velotrine
