#include "audiounit/VelotrineAudioUnit.h"

#include "tests/support/TestInstrument.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// Linked in the order of the values.
class EventList
{
public:
    explicit EventList(std::vector<AURenderEvent> values) : events(std::move(values))
    {
        for (std::size_t i = 0; i + 1 < events.size(); ++i)
            events[i].next = &events[i + 1];
    }

    [[nodiscard]] const AURenderEvent* head() const { return events.empty() ? nullptr : events.data(); }

private:
    std::vector<AURenderEvent> events;
};

AURenderEvent event(AURenderEventType type, AUParameterAddress address, float value)
{
    AURenderEvent made;
    made.eventType = type;
    made.parameterAddress = address;
    made.value = value;
    return made;
}

AURenderEvent write(AUParameterAddress address, float value)
{
    return event(AURenderEventType::parameter, address, value);
}

constexpr AUAudioFrameCount frames = 512;

/// Enough cycles for notes to sound.
constexpr int manyCycles = 40;

class VelotrineAudioUnitRender : public testing::Test
{
protected:
    AUAudioUnitStatus render(const EventList& events)
    {
        return renderInto(stereo, unit->renderBlock(), frames, events.head());
    }

    std::shared_ptr<VelotrineAudioUnit> unit = makePlayingInstrument();
    VelotrineDSPKernel& kernel = *unit->dspKernel;
    OutputBuffers stereo{2, frames};
};

TEST_F(VelotrineAudioUnitRender, WritesTheSameFiniteSoundToBothChannels)
{
    float peak = 0.0f;
    for (int cycle = 0; cycle < manyCycles; ++cycle) {
        ASSERT_EQ(render(EventList({})), noErr);
        ASSERT_EQ(stereo[0], stereo[1]);
        for (const float sample : stereo[0]) {
            ASSERT_LE(std::abs(sample), 1.0f);
            peak = std::max(peak, std::abs(sample));
        }
    }
    EXPECT_GT(peak, 0.01f);
}

TEST_F(VelotrineAudioUnitRender, WritesAsManyFramesAsAskedForAndNoMore)
{
    const auto block = unit->renderBlock();
    ASSERT_EQ(renderInto(stereo, block, 100), noErr);
    for (const std::size_t channel : {0U, 1U}) {
        EXPECT_EQ(std::ranges::count(stereo[channel], OutputBuffers::untouched), frames - 100);
        EXPECT_NE(stereo[channel][99], OutputBuffers::untouched);
        EXPECT_EQ(stereo[channel][100], OutputBuffers::untouched);
    }
    EXPECT_NEAR(kernel.clockPhase, 100 * 300.0 / (4.0 * 60.0 * 44100.0), 1e-15);
}

TEST_F(VelotrineAudioUnitRender, OfNoFramesWritesNothing)
{
    EXPECT_EQ(renderInto(stereo, unit->renderBlock(), 0), noErr);
    EXPECT_TRUE(stereo.isUntouched(0) && stereo.isUntouched(1));
    EXPECT_EQ(kernel.clockPhase, 0.0);
}

TEST_F(VelotrineAudioUnitRender, ReplacesWhatTheHostLeftInTheBuffers)
{
    kernel.internalPlaying = false;
    ASSERT_EQ(render(EventList({})), noErr);
    EXPECT_EQ(stereo[0], std::vector<float>(frames, 0.0f));
    EXPECT_EQ(stereo[1], std::vector<float>(frames, 0.0f));
}

TEST_F(VelotrineAudioUnitRender, NeedsNoFlagsTimestampOrInput)
{
    const auto block = unit->renderBlock();
    EXPECT_EQ(block(nullptr, nullptr, frames, 5, &stereo.list, nullptr, nullptr), noErr);
    EXPECT_FALSE(stereo.isUntouched(0));
}

TEST_F(VelotrineAudioUnitRender, ToAMonoOutputWritesTheSameAsToStereo)
{
    const auto twin = makePlayingInstrument();
    const auto stereoBlock = twin->renderBlock();
    const auto monoBlock = unit->renderBlock();
    OutputBuffers mono(1, frames);
    float peak = 0.0f;
    for (int cycle = 0; cycle < manyCycles; ++cycle) {
        ASSERT_EQ(renderInto(mono, monoBlock, frames), noErr);
        ASSERT_EQ(renderInto(stereo, stereoBlock, frames), noErr);
        ASSERT_EQ(mono[0], stereo[0]);
        peak = std::max(peak, std::ranges::max(mono[0]));
    }
    EXPECT_GT(peak, 0.01f);
}

