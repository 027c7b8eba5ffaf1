#include "audiounit/CycleRenderer.h"

#include "engine/FatalError.h"

#include <algorithm>
#include <array>
#include <utility>

namespace velotrine {

void CycleRenderer::setup(AURenderBlock block, int cycleFrames)
{
    if (cycleFrames < 1)
        fatalError("CycleRenderer: a render cycle without frames");
    renderBlock = std::move(block);
    cycleLength = cycleFrames;
    leftCycle.assign(static_cast<std::size_t>(cycleFrames), 0.0f);
    rightCycle.assign(static_cast<std::size_t>(cycleFrames), 0.0f);
    available = 0;
    consumed = 0;
    timestamp = {};
}

void CycleRenderer::skip(int frames) noexcept VELOTRINE_NONBLOCKING
{
    if (framesLeftOver() != 0 || frames < 0)
        fatalError("CycleRenderer: sound is left over that would be skipped");
    const int begun = frames % cycleLength;
    timestamp.mSampleTime += frames;
    if (begun == 0)
        return;
    timestamp.mSampleTime += cycleLength - begun;
    std::ranges::fill(leftCycle, 0.0f);
    std::ranges::fill(rightCycle, 0.0f);
    available = cycleLength;
    consumed = begun;
}

AUAudioUnitStatus CycleRenderer::renderCycle(int frames) noexcept VELOTRINE_NONBLOCKING
{
    const auto bytes = static_cast<std::uint32_t>(static_cast<std::size_t>(frames) * sizeof(float));
    std::array<AudioBuffer, 2> channels{{{1, bytes, leftCycle.data()}, {1, bytes, rightCycle.data()}}};
    AudioBufferList output{channels};
    AudioUnitRenderActionFlags flags = 0;
    // A unit's closure, whose own functions are checked where they are.
    VELOTRINE_UNFOLLOWED(const auto status =
                             renderBlock(&flags, &timestamp, static_cast<AUAudioFrameCount>(frames), 0,
                                         &output, nullptr, nullptr);)
    if (status == noErr) {
        timestamp.mSampleTime += frames;
        available = frames;
        consumed = 0;
    }
    return status;
}

int CycleRenderer::handOut(StereoOutput output, int frames) noexcept VELOTRINE_NONBLOCKING
{
    const int count = std::min(frames, framesLeftOver());
    if (output.left != nullptr)
        std::copy_n(leftCycle.data() + consumed, count, output.left);
    if (output.right != nullptr)
        std::copy_n(rightCycle.data() + consumed, count, output.right);
    consumed += count;
    return count;
}

} // namespace velotrine
