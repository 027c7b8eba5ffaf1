#include "audiounit/CycleRenderer.h"

#include "engine/Nonblocking.h"
#include "tests/support/TestInstrument.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using LastCycle = CycleRenderer::LastCycle;

constexpr float untouched = 7.5f;

/// A unit that counts: its left channel is 0, 1, 2..., its right one the same below zero.
struct CountingUnit
{
    AURenderBlock block()
    {
        return [this](AudioUnitRenderActionFlags* flags, const AudioTimeStamp* timestamp,
                      AUAudioFrameCount frames, int, AudioBufferList* output, const AURenderEvent* events,
                      const AURenderPullInputBlock*) -> AUAudioUnitStatus {
            wellFormed = wellFormed && flags != nullptr && events == nullptr &&
                         output->mBuffers.size() == 2 &&
                         output->mBuffers[0].mDataByteSize == frames * sizeof(float) &&
                         output->mBuffers[1].mDataByteSize == frames * sizeof(float);
            VELOTRINE_MAY_BLOCK();
            cycles.push_back(static_cast<int>(frames));
            times.push_back(timestamp->mSampleTime);
            if (cycles.size() == refusedCycle)
                return -42;
            auto* const left = static_cast<float*>(output->mBuffers[0].mData);
            auto* const right = static_cast<float*>(output->mBuffers[1].mData);
            for (AUAudioFrameCount i = 0; i < frames; ++i) {
                left[i] = static_cast<float>(next);
                right[i] = -static_cast<float>(next);
                ++next;
            }
            return noErr;
        };
    }

    std::vector<int> cycles;
    std::vector<double> times;
    std::size_t refusedCycle = 0; ///< counted from 1
    int next = 0;
    bool wellFormed = true;
};

class CycleRendererOfACountingUnit : public testing::Test
{
protected:
    CycleRendererOfACountingUnit() { renderer.setup(unit.block()); }

    AUAudioUnitStatus pull(int frames, LastCycle lastCycle = LastCycle::whole)
    {
        const auto room = static_cast<std::size_t>(std::max(frames, 0)) + 1;
        left.assign(room, untouched);
        right.assign(room, untouched);
        return renderer.render({left.data(), right.data()}, frames, lastCycle);
    }

    /// That the last pull gave `count` frames, numbered from `first` on, and wrote no further.
    void expectFrames(int first, int count)
    {
        std::vector<float> expected(static_cast<std::size_t>(count));
        std::iota(expected.begin(), expected.end(), static_cast<float>(first));
        expected.push_back(untouched);
        EXPECT_EQ(left, expected);
        std::transform(expected.begin(), expected.end() - 1, expected.begin(), std::negate<>());
        EXPECT_EQ(right, expected);
    }

    CountingUnit unit;
    CycleRenderer renderer;
    std::vector<float> left;
    std::vector<float> right;
};

TEST_F(CycleRendererOfACountingUnit, AsksForCyclesOf32FramesByDefault)
{
    EXPECT_EQ(CycleRenderer::defaultCycleFrames, 32);
    EXPECT_EQ(pull(100), noErr);
    EXPECT_EQ(unit.cycles, (std::vector{32, 32, 32, 32}));
    EXPECT_TRUE(unit.wellFormed);
}

TEST_F(CycleRendererOfACountingUnit, DelaysNothing)
{
    EXPECT_EQ(pull(1), noErr);
    expectFrames(0, 1);
}

TEST_F(CycleRendererOfACountingUnit, CarriesOverWhatACallLeavesOfACycle)
{
    EXPECT_EQ(renderer.framesLeftOver(), 0);
    pull(10);
    expectFrames(0, 10);
    EXPECT_EQ(renderer.framesLeftOver(), 22);
    pull(22);
    expectFrames(10, 22);
    EXPECT_EQ(renderer.framesLeftOver(), 0);
    EXPECT_EQ(unit.cycles.size(), 1U);
    pull(33);
    expectFrames(32, 33);
    EXPECT_EQ(renderer.framesLeftOver(), 31);
    EXPECT_EQ(unit.cycles.size(), 3U);
}

TEST_F(CycleRendererOfACountingUnit, HandsOutEveryFrameOnceAndInOrderWhateverIsAskedFor)
{
    std::mt19937 random(4);
    int handedOut = 0;
    for (int call = 0; call < 500; ++call) {
        const int frames = static_cast<int>(random() % 200);
        ASSERT_EQ(pull(frames), noErr);
        expectFrames(handedOut, frames);
        handedOut += frames;
        ASSERT_EQ(unit.next, (handedOut + 31) / 32 * 32);
        ASSERT_EQ(renderer.framesLeftOver(), unit.next - handedOut);
    }
    EXPECT_TRUE(std::ranges::all_of(unit.cycles, [](int frames) { return frames == 32; }));
}

TEST_F(CycleRendererOfACountingUnit, GivesNothingForFewerThanOneFrame)
{
    for (const int frames : {0, -1, -1000}) {
        EXPECT_EQ(pull(frames), noErr);
        EXPECT_EQ(left, std::vector{untouched});
        EXPECT_EQ(right, std::vector{untouched});
    }
    EXPECT_TRUE(unit.cycles.empty());
}