TEST_F(VelotrineAudioUnitRender, LeavesAThirdBufferAlone)
{
    OutputBuffers three(3, frames);
    ASSERT_EQ(renderInto(three, unit->renderBlock(), frames), noErr);
    EXPECT_FALSE(three.isUntouched(0) || three.isUntouched(1));
    EXPECT_TRUE(three.isUntouched(2));
}

TEST_F(VelotrineAudioUnitRender, LeavesAThirdBufferWithoutDataAlone)
{
    OutputBuffers three(3, frames);
    three.withhold(2);
    EXPECT_EQ(renderInto(three, unit->renderBlock(), frames), noErr);
    EXPECT_FALSE(three.isUntouched(0));
}

TEST_F(VelotrineAudioUnitRender, WithNowhereToWriteToDoesNotMoveTheInstrument)
{
    for (int cycle = 0; cycle < manyCycles; ++cycle)
        ASSERT_EQ(render(EventList({})), noErr);
    ASSERT_FALSE(kernel.voicePool->triggerOrder.empty());
    const auto clock = kernel.clockPhase;
    const auto random = kernel.rngState;
    const auto amplitude = kernel.voicePool->voices[0].amplitude;

    const auto block = unit->renderBlock();
    OutputBuffers none(0, frames);
    OutputBuffers withoutData(1, frames);
    withoutData.withhold(0);
    for (int cycle = 0; cycle < manyCycles; ++cycle) {
        EXPECT_EQ(renderInto(none, block, frames), noErr);
        EXPECT_EQ(renderInto(withoutData, block, frames), noErr);
        EXPECT_EQ(block(nullptr, nullptr, frames, 0, nullptr, nullptr, nullptr), noErr);
    }
    EXPECT_EQ(kernel.clockPhase, clock);
    EXPECT_EQ(kernel.rngState, random);
    EXPECT_EQ(kernel.voicePool->voices[0].amplitude, amplitude);
    EXPECT_TRUE(withoutData.isUntouched(0));
}

TEST_F(VelotrineAudioUnitRender, AppliesEventsEvenWhenThereIsNowhereToWriteTo)
{
    OutputBuffers none(0, frames);
    ASSERT_EQ(renderInto(none, unit->renderBlock(), frames, EventList({write(7, 0.1f)}).head()), noErr);
    EXPECT_EQ(kernel.volume, 0.1f);
}

TEST_F(VelotrineAudioUnitRender, AnEventReachesEveryAddressAsAWriteToTheTreeDoes)
{
    const auto twin = makeInstrument();
    std::vector<AURenderEvent> events;
    for (ParameterAddress address = 0; address < parameterCount; ++address) {
        const float value = static_cast<float>(address) * 0.01f + 1.75f;
        events.push_back(write(address, value));
        twin->parameterTree()->parameterWithAddress(address)->setValue(value);
    }
    kernel.internalPlaying = false;
    ASSERT_EQ(render(EventList(events)), noErr);
    EXPECT_EQ(valuesOf(kernel), valuesOf(*twin->dspKernel));
    EXPECT_EQ(kernel.spotCounts[0], 1);
}

TEST_F(VelotrineAudioUnitRender, AnEventSwitchesSyncOnAboveOneHalfAndOffAtIt)
{
    ASSERT_EQ(render(EventList({write(8, 0.51f)})), noErr);
    EXPECT_TRUE(kernel.sync);
    ASSERT_EQ(render(EventList({write(8, 0.5f)})), noErr);
    EXPECT_FALSE(kernel.sync);
}

TEST_F(VelotrineAudioUnitRender, TheLastOfTwoEventsOnOneAddressWins)
{
    ASSERT_EQ(render(EventList({write(0, 0.1f), write(1, 0.3f), write(0, 0.9f)})), noErr);
    EXPECT_EQ(kernel.activity, 0.9f);
    EXPECT_EQ(kernel.boredom, 0.3f);
    ASSERT_EQ(render(EventList({write(0, 0.9f), write(0, 0.1f)})), noErr);
    EXPECT_EQ(kernel.activity, 0.1f);
}

TEST_F(VelotrineAudioUnitRender, TakesEventsInListOrderWhateverTheirTimes)
{
    auto late = write(0, 0.1f);
    late.eventSampleTime = 1000000;
    auto early = write(0, 0.9f);
    early.eventSampleTime = -5;
    ASSERT_EQ(render(EventList({late, early})), noErr);
    EXPECT_EQ(kernel.activity, 0.9f);
}

