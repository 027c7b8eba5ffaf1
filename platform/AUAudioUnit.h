#pragma once

#include "platform/AUAudioUnitBus.h"
#include "platform/AUAudioUnitPreset.h"
#include "platform/AUError.h"
#include "platform/AUFullState.h"
#include "platform/AUParameterTree.h"
#include "platform/AURenderEvent.h"
#include "platform/AudioComponentDescription.h"
#include "platform/AudioTypes.h"
#include "platform/ObserverList.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velotrine {

/// Where the host is in its session. Answers true when it filled in what it was asked for: tempo (quarter
/// notes a minute), numerator and denominator of the time signature, beat position, frames to the next beat,
/// beat position of the bar's start. A null pointer asks for nothing. Render thread.
using AUHostMusicalContextBlock =
    std::function<bool(double* currentTempo, double* timeSignatureNumerator,
                       std::int64_t* timeSignatureDenominator, double* currentBeatPosition,
                       std::int64_t* sampleOffsetToNextBeat, double* currentMeasureDownbeatPosition)>;

using AUHostTransportStateFlags = std::uint32_t;

inline constexpr AUHostTransportStateFlags AUHostTransportStateChanged = 1;
inline constexpr AUHostTransportStateFlags AUHostTransportStateMoving = 2;

/// What the host's transport does: flags, position in frames, and the beats between which it loops. Answers
/// and null pointers as above. Render thread.
using AUHostTransportStateBlock =
    std::function<bool(AUHostTransportStateFlags* transportStateFlags, double* currentSamplePosition,
                       double* cycleStartBeatPosition, double* cycleEndBeatPosition)>;

/// Fetches input for a render cycle.
using AURenderPullInputBlock = std::function<AUAudioUnitStatus(
    AudioUnitRenderActionFlags* actionFlags, const AudioTimeStamp* timestamp, AUAudioFrameCount frameCount,
    int inputBusNumber, AudioBufferList* inputData)>;

/// Renders one cycle into the output's buffers. Only the frame count, the output and the events are of
/// importance to a unit without input; the other pointers may be null. Never throws, allocates or waits.
using AURenderBlock = std::function<AUAudioUnitStatus(
    AudioUnitRenderActionFlags* actionFlags, const AudioTimeStamp* timestamp, AUAudioFrameCount frameCount,
    int outputBusNumber, AudioBufferList* outputData, const AURenderEvent* realtimeEventListHead,
    const AURenderPullInputBlock* pullInputBlock)>;

using AUInternalRenderBlock = AURenderBlock;

/// What can be observed to change as a whole.
enum class AUProperty
{
    fullState,
    currentPreset,
};

/// Base of all audio units: what a host may ask of an instrument. Make units through instantiate(), which
/// needs their class to be registered. All but the render block: one thread at a time, usually the main
/// thread.
class AUAudioUnit
{
public:
    using Completion = std::function<void(std::shared_ptr<AUAudioUnit>, std::optional<AUError>)>;

    AUAudioUnit(const AudioComponentDescription& description, AudioComponentInstantiationOptions options);
    virtual ~AUAudioUnit() = default;
    AUAudioUnit(const AUAudioUnit&) = delete;
    AUAudioUnit& operator=(const AUAudioUnit&) = delete;

    /// Makes a class known in this process under a description.
    /// Throws AUError when the description is taken.
    template <typename Unit>
    static void registerSubclass(const AudioComponentDescription& description, const std::string& name,
                                 std::uint32_t version);

    /// Makes a unit of the class registered under the description and hands it to the completion, before it
    /// returns and on the caller's thread; on failure no unit and the error.
    static void instantiate(const AudioComponentDescription& description,
                            AudioComponentInstantiationOptions options, const Completion& completion);

    [[nodiscard]] const AudioComponentDescription& componentDescription() const noexcept
    {
        return unitDescription;
    }

    [[nodiscard]] virtual std::shared_ptr<AUParameterTree> parameterTree() const { return nullptr; }

    virtual void setParameterTree(std::shared_ptr<AUParameterTree> tree) = 0;

    [[nodiscard]] virtual std::shared_ptr<AUAudioUnitBusArray> inputBusses() = 0;
    [[nodiscard]] virtual std::shared_ptr<AUAudioUnitBusArray> outputBusses() = 0;

    /// Set before allocation; a change after it waits for the next.
    [[nodiscard]] virtual AUAudioFrameCount maximumFramesToRender() const = 0;
    virtual void setMaximumFramesToRender(AUAudioFrameCount frames) = 0;

