#pragma once

#include "engine/Nonblocking.h"
#include "engine/VelotrineDSPKernel.h"
#include "platform/AUAudioUnit.h"

#include <memory>
#include <optional>
#include <vector>

namespace velotrine {

/// Names of what a state says beside the parameters; see VelotrineDSPKernel.
inline constexpr auto seedKey = "seed";
inline constexpr auto sameMusicAtEveryStartKey = "sameMusicAtEveryStart";

/// The instrument as a host sees it: 39 parameters, ten presets, one stereo output, no input, no MIDI.
/// Threads: see AUAudioUnit. The kernel may be read and written as VelotrineDSPKernel says.
///
/// Values are taken as they are, from the tree as from events, and bounded where they are read. What no bound
/// can mend is a mistake of the caller and stops the program through fatalError:
/// - a number of spots or an octave that is not finite or beyond 64 bits, when it is written;
/// - such a root or scale, an octave whose notes are beyond 64 bits, or a timbre that is NaN, when a note is
///   drawn;
/// - while the clock runs, an Activity, Calories or phase, or a tempo of the host, that leaves the hand on a
///   ring with spots at no finite position;
/// - a stereo output that lacks the memory of a channel, when it is rendered into;
/// - no standard stereo format, when the unit is made, or no output bus, when it is asked for.
class VelotrineAudioUnit final : public AUAudioUnit
{
public:
    /// Throws AUError when the base class or the output bus cannot be made.
    VelotrineAudioUnit(const AudioComponentDescription& description,
                       AudioComponentInstantiationOptions options);

    [[nodiscard]] std::shared_ptr<AUParameterTree> parameterTree() const override { return _parameterTree; }

    void setParameterTree(std::shared_ptr<AUParameterTree> tree) override
    {
        _parameterTree = std::move(tree);
    }

    [[nodiscard]] std::shared_ptr<AUAudioUnitBusArray> inputBusses() override;
    [[nodiscard]] std::shared_ptr<AUAudioUnitBusArray> outputBusses() override;

    [[nodiscard]] AUAudioFrameCount maximumFramesToRender() const override { return maxFrames; }

    void setMaximumFramesToRender(AUAudioFrameCount frames) override { maxFrames = frames; }

    [[nodiscard]] const std::vector<AUAudioUnitPreset>& factoryPresets() override;

    [[nodiscard]] std::optional<AUAudioUnitPreset> currentPreset() const override { return _currentPreset; }

    /// Never replaced. Parameters are written through the tree or, while rendering, by events.
    const std::shared_ptr<VelotrineDSPKernel> dspKernel = std::make_shared<VelotrineDSPKernel>();

protected:
    void makeRenderResources() override;
    void dropRenderResources() override;
    [[nodiscard]] AUInternalRenderBlock internalRenderBlock() override;
    void applyCurrentPreset(const std::optional<AUAudioUnitPreset>& preset,
                            AUParameterObserverToken originator) override;
    void restoreCurrentPreset(const std::optional<AUAudioUnitPreset>& preset) override;
    void addFurtherValues(AUFullState& state) const override;
    void restoreFurtherValues(const AUFullState& state) override;

private:
    /// The host's blocks, which come at allocation, behind an object that a render block can hold from
    /// before.
    struct ContextHolder
    {
        AUHostMusicalContextBlock musicalContext;
        AUHostTransportStateBlock transportState;
    };

    /// The kernel for as long as the unit lives, for closures that may outlive both.
    struct KernelHandle
    {
        std::shared_ptr<VelotrineDSPKernel> kernel;
    };

    static void readHostContext(VelotrineDSPKernel& kernel,
                                const ContextHolder& context) noexcept VELOTRINE_NONBLOCKING;
    static void applyEvents(VelotrineDSPKernel& kernel,
                            const AURenderEvent* events) noexcept VELOTRINE_NONBLOCKING;
    static void renderInto(VelotrineDSPKernel& kernel, const AudioBufferList& output,
                           int frameCount) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] std::shared_ptr<AUParameterTree> makeParameterTree() const;
    [[nodiscard]] const std::shared_ptr<AUAudioUnitBus>& existingOutputBus() const noexcept;

    std::shared_ptr<KernelHandle> kernelHandle = std::make_shared<KernelHandle>(KernelHandle{dspKernel});
    std::shared_ptr<ContextHolder> contextHolder = std::make_shared<ContextHolder>();
    std::shared_ptr<AUParameterTree> _parameterTree;
    std::shared_ptr<AUAudioUnitBus> outputBus;
    std::shared_ptr<AUAudioUnitBusArray> _outputBusses;
    AUAudioFrameCount maxFrames = 512;
    std::optional<AVAudioFormat> pcmFormat;
    std::vector<AUAudioUnitPreset> _factoryPresets;
    std::optional<AUAudioUnitPreset> _currentPreset;
};

} // namespace velotrine
