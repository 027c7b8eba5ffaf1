#include "audiounit/VelotrineAudioUnit.h"

#include "tests/support/TestInstrument.h"

#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

class VelotrineAudioUnitLifecycle : public testing::Test
{
protected:
    void render(int cycles, AUAudioFrameCount frames = 512)
    {
        const auto block = unit->renderBlock();
        OutputBuffers output(2, frames);
        for (int cycle = 0; cycle < cycles; ++cycle)
            ASSERT_EQ(renderInto(output, block, frames), noErr);
    }

    std::shared_ptr<VelotrineAudioUnit> unit = makeInstrument();
};

TEST_F(VelotrineAudioUnitLifecycle, TakesWhateverDescriptionItIsGiven)
{
    const AudioComponentDescription description{1, 2, 3, 4, 5};
    const VelotrineAudioUnit made(description, AudioComponentInstantiationOptions::loadInProcess);
    EXPECT_EQ(made.componentDescription(), description);
}

TEST_F(VelotrineAudioUnitLifecycle, CannotBeMadeOutOfProcess)
{
    EXPECT_THROW(VelotrineAudioUnit({}, AudioComponentInstantiationOptions::loadOutOfProcess), AUError);
}

TEST_F(VelotrineAudioUnitLifecycle, HasNoInput)
{
    const auto inputs = unit->inputBusses();
    EXPECT_EQ(inputs->count(), 0U);
    EXPECT_EQ(inputs->busType(), AUAudioUnitBusType::input);
    EXPECT_EQ(&inputs->ownerAudioUnit(), unit.get());
    EXPECT_NE(unit->inputBusses(), inputs);
}

TEST_F(VelotrineAudioUnitLifecycle, HasOneStereoOutputAt44100HzUnlessTheHostChangesIt)
{
    const auto outputs = unit->outputBusses();
    ASSERT_EQ(outputs->count(), 1U);
    EXPECT_EQ(outputs->busType(), AUAudioUnitBusType::output);
    EXPECT_EQ(&outputs->ownerAudioUnit(), unit.get());
    EXPECT_EQ((*outputs)[0].format(), (AVAudioFormat{44100.0, 2}));
    (*outputs)[0].setFormat({96000.0, 2});
    EXPECT_EQ(unit->outputBusses(), outputs);
    EXPECT_EQ((*unit->outputBusses())[0].format().sampleRate, 96000.0);
}

TEST_F(VelotrineAudioUnitLifecycle, RendersUpTo512FramesUntilTheHostSetsAnotherNumber)
{
    EXPECT_EQ(unit->maximumFramesToRender(), 512U);
    unit->setMaximumFramesToRender(4096);
    EXPECT_EQ(unit->maximumFramesToRender(), 4096U);
}

TEST_F(VelotrineAudioUnitLifecycle, HasNoVoicesBeforeItIsAllocated)
{
    EXPECT_EQ(unit->dspKernel->voicePool, nullptr);
    OutputBuffers output(2, 64);
    EXPECT_EQ(renderInto(output, unit->renderBlock(), 64), kAudioUnitErr_Uninitialized);
    EXPECT_TRUE(output.isUntouched(0));
}

TEST_F(VelotrineAudioUnitLifecycle, AllocationSetsTheKernelUpForTheMaximumAndTheBussesRate)
{
    unit->setMaximumFramesToRender(1000);
    (*unit->outputBusses())[0].setFormat({48000.0, 2});
    unit->allocateRenderResources();
    const auto& kernel = *unit->dspKernel;
    EXPECT_EQ(kernel.maxFrames, 1000);
    EXPECT_EQ(kernel.sampleRate, 48000.0);
    EXPECT_EQ(kernel.scratchBuf, std::vector<float>(1000, 0.0f));
    ASSERT_NE(kernel.voicePool, nullptr);
    EXPECT_EQ(kernel.voicePool->voices[15].sampleRate, 48000.0);
}

