#include "audiounit/CycleRenderer.h"
#include "audiounit/StateText.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/TestInstrument.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(AllocationCounter, CountsWhatItsThreadTakesAndGivesBack)
{
    const AllocationCounter counter;
    void* const memory = ::operator new(16);
    EXPECT_EQ(counter.count(), 1);
    void* const aligned = ::operator new (16, std::align_val_t{64});
    EXPECT_EQ(counter.count(), 2);
    ::operator delete(memory);
    ::operator delete (aligned, std::align_val_t{64});
    EXPECT_EQ(counter.count(), 4);
}

TEST(AllocationCounter, CountsWhatACycleRendererTakesForItself)
{
    CycleRenderer renderer;
    const AllocationCounter counter;
    renderer.setup({});
    EXPECT_GE(counter.count(), 2);
}

TEST(RenderAllocation, ACycleRendererThatIsSetUpNeitherTakesNorGivesBackMemory)
{
    const auto unit = makePlayingInstrument();
    CycleRenderer renderer;
    renderer.setup(unit->renderBlock());
    std::vector<float> left(4096);
    std::vector<float> right(4096);
    std::size_t notes = 0;
    AUAudioUnitStatus worst = noErr;

    const AllocationCounter counter;
    for (int round = 0; round < 20; ++round) {
        for (const int frames : {1, 17, 64, 512, 4096}) {
            const auto last =
                round % 2 == 0 ? CycleRenderer::LastCycle::whole : CycleRenderer::LastCycle::cutShort;
            const auto status = renderer.render({left.data(), right.data()}, frames, last);
            worst = worst != noErr ? worst : status;
            notes += unit->dspKernel->noteEvents().size();
        }
    }
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(worst, noErr);
    EXPECT_GT(notes, 0U);
}

TEST(RenderAllocation, ARenderBlockWithEventsAndAHostNeitherTakesNorGivesBackMemory)
{
    const auto unit = makePlayingInstrument();
    unit->setMusicalContextBlock([](double* tempo, double* numerator, std::int64_t* denominator, auto...) {
        *tempo = 240.0;
        *numerator = 7.0;
        *denominator = 8;
        return true;
    });
    unit->setTransportStateBlock([](AUHostTransportStateFlags* flags, auto...) {
        *flags = AUHostTransportStateMoving;
        return true;
    });
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();
    OutputBuffers output(2, 512);

    // Every parameter in every cycle, now at its preset's value, now as a ramp; and what is not for us.
    std::array<AURenderEvent, parameterCount + 1> events{};
    for (std::size_t i = 0; i < parameterCount; ++i) {
        events[i].next = &events[i + 1];
        events[i].parameterAddress = i;
        events[i].eventType = i % 2 == 0 ? AURenderEventType::parameter : AURenderEventType::parameterRamp;
    }
    events[parameterCount].eventType = AURenderEventType::midi;
    const auto& presets = unit->factoryPresets();
    std::array<std::array<float, parameterCount>, 10> values{};
    for (std::size_t number = 0; number < presets.size(); ++number) {
        unit->setCurrentPreset(presets[number]);
        values[number] = valuesOf(*unit->dspKernel);
    }

    std::size_t notes = 0;
    AUAudioUnitStatus worst = noErr;
    const AllocationCounter counter;
    for (std::size_t cycle = 0; cycle < 1000; ++cycle) {
        for (std::size_t i = 0; i < parameterCount; ++i)
            events[i].value = values[cycle % values.size()][i];
        events[8].value = cycle / 100 % 2 == 0 ? 1.0f : 0.0f; // sync
        const auto status = renderInto(output, block, 512, events.data());
        worst = worst != noErr ? worst : status;
        notes += unit->dspKernel->noteEvents().size();
    }
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(worst, noErr);
    EXPECT_GT(notes, 100U);
}

