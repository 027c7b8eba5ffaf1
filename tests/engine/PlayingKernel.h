#pragma once

#include "engine/VelotrineDSPKernel.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace velotrine::test {

/// A note as a listener dates it: by frames since the kernel began to play.
struct HeardNote
{
    std::int64_t frame;
    int ring;
    int spot;
    int note;

    bool operator==(const HeardNote&) const = default;
};

/// A kernel that plays by its internal clock, and keeps all that it plays.
class PlayingKernel
{
public:
    explicit PlayingKernel(int longestBlock = 8192, double sampleRate = 48000.0)
    {
        kernel.setup(longestBlock, sampleRate);
        kernel.sync = false;
        kernel.internalPlaying = true;
    }

    VelotrineDSPKernel kernel;
    std::vector<HeardNote> notes;
    std::vector<float> left;
    std::vector<float> right;

    /// Gives one ring `spots` spots, all of which fire, and takes the spots off the others. Nothing rotates
    /// or wobbles: the ring's phase is the clock's less the ring's offset.
    void playOnlyRing(std::size_t ring, std::int64_t spots)
    {
        kernel.activity = 0.0f;
        kernel.calories = 0.0f;
        for (auto& count : kernel.spotCounts)
            count = 0;
        kernel.spotCounts[ring] = spots;
        for (auto& probability : kernel.probabilities)
            probability = 1.0f;
    }

    /// Renders frames in blocks of one length; the last may be shorter.
    void run(std::int64_t frames, int block) { run(frames, std::span(&block, 1)); }

    /// Renders so many frames in blocks of these lengths, over and over.
    void run(std::int64_t frames, std::span<const int> blocks)
    {
        const auto end = framesRun + frames;
        for (std::size_t turn = 0; framesRun < end; turn = (turn + 1) % blocks.size())
            runBlock(static_cast<int>(std::min<std::int64_t>(blocks[turn], end - framesRun)));
    }

    /// Frames rendered so far.
    [[nodiscard]] std::int64_t frames() const { return framesRun; }

private:
    void runBlock(int block)
    {
        const auto start = left.size();
        left.resize(start + static_cast<std::size_t>(block));
        right.resize(left.size());
        kernel.process(left.data() + start, right.data() + start, block);
        for (const auto& event : kernel.noteEvents())
            notes.push_back({framesRun + event.frame, event.ring, event.spot, event.note});
        framesRun += block;
    }

    std::int64_t framesRun = 0;
};

} // namespace velotrine::test
