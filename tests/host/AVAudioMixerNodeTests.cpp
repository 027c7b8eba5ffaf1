#include "host/AVAudioMixerNode.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/TestInstrument.h"

#include <algorithm>
#include <random>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::Each;
using Channels = std::vector<std::vector<float>>;

constexpr float untouched = 7.0f;

/// Left counts 1, 2, 3, ..., right counts in thousands.
AURenderBlock countingBlock()
{
    return [count = 0](AudioUnitRenderActionFlags*, const AudioTimeStamp*, AUAudioFrameCount frames, int,
                       AudioBufferList* output, const AURenderEvent*, const AURenderPullInputBlock*) mutable {
        for (AUAudioFrameCount i = 0; i < frames; ++i) {
            ++count;
            static_cast<float*>(output->mBuffers[0].mData)[i] = static_cast<float>(count);
            static_cast<float*>(output->mBuffers[1].mData)[i] = 1000.0f * static_cast<float>(count);
        }
        return noErr;
    };
}

Channels rendered(AVAudioMixerNode& mixer, std::size_t channelCount, int frames)
{
    Channels channels(channelCount, std::vector<float>(static_cast<std::size_t>(frames), untouched));
    std::vector<float*> pointers;
    for (auto& channel : channels)
        pointers.push_back(channel.data());
    mixer.render(pointers.data(), static_cast<int>(channelCount), frames);
    return channels;
}

TEST(AVAudioMixerNode, ASingleChannelGetsTheMeanOfBoth)
{
    AVAudioMixerNode mixer;
    mixer.setSource(countingBlock());
    const auto channels = rendered(mixer, 1, 1500);
    for (std::size_t i = 0; i < 1500; ++i)
        ASSERT_FLOAT_EQ(channels[0][i], 500.5f * static_cast<float>(i + 1));
}

TEST(AVAudioMixerNode, TwoChannelsGetLeftAndRight)
{
    AVAudioMixerNode mixer;
    mixer.setSource(countingBlock());
    const auto channels = rendered(mixer, 2, 1500);
    for (std::size_t i = 0; i < 1500; ++i) {
        ASSERT_FLOAT_EQ(channels[0][i], static_cast<float>(i + 1));
        ASSERT_FLOAT_EQ(channels[1][i], 1000.0f * static_cast<float>(i + 1));
    }
}

TEST(AVAudioMixerNode, OfFiveChannelsTheLastThreeAreSilent)
{
    AVAudioMixerNode mixer;
    mixer.setSource(countingBlock());
    const auto channels = rendered(mixer, 5, 1500);
    EXPECT_FLOAT_EQ(channels[0][1499], 1500.0f);
    EXPECT_FLOAT_EQ(channels[1][1499], 1500000.0f);
    for (std::size_t channel = 2; channel < 5; ++channel)
        EXPECT_THAT(channels[channel], Each(0.0f));
}

TEST(AVAudioMixerNode, WithoutChannelsTheSoundStillMovesOn)
{
    AVAudioMixerNode mixer;
    mixer.setSource(countingBlock());
    mixer.render(nullptr, 0, 1000);
    EXPECT_FLOAT_EQ(rendered(mixer, 2, 1)[0][0], 1001.0f);
}

TEST(AVAudioMixerNode, IsSilentWithoutASource)
{
    AVAudioMixerNode mixer;
    for (const auto& channel : rendered(mixer, 3, 700))
        EXPECT_THAT(channel, Each(0.0f));
}

TEST(AVAudioMixerNode, IsSilentWhenTheUnitRefusesToRender)
{
    AVAudioMixerNode mixer;
    mixer.setSource(makeInstrument()->renderBlock());
    for (const std::size_t channelCount : {1U, 2U})
        for (const auto& channel : rendered(mixer, channelCount, 700))
            EXPECT_THAT(channel, Each(0.0f));
}

TEST(AVAudioMixerNode, ASecondThreadGetsSilenceWhileTheFirstRenders)
{
    AVAudioMixerNode mixer;
    Channels ofTheSecond;
    mixer.setSource([&](AudioUnitRenderActionFlags*, const AudioTimeStamp*, AUAudioFrameCount frames, int,
                        AudioBufferList* output, const AURenderEvent*, const AURenderPullInputBlock*) {
        std::thread([&] { ofTheSecond = rendered(mixer, 2, 100); }).join();
        for (const auto& buffer : output->mBuffers)
            std::fill_n(static_cast<float*>(buffer.mData), frames, 1.0f);
        return noErr;
    });
    const auto ofTheFirst = rendered(mixer, 2, 32);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        EXPECT_THAT(ofTheFirst[channel], Each(1.0f));
        EXPECT_THAT(ofTheSecond[channel], Each(0.0f));
    }
    EXPECT_THAT(rendered(mixer, 2, 32)[0], Each(1.0f));
}

std::vector<float> renderedInBlocks(const std::vector<int>& blocks)
{
    const auto unit = makePlayingInstrument();
    AVAudioMixerNode mixer;
    mixer.setSource(unit->renderBlock());
    std::vector<float> left;
    for (const int frames : blocks) {
        const auto channels = rendered(mixer, 2, frames);
        left.insert(left.end(), channels[0].begin(), channels[0].end());
    }
    return left;
}

TEST(AVAudioMixerNode, TheSoundIsTheSameWhateverTheBlocks)
{
    constexpr int total = 32768;
    const auto expected = renderedInBlocks({total});
    ASSERT_GT(*std::ranges::max_element(expected), 0.1f);
    for (const int size : {1, 17, 64, 512, 4096}) {
        std::vector<int> blocks(static_cast<std::size_t>(total / size), size);
        blocks.push_back(total % size);
        EXPECT_EQ(renderedInBlocks(blocks), expected) << size;
    }

    std::mt19937 random(1);
    std::vector<int> blocks;
    int left = total;
    while (left > 0) {
        blocks.push_back(std::min(left, std::uniform_int_distribution(0, 2000)(random)));
        left -= blocks.back();
    }
    EXPECT_EQ(renderedInBlocks(blocks), expected);
}

TEST(AVAudioMixerNode, RenderingNeitherAllocatesNorFrees)
{
    const auto unit = makePlayingInstrument();
    AVAudioMixerNode mixer;
    mixer.setSource(unit->renderBlock());
    Channels channels(5, std::vector<float>(4096));
    std::vector<float*> pointers;
    for (auto& channel : channels)
        pointers.push_back(channel.data());
    float peak = 0.0f;

    const AllocationCounter counter;
    for (int round = 0; round < 10; ++round)
        for (const int channelCount : {0, 1, 2, 5})
            for (const int frames : {1, 17, 64, 512, 4096}) {
                mixer.render(pointers.data(), channelCount, frames);
                peak = std::max(peak, channels[0][0]);
            }
    EXPECT_EQ(counter.count(), 0);
    EXPECT_GT(peak, 0.0f);
}

} // namespace
} // namespace velotrine