TEST_F(CycleRendererOfACountingUnit, TellsTheUnitHowManyFramesWentBefore)
{
    pull(70);
    pull(30, LastCycle::cutShort);
    pull(1);
    EXPECT_EQ(unit.cycles, (std::vector{32, 32, 32, 4, 32}));
    EXPECT_EQ(unit.times, (std::vector{0.0, 32.0, 64.0, 96.0, 100.0}));
}

TEST_F(CycleRendererOfACountingUnit, CutShortRendersExactlyWhatIsAskedFor)
{
    EXPECT_EQ(pull(100, LastCycle::cutShort), noErr);
    expectFrames(0, 100);
    EXPECT_EQ(unit.cycles, (std::vector{32, 32, 32, 4}));
    EXPECT_EQ(renderer.framesLeftOver(), 0);
    pull(64, LastCycle::cutShort);
    expectFrames(100, 64);
    pull(3, LastCycle::cutShort);
    expectFrames(164, 3);
    EXPECT_EQ(unit.cycles, (std::vector{32, 32, 32, 4, 32, 32, 3}));
    EXPECT_EQ(renderer.framesLeftOver(), 0);
}

TEST_F(CycleRendererOfACountingUnit, CutShortHandsOutWhatWasLeftOverFirst)
{
    pull(10);
    pull(5, LastCycle::cutShort);
    expectFrames(10, 5);
    EXPECT_EQ(renderer.framesLeftOver(), 17);
    pull(20, LastCycle::cutShort);
    expectFrames(15, 20);
    EXPECT_EQ(unit.cycles, (std::vector{32, 3}));
    EXPECT_EQ(renderer.framesLeftOver(), 0);
}

TEST_F(CycleRendererOfACountingUnit, FillsUpWithSilenceFromTheCycleOnThatTheUnitRefuses)
{
    unit.refusedCycle = 2;
    EXPECT_EQ(pull(70), -42);
    std::vector<float> expected(71, 0.0f);
    std::iota(expected.begin(), expected.begin() + 32, 0.0f);
    expected.back() = untouched;
    EXPECT_EQ(left, expected);
    EXPECT_TRUE(
        std::all_of(right.begin() + 32, right.end() - 1, [](float sample) { return sample == 0.0f; }));
    EXPECT_EQ(right.back(), untouched);
    EXPECT_EQ(unit.cycles.size(), 2U);
    EXPECT_EQ(renderer.framesLeftOver(), 0);
}

TEST_F(CycleRendererOfACountingUnit, GoesOnAfterARefusal)
{
    unit.refusedCycle = 1;
    EXPECT_EQ(pull(10), -42);
    EXPECT_EQ(pull(40), noErr);
    expectFrames(0, 40);
    EXPECT_EQ(unit.times, (std::vector{0.0, 0.0, 32.0}));
}

TEST_F(CycleRendererOfACountingUnit, SetupForgetsWhatWasLeftOverAndStartsAgain)
{
    pull(10);
    CountingUnit other;
    renderer.setup(other.block(), 8);
    EXPECT_EQ(renderer.framesLeftOver(), 0);
    pull(10);
    expectFrames(0, 10);
    EXPECT_EQ(other.cycles, (std::vector{8, 8}));
    EXPECT_EQ(other.times, (std::vector{0.0, 8.0}));
    EXPECT_EQ(unit.cycles.size(), 1U);
}

TEST_F(CycleRendererOfACountingUnit, RendersCyclesOfAnyLength)
{
    for (const int length : {1, 2, 31, 33, 512, 4096}) {
        CountingUnit other;
        renderer.setup(other.block(), length);
        pull(1000);
        expectFrames(0, 1000);
        EXPECT_EQ(other.cycles,
                  std::vector<int>(static_cast<std::size_t>((1000 + length - 1) / length), length));
        EXPECT_TRUE(other.wellFormed);
    }
}

TEST(CycleRenderer, FillsTheOutputWithSilenceWhenTheUnitRefuses)
{
    CycleRenderer renderer;
    renderer.setup([](auto...) -> AUAudioUnitStatus { return kAudioUnitErr_Uninitialized; });
    std::vector<float> left(10, 1.0f);
    std::vector<float> right(10, 1.0f);
    EXPECT_EQ(renderer.render({left.data(), right.data()}, 10), kAudioUnitErr_Uninitialized);
    EXPECT_EQ(left, std::vector<float>(10, 0.0f));
    EXPECT_EQ(right, std::vector<float>(10, 0.0f));
}

TEST(CycleRenderer, RendersOnWhereTheCallerWantsOnlyOneChannelOrNone)
{
    CountingUnit unit;
    CycleRenderer renderer;
    renderer.setup(unit.block());
    std::vector<float> left(10);
    std::vector<float> right(10);
    EXPECT_EQ(renderer.render({left.data(), nullptr}, 10), noErr);
    EXPECT_EQ(renderer.render({}, 30), noErr);
    EXPECT_EQ(renderer.render({nullptr, right.data()}, 10), noErr);
    EXPECT_EQ(left.back(), 9.0f);
    EXPECT_EQ(right.front(), -40.0f);
}