    /// Nearly six minutes at 48 kHz: no host renders more in one cycle.
    static constexpr AUAudioFrameCount mostFramesToRender = AUAudioFrameCount{1} << 24;

    /// Prepares for rendering at the current bus formats. Throws AUError when that cannot be done: more than
    /// mostFramesToRender are to be rendered, or there is no memory. Then all is as it was before.
    void allocateRenderResources();
    void deallocateRenderResources();
    [[nodiscard]] bool renderResourcesAllocated() const noexcept;

    /// What the host calls on its render thread. It answers kAudioUnitErr_Uninitialized while no render
    /// resources are allocated, and kAudioUnitErr_TooManyFramesToProcess for a cycle longer than they were
    /// allocated for, and leaves the output as it is. It stays valid for as long as the host keeps it, even
    /// beyond the unit.
    [[nodiscard]] AURenderBlock renderBlock();

    /// The host's blocks are read at allocation.
    void setMusicalContextBlock(AUHostMusicalContextBlock block) { hostMusicalContext = std::move(block); }

    void setTransportStateBlock(AUHostTransportStateBlock block) { hostTransportState = std::move(block); }

    [[nodiscard]] const AUHostMusicalContextBlock& musicalContextBlock() const noexcept
    {
        return hostMusicalContext;
    }

    [[nodiscard]] const AUHostTransportStateBlock& transportStateBlock() const noexcept
    {
        return hostTransportState;
    }

    [[nodiscard]] virtual const std::vector<AUAudioUnitPreset>& factoryPresets() = 0;
    [[nodiscard]] virtual std::optional<AUAudioUnitPreset> currentPreset() const = 0;

    /// Chooses a preset, and with it its values; tells the observers of currentPreset.
    /// @param originator  a parameter observer that is not told of the values
    void setCurrentPreset(const std::optional<AUAudioUnitPreset>& preset,
                          AUParameterObserverToken originator = 0);

    [[nodiscard]] AUFullState fullState() const;

    /// Writes the values of the state whose identifiers the tree has, each bounded to its parameter's range,
    /// and notes the preset without applying it. Values that are not finite, and parameters that the state
    /// does not name, stay as they are. Tells the observers of fullState.
    /// @param originator  a parameter observer that is not told of the values
    void setFullState(const AUFullState& state, AUParameterObserverToken originator = 0);

    /// The observer is told, on the changer's thread, after a change as a whole.
    [[nodiscard]] ObserverToken addPropertyObserver(AUProperty property, std::function<void()> observer);
    void removePropertyObserver(AUProperty property, ObserverToken token);

protected:
    /// Makes what rendering needs for maximumFramesToRender(). Nothing renders meanwhile. What it throws
    /// leaves everything as it was.
    virtual void makeRenderResources() {}

    /// Releases what the host gave for rendering. Nothing renders by then.
    virtual void dropRenderResources() {}

    /// Renders without a check. A new block each time; it must not need the unit itself.
    [[nodiscard]] virtual AUInternalRenderBlock internalRenderBlock() = 0;

    /// Chooses the preset and writes its values on the originator's behalf.
    virtual void applyCurrentPreset(const std::optional<AUAudioUnitPreset>& preset,
                                    AUParameterObserverToken originator) = 0;

    /// Notes which preset was chosen, and no more.
    virtual void restoreCurrentPreset(const std::optional<AUAudioUnitPreset>& preset) = 0;

private:
    using Factory = std::function<std::shared_ptr<AUAudioUnit>(const AudioComponentDescription&,
                                                               AudioComponentInstantiationOptions)>;
    struct RenderLimits;

    static void registerFactory(const AudioComponentDescription& description, const std::string& name,
                                std::uint32_t version, Factory factory);
    ObserverList<>& observersOf(AUProperty property) noexcept;

    AudioComponentDescription unitDescription;
    std::shared_ptr<RenderLimits> renderLimits;
    AUHostMusicalContextBlock hostMusicalContext;
    AUHostTransportStateBlock hostTransportState;
    ObserverList<> fullStateObservers;
    ObserverList<> currentPresetObservers;
};

template <typename Unit>
void AUAudioUnit::registerSubclass(const AudioComponentDescription& description, const std::string& name,
                                   std::uint32_t version)
{
    registerFactory(description, name, version,
                    [](const AudioComponentDescription& wanted, AudioComponentInstantiationOptions options) {
                        return std::make_shared<Unit>(wanted, options);
                    });
}

} // namespace velotrine
