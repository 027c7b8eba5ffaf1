#include "host/AVAudioMixerNode.h"

#include <algorithm>
#include <utility>

namespace velotrine {

namespace {

void silence(float* const* channels, int firstChannel, int channelCount, int start, int frames) noexcept
{
    for (int channel = firstChannel; channel < channelCount; ++channel)
        std::fill_n(channels[channel] + start, frames, 0.0f);
}

} // namespace

void AVAudioMixerNode::setSource(AURenderBlock block)
{
    hasSource = block != nullptr;
    renderer.setup(std::move(block));
}

void AVAudioMixerNode::render(float* const* channels, int channelCount,
                              int frames) noexcept VELOTRINE_NONBLOCKING
{
    if (frames < 1)
        return;
    if (rendering.test_and_set(std::memory_order_acquire))
        return silence(channels, 0, channelCount, 0, frames);

    if (hasSource) {
        for (int done = 0; done < frames; done += longestPart)
            renderPart(channels, channelCount, done, std::min(longestPart, frames - done));
    } else {
        silence(channels, 0, channelCount, 0, frames);
    }
    rendering.clear(std::memory_order_release);
}

void AVAudioMixerNode::renderPart(float* const* channels, int channelCount, int start,
                                  int frames) noexcept VELOTRINE_NONBLOCKING
{
    if (channelCount >= 2) {
        renderer.render({channels[0] + start, channels[1] + start}, frames);
        return silence(channels, 2, channelCount, start, frames);
    }
    renderer.render({left.data(), right.data()}, frames);
    if (channelCount == 1)
        std::transform(left.begin(), left.begin() + frames, right.begin(), channels[0] + start,
                       [](float leftSample, float rightSample) { return 0.5f * (leftSample + rightSample); });
}

} // namespace velotrine
