#include "audiounit/CycleRenderer.h"
#include "tests/audiounit/AllocationCounter.h"
#include "tests/audiounit/TestInstrument.h"

#include <array>
#include <cstddef>
#include <memory>
#include <new>
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
            const auto status = renderer.render(left.data(), right.data(), frames, last);
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

} // namespace
} // namespace velotrine