TEST(CycleRenderer, AnswersWithTheUnitsErrorForACycleThatIsTooLongForIt)
{
    const auto unit = makePlayingInstrument(31);
    CycleRenderer renderer;
    renderer.setup(unit->renderBlock(), 32);
    std::vector<float> left(10, 1.0f);
    std::vector<float> right(10, 1.0f);
    EXPECT_EQ(renderer.render({left.data(), right.data()}, 10), kAudioUnitErr_TooManyFramesToProcess);
    EXPECT_EQ(left, std::vector<float>(10, 0.0f));
}

constexpr auto soundFrames = std::size_t{3} * 44100;

/// Straight from the render block, one cycle after the other.
std::vector<float> soundOfCycles(AUAudioFrameCount cycleFrames)
{
    const auto unit = makePlayingInstrument();
    const auto block = unit->renderBlock();
    std::vector<float> sound;
    while (sound.size() < soundFrames) {
        OutputBuffers output(2, cycleFrames);
        EXPECT_EQ(renderInto(output, block, cycleFrames), noErr);
        EXPECT_EQ(output[0], output[1]);
        sound.insert(sound.end(), output[0].begin(), output[0].end());
    }
    sound.resize(soundFrames);
    return sound;
}

std::vector<float> soundOfRequests(int cycleFrames, const std::function<int()>& nextRequest)
{
    const auto unit = makePlayingInstrument();
    CycleRenderer renderer;
    renderer.setup(unit->renderBlock(), cycleFrames);
    std::vector<float> left(soundFrames);
    std::vector<float> right(soundFrames);
    for (std::size_t done = 0; done < soundFrames;) {
        const int frames = std::min(nextRequest(), static_cast<int>(soundFrames - done));
        EXPECT_EQ(renderer.render({left.data() + done, right.data() + done}, frames), noErr);
        done += static_cast<std::size_t>(frames);
    }
    EXPECT_EQ(left, right);
    return left;
}

TEST(CycleRendererOfAnInstrument, SoundsTheSameToTheLastBitHoweverManyFramesAreAskedFor)
{
    const auto expected = soundOfCycles(32);
    ASSERT_GT(std::ranges::max(expected), 0.1f);
    for (const int frames : {1, 17, 32, 64, 512, 4096})
        EXPECT_TRUE(soundOfRequests(32, [frames] { return frames; }) == expected) << frames;
    std::mt19937 random(5);
    EXPECT_TRUE(soundOfRequests(32, [&random] { return static_cast<int>(random() % 3000); }) == expected);
}

TEST(CycleRendererOfAnInstrument, SoundsTheSameToTheLastBitAtOtherCycleLengths)
{
    for (const int cycleFrames : {1, 48, 512}) {
        const auto expected = soundOfCycles(static_cast<AUAudioFrameCount>(cycleFrames));
        for (const int frames : {17, 1000})
            EXPECT_TRUE(soundOfRequests(cycleFrames, [frames] { return frames; }) == expected)
                << cycleFrames << ", " << frames;
    }
}

TEST(CycleRendererDeathTest, ACycleWithoutFramesIsFatal)
{
    CycleRenderer renderer;
    EXPECT_DEATH(renderer.setup({}, 0), "velotrine: fatal: CycleRenderer");
    EXPECT_DEATH(renderer.setup({}, -32), "velotrine: fatal: CycleRenderer");
}

TEST_F(CycleRendererOfACountingUnit, SkippingKeepsToTheGridAndLeavesSilenceOver)
{
    for (const int frames : {0, 1, 31, 32, 33, 1000, 64000, 1000000001, INT32_MAX - 32, INT32_MAX}) {
        unit = {};
        renderer.setup(unit.block());
        renderer.skip(frames);
        const int silent = (32 - frames % 32) % 32;
        EXPECT_EQ(renderer.framesLeftOver(), silent) << frames;
        EXPECT_TRUE(unit.cycles.empty());
        EXPECT_EQ(pull(silent + 32), noErr);
        EXPECT_TRUE(
            std::all_of(left.begin(), left.begin() + silent, [](float sample) { return sample == 0.0f; }));
        EXPECT_EQ(left[static_cast<std::size_t>(silent)], 0.0f);
        EXPECT_EQ(left[static_cast<std::size_t>(silent) + 31], 31.0f);
        EXPECT_EQ(unit.cycles, std::vector{32});
        EXPECT_EQ(unit.times, std::vector{static_cast<double>(frames) + silent});
    }
}

TEST_F(CycleRendererOfACountingUnit, CountsFramesBeyondWhatIntegersOf32BitsHold)
{
    for (int i = 0; i < 1000; ++i)
        renderer.skip(INT32_MAX - 31);
    pull(32);
    EXPECT_EQ(unit.times, std::vector{1000.0 * (INT32_MAX - 31)});
}

TEST_F(CycleRendererOfACountingUnit, SkippingWhatIsLeftOverIsFatal)
{
    pull(1);
    EXPECT_DEATH(renderer.skip(32), "velotrine: fatal: CycleRenderer");
}

} // namespace
} // namespace velotrine