TEST(AllocationFailure, ComesAfterTheAllocationsThatGoWell)
{
    const AllocationFailure shortage(1, AllocationFailure::Then::fail);
    void* const memory = ::operator new(16);
    EXPECT_THROW(::operator delete(::operator new(16)), std::bad_alloc);
    EXPECT_EQ(::operator new(16, std::nothrow), nullptr);
    ::operator delete(memory);
}

/// Tries to allocate a unit's render resources with ever more memory, until it works. Calls the check after
/// each failure. Returns how often it failed.
template <typename Check>
int allocateInShortages(VelotrineAudioUnit& unit, Check&& check)
{
    for (int failures = 0;; ++failures) {
        auto status = noErr;
        try {
            const AllocationFailure shortage(failures, AllocationFailure::Then::fail);
            unit.allocateRenderResources();
        } catch (const AUError& error) {
            status = error.status();
        }
        if (status == noErr)
            return failures;
        EXPECT_EQ(status, kAudioUnitErr_FailedInitialization);
        check();
    }
}

TEST(AllocationWithoutMemory, LeavesAUnitThatWasNotAllocatedWithoutRenderResources)
{
    const auto unit = makeInstrument();
    const auto block = unit->renderBlock();
    OutputBuffers output(2, 64);
    const int failures = allocateInShortages(*unit, [&] {
        EXPECT_FALSE(unit->renderResourcesAllocated());
        EXPECT_EQ(unit->dspKernel->voicePool, nullptr);
        EXPECT_EQ(renderInto(output, block, 64), kAudioUnitErr_Uninitialized);
    });
    EXPECT_GE(failures, 2) << "voices and mix take memory";
    EXPECT_EQ(renderInto(output, block, 64), noErr);
}

TEST(AllocationWithoutMemory, LeavesAUnitThatPlaysPlayingOn)
{
    const auto unit = makePlayingInstrument();
    const auto undisturbed = makePlayingInstrument();
    for (const auto& each : {unit, undisturbed}) {
        each->setMusicalContextBlock([memory = std::array<double, 16>{}](auto...) { return memory[0] > 0; });
        each->allocateRenderResources();
    }
    const auto block = unit->renderBlock();
    const auto expectedBlock = undisturbed->renderBlock();
    unit->setMaximumFramesToRender(8192);
    (*unit->outputBusses())[0].setFormat({96000.0, 2});
    OutputBuffers output(2, 8192);
    const int failures = allocateInShortages(*unit, [&] {
        EXPECT_TRUE(unit->renderResourcesAllocated());
        EXPECT_EQ(unit->dspKernel->sampleRate, 44100.0);
        EXPECT_EQ(renderInto(output, block, 513), kAudioUnitErr_TooManyFramesToProcess);
        for (int cycle = 0; cycle < 40; ++cycle) {
            OutputBuffers expected(2, 512);
            ASSERT_EQ(renderInto(output, block, 512), noErr);
            ASSERT_EQ(renderInto(expected, expectedBlock, 512), noErr);
            ASSERT_TRUE(std::equal(expected[0].begin(), expected[0].end(), output[0].begin()));
        }
        EXPECT_FALSE(unit->dspKernel->voicePool->triggerOrder.empty());
    });
    EXPECT_GE(failures, 3) << "voices, mix and the host's block take memory";
    EXPECT_EQ(renderInto(output, block, 8192), noErr);
    EXPECT_EQ(unit->dspKernel->sampleRate, 96000.0);
}

TEST(SavingWithoutMemory, ThrowsAndDoesNotEndTheProgram)
{
    const auto unit = makeInstrument();
    selectPreset(*unit, 3);
    const auto expected = textFromState(unit->fullState());
    std::string text;
    int failures = 0;
    for (bool done = false; !done; ++failures) {
        try {
            const AllocationFailure shortage(failures, AllocationFailure::Then::fail);
            text = textFromState(unit->fullState());
            done = true;
        } catch (const std::bad_alloc&) {
            ASSERT_TRUE(text.empty());
        }
    }
    EXPECT_EQ(text, expected);
    EXPECT_GT(failures, 39) << "each parameter takes memory";
}

} // namespace
} // namespace velotrine
