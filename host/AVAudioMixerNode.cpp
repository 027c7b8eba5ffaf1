#include "host/AVAudioMixerNode.h"

#include <algorithm>
#include <span>
#include <utility>

namespace velotrine {

namespace {

void silence(float* const* channels, int firstChannel, int channelCount, int start, int frames) noexcept
{
    for (int channel = firstChannel; channel < channelCount; ++channel)
        std::fill_n(channels[channel] + start, frames, 0.0f);
}

} // namespace

void AVAudioMixerNode::setSource(AURenderBlock block, const VelotrineDSPKernel* playingKernel)
{
    hasSource = block != nullptr;
    kernel = playingKernel;
    if (kernel != nullptr) {
        notesWithSound.setup(kernel->sampleRate);
        notesToSender.setup(kernel->sampleRate);
    }
    renderer.setup(std::move(block));
}

void AVAudioMixerNode::render(float* const* channels, int channelCount, int frames,
                              const NoteOutput& notes) noexcept VELOTRINE_NONBLOCKING
{
    if (frames < 1)
        return;
    if (rendering.test_and_set(std::memory_order_acquire))
        return silence(channels, 0, channelCount, 0, frames);

    if (!sendsNotes)
        notesWithSound.endAll();
    if (sender != nullptr && kernel != nullptr)
        sender->begin(frames, kernel->sampleRate);
    if (hasSource) {
        for (int done = 0; done < frames; done += longestPart)
            renderPart(channels, channelCount, done, std::min(longestPart, frames - done),
                       {notes.from(done), {sender, done}});
    } else {
        silence(channels, 0, channelCount, 0, frames);
    }
    rendering.clear(std::memory_order_release);
}

void AVAudioMixerNode::renderPart(float* const* channels, int channelCount, int start, int frames,
                                  const NoteOutputs& notes) noexcept VELOTRINE_NONBLOCKING
{
    if (channelCount >= 2) {
        renderCycles({channels[0] + start, channels[1] + start}, frames, notes);
        return silence(channels, 2, channelCount, start, frames);
    }
    renderCycles({left.data(), right.data()}, frames, notes);
    if (channelCount == 1)
        std::transform(left.begin(), left.begin() + frames, right.begin(), channels[0] + start,
                       [](float leftSample, float rightSample) { return 0.5f * (leftSample + rightSample); });
}

void AVAudioMixerNode::renderCycles(StereoOutput output, int frames,
                                    const NoteOutputs& notes) noexcept VELOTRINE_NONBLOCKING
{
    using Notes = std::span<const NoteEvent>;
    const bool goWithSound = sendsNotes;
    renderer.render(output, frames, CycleRenderer::LastCycle::whole,
                    [&](int cycleFrame, int count, int frame) {
                        const auto fired = kernel != nullptr ? kernel->noteEvents() : Notes();
                        notesWithSound.play(goWithSound ? fired : Notes(), cycleFrame, count,
                                            notes.withSound.from(frame));
                        notesToSender.play(fired, cycleFrame, count, notes.toSender.from(frame));
                    });
}

} // namespace velotrine