TEST_F(VelotrineAudioUnitRender, ARampJumpsToItsEndValueForTheWholeCycle)
{
    const auto twin = makePlayingInstrument();
    for (int cycle = 0; cycle < manyCycles; ++cycle) {
        ASSERT_EQ(render(EventList({})), noErr);
        ASSERT_EQ(renderInto(stereo, twin->renderBlock(), frames), noErr);
    }
    setValue(*twin, "volume", 0.2f);
    OutputBuffers expected(2, frames);
    ASSERT_EQ(renderInto(expected, twin->renderBlock(), frames), noErr);

    auto ramp = event(AURenderEventType::parameterRamp, 7, 0.2f);
    ramp.rampDurationSampleFrames = 48000;
    ramp.eventSampleTime = 400;
    ASSERT_EQ(render(EventList({ramp})), noErr);
    EXPECT_EQ(kernel.volume, 0.2f);
    EXPECT_EQ(stereo[0], expected[0]);
    EXPECT_GT(std::ranges::max(stereo[0]), 0.001f);
    ASSERT_EQ(render(EventList({})), noErr);
    EXPECT_EQ(kernel.volume, 0.2f);
}

TEST_F(VelotrineAudioUnitRender, ARampOfWhatCannotRampIsAppliedAlike)
{
    ASSERT_EQ(render(EventList({event(AURenderEventType::parameterRamp, 10, 5.9f)})), noErr);
    EXPECT_EQ(kernel.spotCounts[1], 5);
}

TEST_F(VelotrineAudioUnitRender, OtherEventsChangeNothing)
{
    const auto twin = makePlayingInstrument();
    const auto before = valuesOf(kernel);
    std::vector<AURenderEvent> events;
    for (const auto type :
         {AURenderEventType::midi, AURenderEventType::midiSysEx, AURenderEventType::midiEventList,
          static_cast<AURenderEventType>(0), static_cast<AURenderEventType>(200)}) {
        events.push_back(event(type, 7, 0.0f));
        events.back().midiData = {0x90, 60, 100};
    }
    const EventList list(events);
    for (int cycle = 0; cycle < manyCycles; ++cycle) {
        OutputBuffers expected(2, frames);
        ASSERT_EQ(render(list), noErr);
        ASSERT_EQ(renderInto(expected, twin->renderBlock(), frames), noErr);
        ASSERT_EQ(stereo[0], expected[0]);
    }
    EXPECT_EQ(valuesOf(kernel), before);
}

TEST_F(VelotrineAudioUnitRender, EventsBehindOnesThatChangeNothingStillCount)
{
    ASSERT_EQ(render(EventList({event(AURenderEventType::midi, 0, 0.0f), write(7, 0.25f)})), noErr);
    EXPECT_EQ(kernel.volume, 0.25f);
}

TEST_F(VelotrineAudioUnitRender, EventsAtUnknownAddressesAreIgnored)
{
    const auto before = valuesOf(kernel);
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    ASSERT_EQ(render(EventList({write(39, 0.5f), write(UINT64_MAX, notANumber)})), noErr);
    EXPECT_EQ(valuesOf(kernel), before);
}

TEST_F(VelotrineAudioUnitRender, ABlockMadeBeforeAnotherPlaysTheSameInstrument)
{
    const auto first = unit->renderBlock();
    const auto second = unit->renderBlock();
    ASSERT_EQ(renderInto(stereo, first, frames), noErr);
    const auto clock = kernel.clockPhase;
    ASSERT_EQ(renderInto(stereo, second, frames), noErr);
    EXPECT_GT(kernel.clockPhase, clock);
}

using VelotrineAudioUnitRenderDeathTest = VelotrineAudioUnitRender;

TEST_F(VelotrineAudioUnitRenderDeathTest, AStereoOutputWithoutMemoryForAChannelIsFatal)
{
    for (const std::size_t channel : {0U, 1U}) {
        OutputBuffers incomplete(2, frames);
        incomplete.withhold(channel);
        EXPECT_DEATH(renderInto(incomplete, unit->renderBlock(), frames), "velotrine: fatal: .*stereo")
            << channel;
    }
}

TEST_F(VelotrineAudioUnitRenderDeathTest, AnEventWithACountThatIsNoWholeNumberIsFatal)
{
    for (const float value :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 1e19f}) {
        EXPECT_DEATH(render(EventList({write(9, value)})), "velotrine: fatal: ") << value;
        EXPECT_DEATH(render(EventList({event(AURenderEventType::parameterRamp, 28, value)})),
                     "velotrine: fatal: ")
            << value;
    }
}

} // namespace
} // namespace velotrine
