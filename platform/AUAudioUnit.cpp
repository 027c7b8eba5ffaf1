#include "platform/AUAudioUnit.h"

#include "platform/AudioComponentRegistry.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>
#include <string>
#include <utility>

namespace velotrine {

/// What a render call is checked against; the main thread writes, the render thread reads.
struct AUAudioUnit::RenderLimits
{
    std::atomic<bool> allocated{false};
    std::atomic<AUAudioFrameCount> maximumFrames{0};

    /// Made beforehand, since it takes memory itself.
    const AUError noMemory{kAudioUnitErr_FailedInitialization, "There is not enough memory to render."};
};

AUAudioUnit::AUAudioUnit(const AudioComponentDescription& description,
                         AudioComponentInstantiationOptions options)
    : unitDescription(description), renderLimits(std::make_shared<RenderLimits>())
{
    if (options == AudioComponentInstantiationOptions::loadOutOfProcess)
        throw AUError(kAudioComponentErr_NotFound, "Audio units run in the host's own process here.");
}

void AUAudioUnit::registerFactory(const AudioComponentDescription& description, const std::string& name,
                                  std::uint32_t version, Factory factory)
{
    AudioComponentRegistry::shared().add({description, name, version, std::move(factory)});
}

void AUAudioUnit::instantiate(const AudioComponentDescription& description,
                              AudioComponentInstantiationOptions options, const Completion& completion)
{
    std::shared_ptr<AUAudioUnit> unit;
    try {
        const auto component = AudioComponentRegistry::shared().find(description);
        if (!component)
            throw AUError(kAudioComponentErr_NotFound, "No audio unit is registered under this description.");
        unit = component->factory(description, options);
    } catch (const AUError& error) {
        completion(nullptr, error);
        return;
    }
    completion(std::move(unit), std::nullopt);
}

void AUAudioUnit::allocateRenderResources()
{
    const auto frames = maximumFramesToRender();
    if (frames > mostFramesToRender)
        throw AUError(kAudioUnitErr_TooManyFramesToProcess,
                      std::to_string(frames) + " frames are too many for one render cycle; it takes up to " +
                          std::to_string(mostFramesToRender) + ".");

    const bool wasAllocated = renderLimits->allocated.exchange(false);
    try {
        makeRenderResources();
    } catch (const std::bad_alloc&) {
        renderLimits->allocated = wasAllocated;
        throw AUError(renderLimits->noMemory);
    } catch (...) {
        renderLimits->allocated = wasAllocated;
        throw;
    }
    renderLimits->maximumFrames = frames;
    renderLimits->allocated = true;
}

void AUAudioUnit::deallocateRenderResources()
{
    renderLimits->allocated = false;
    dropRenderResources();
}

bool AUAudioUnit::renderResourcesAllocated() const noexcept
{
    return renderLimits->allocated;
}

AURenderBlock AUAudioUnit::renderBlock()
{
    return [limits = renderLimits, render = internalRenderBlock()](
               AudioUnitRenderActionFlags* actionFlags, const AudioTimeStamp* timestamp,
               AUAudioFrameCount frameCount, int outputBusNumber, AudioBufferList* outputData,
               const AURenderEvent* events, const AURenderPullInputBlock* pullInput) -> AUAudioUnitStatus {
        if (!limits->allocated)
            return kAudioUnitErr_Uninitialized;
        if (frameCount > limits->maximumFrames)
            return kAudioUnitErr_TooManyFramesToProcess;
        return render(actionFlags, timestamp, frameCount, outputBusNumber, outputData, events, pullInput);
    };
}

void AUAudioUnit::setCurrentPreset(const std::optional<AUAudioUnitPreset>& preset,
                                   AUParameterObserverToken originator)
{
    applyCurrentPreset(preset, originator);
    currentPresetObservers.notify(0);
}

AUFullState AUAudioUnit::fullState() const
{
    AUFullState state{{}, currentPreset()};
    if (const auto tree = parameterTree())
        for (const auto& parameter : tree->allParameters())
            state.parameters.emplace_back(parameter->identifier(), parameter->value());
    return state;
}

void AUAudioUnit::setFullState(const AUFullState& state, AUParameterObserverToken originator)
{
    if (const auto tree = parameterTree()) {
        for (const auto& parameter : tree->allParameters()) {
            const auto named = std::ranges::find_if(state.parameters, [&parameter](const auto& entry) {
                return entry.first == parameter->identifier();
            });
            if (named != state.parameters.end() && std::isfinite(named->second))
                parameter->setValue(std::clamp(named->second, parameter->minValue(), parameter->maxValue()),
                                    originator);
        }
    }
    restoreCurrentPreset(state.currentPreset);
    fullStateObservers.notify(0);
}

ObserverList<>& AUAudioUnit::observersOf(AUProperty property) noexcept
{
    return property == AUProperty::fullState ? fullStateObservers : currentPresetObservers;
}

ObserverToken AUAudioUnit::addPropertyObserver(AUProperty property, std::function<void()> observer)
{
    return observersOf(property).add(std::move(observer));
}

void AUAudioUnit::removePropertyObserver(AUProperty property, ObserverToken token)
{
    observersOf(property).remove(token);
}

} // namespace velotrine