TEST_F(VelotrineAudioUnitLifecycle, RefusesMoreFramesThanTheMaximum)
{
    unit->allocateRenderResources();
    OutputBuffers output(2, 513);
    EXPECT_EQ(renderInto(output, unit->renderBlock(), 513), kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_TRUE(output.isUntouched(0) && output.isUntouched(1));
    EXPECT_EQ(renderInto(output, unit->renderBlock(), 512), noErr);
}

TEST_F(VelotrineAudioUnitLifecycle, RendersAsManyFramesAsItTakesAndRefusesMoreThanIntegersHold)
{
    constexpr auto most = AUAudioUnit::mostFramesToRender;
    unit->setMaximumFramesToRender(most);
    unit->allocateRenderResources();
    unit->dspKernel->sync = false;
    unit->dspKernel->internalPlaying = true;
    OutputBuffers output(1, most);
    const auto block = unit->renderBlock();
    EXPECT_EQ(renderInto(output, block, most), noErr);
    EXPECT_GT(unit->dspKernel->droppedNoteEvents, 0) << "six minutes of notes";
    EXPECT_EQ(renderInto(output, block, INT32_MAX), kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_EQ(renderInto(output, block, AUAudioFrameCount{INT32_MAX} + 1),
              kAudioUnitErr_TooManyFramesToProcess);
}

TEST_F(VelotrineAudioUnitLifecycle, AFormatChangeTakesEffectAtTheNextAllocation)
{
    unit->allocateRenderResources();
    (*unit->outputBusses())[0].setFormat({96000.0, 2});
    render(1);
    EXPECT_EQ(unit->dspKernel->sampleRate, 44100.0);
    unit->deallocateRenderResources();
    EXPECT_EQ(unit->dspKernel->sampleRate, 44100.0);
    unit->allocateRenderResources();
    EXPECT_EQ(unit->dspKernel->sampleRate, 96000.0);
    EXPECT_EQ(unit->dspKernel->voicePool->voices[0].sampleRate, 96000.0);
}

TEST_F(VelotrineAudioUnitLifecycle, ASecondAllocationCutsSoundingNotesAndStartsTheClockAgain)
{
    unit = makePlayingInstrument();
    render(40);
    auto& kernel = *unit->dspKernel;
    ASSERT_FALSE(kernel.voicePool->triggerOrder.empty());
    ASSERT_GT(kernel.clockPhase, 0.0);

    unit->allocateRenderResources();
    EXPECT_TRUE(kernel.voicePool->triggerOrder.empty());
    for (const auto& voice : kernel.voicePool->voices)
        EXPECT_FALSE(voice.active);
    EXPECT_EQ(kernel.clockPhase, 0.0);
    EXPECT_EQ(kernel.clockPhaseBuf, 0.0);
    EXPECT_EQ(kernel.lastPitchClass, -1);
    for (std::size_t ring = 0; ring < ringCount; ++ring) {
        EXPECT_EQ(kernel.activityPhases[ring], 0.0);
        EXPECT_EQ(kernel.lfoOffsets[ring], 0.0);
    }
}

TEST_F(VelotrineAudioUnitLifecycle, ParametersHostValuesAndRandomStateSurviveAnAllocation)
{
    unit = makePlayingInstrument();
    render(40);
    auto& kernel = *unit->dspKernel;
    kernel.hostTempo = 97.0;
    const auto values = valuesOf(kernel);
    const auto random = kernel.rngState;
    ASSERT_NE(random, 12345U);
    unit->deallocateRenderResources();
    unit->allocateRenderResources();
    EXPECT_EQ(valuesOf(kernel), values);
    EXPECT_EQ(kernel.rngState, random);
    EXPECT_EQ(kernel.hostTempo, 97.0);
    EXPECT_TRUE(kernel.internalPlaying);
}

TEST_F(VelotrineAudioUnitLifecycle, DeallocationLeavesTheKernelAndItsVoicesAsTheyAre)
{
    unit = makePlayingInstrument();
    render(40);
    auto& kernel = *unit->dspKernel;
    const auto sounding = kernel.voicePool->triggerOrder.size();
    const auto clock = kernel.clockPhase;
    ASSERT_GT(sounding, 0U);
    unit->deallocateRenderResources();
    EXPECT_EQ(kernel.voicePool->triggerOrder.size(), sounding);
    EXPECT_EQ(kernel.clockPhase, clock);
    OutputBuffers output(2, 64);
    EXPECT_EQ(renderInto(output, unit->renderBlock(), 64), kAudioUnitErr_Uninitialized);
    EXPECT_EQ(kernel.clockPhase, clock);
}

TEST_F(VelotrineAudioUnitLifecycle, KeepsItsKernelForLife)
{
    const auto* const kernel = unit->dspKernel.get();
    unit->allocateRenderResources();
    unit->deallocateRenderResources();
    unit->allocateRenderResources();
    EXPECT_EQ(unit->dspKernel.get(), kernel);
}

TEST_F(VelotrineAudioUnitLifecycle, ARenderBlockKeepsPlayingWhenTheUnitIsGone)
{
    unit = makePlayingInstrument();
    const auto twin = makePlayingInstrument();
    const auto orphan = unit->renderBlock();
    const auto kept = twin->renderBlock();
    const std::weak_ptr<VelotrineAudioUnit> released = unit;
    unit.reset();
    ASSERT_TRUE(released.expired());

    float peak = 0.0f;
    for (int cycle = 0; cycle < 40; ++cycle) {
        OutputBuffers fromOrphan(2, 512);
        OutputBuffers expected(2, 512);
        ASSERT_EQ(renderInto(fromOrphan, orphan, 512), noErr);
        ASSERT_EQ(renderInto(expected, kept, 512), noErr);
        ASSERT_EQ(fromOrphan[0], expected[0]);
        for (const float sample : expected[0])
            peak = std::max(peak, sample);
    }
    EXPECT_GT(peak, 0.01f);
}

TEST_F(VelotrineAudioUnitLifecycle, AReplacedTreeIsKeptAsItIs)
{
    const auto tree = AUParameterTree::createTree({});
    unit->setParameterTree(tree);
    EXPECT_EQ(unit->parameterTree(), tree);
    unit->setParameterTree(nullptr);
    EXPECT_EQ(unit->parameterTree(), nullptr);
}

} // namespace
} // namespace velotrine
