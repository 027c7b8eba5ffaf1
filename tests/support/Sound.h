#pragma once

#include "audiounit/CycleRenderer.h"
#include "tests/support/TestInstrument.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace velotrine {

struct Sound
{
    explicit Sound(int frames)
        : left(static_cast<std::size_t>(frames), untouched),
          right(static_cast<std::size_t>(frames), untouched)
    {}

    static constexpr float untouched = 7.5f; ///< louder than the instrument can be

    [[nodiscard]] int frames() const { return static_cast<int>(left.size()); }

    [[nodiscard]] bool isSilent() const
    {
        const auto isZero = [](float sample) { return sample == 0.0f; };
        return std::ranges::all_of(left, isZero) && std::ranges::all_of(right, isZero);
    }

    [[nodiscard]] bool isInBounds() const
    {
        const auto isBounded = [](float sample) { return std::abs(sample) <= 1.0f; };
        return std::ranges::all_of(left, isBounded) && std::ranges::all_of(right, isBounded);
    }

    /// What comes after it.
    void append(const Sound& later)
    {
        left.insert(left.end(), later.left.begin(), later.left.end());
        right.insert(right.end(), later.right.begin(), later.right.end());
    }

    bool operator==(const Sound&) const = default;

    std::vector<float> left;
    std::vector<float> right;
};

/// How many frames a host asks for at a time.
struct BlockSizes
{
    std::string name;
    std::function<int()> next;
};

inline BlockSizes blocksOf(int frames)
{
    return {std::to_string(frames), [frames] { return frames; }};
}

inline BlockSizes randomBlocks(unsigned seed)
{
    return {"random " + std::to_string(seed), [generator = std::make_shared<std::mt19937>(seed)] {
                return std::uniform_int_distribution(1, 3000)(*generator);
            }};
}

inline std::vector<BlockSizes> allBlockSizes()
{
    return {blocksOf(1),    blocksOf(17),    blocksOf(64),   blocksOf(512),
            blocksOf(4096), randomBlocks(1), randomBlocks(2)};
}

/// Calls with offset and frames of one block after the other. No block goes across an edge: hosts split where
/// their transport changes.
inline void inBlocks(int frames, const BlockSizes& sizes, std::span<const int> edges,
                     const std::function<void(int offset, int frames)>& call)
{
    for (int done = 0; done < frames;) {
        int count = std::min(sizes.next(), frames - done);
        for (const int edge : edges)
            if (edge > done)
                count = std::min(count, edge - done);
        call(done, count);
        done += count;
    }
}

/// The audio unit on its own under a host that plays from the first frame: what every plug-in must sound
/// like.
/// @param prepareValues  sets the unit's values
inline Sound soundOfTheAudioUnit(int frames, double sampleRate, double tempo,
                                 const std::function<void(VelotrineAudioUnit&)>& prepareValues)
{
    const auto unit = makeInstrument();
    prepareValues(*unit);
    unit->setMusicalContextBlock(
        [tempo](double* t, double* numerator, std::int64_t* denominator, double*, std::int64_t*, double*) {
            *t = tempo;
            *numerator = 4.0;
            *denominator = 4;
            return true;
        });
    unit->setTransportStateBlock([](AUHostTransportStateFlags* flags, double*, double*, double*) {
        *flags = AUHostTransportStateMoving;
        return true;
    });
    (*unit->outputBusses())[0].setFormat({sampleRate, 2});
    unit->setMaximumFramesToRender(CycleRenderer::defaultCycleFrames);
    unit->allocateRenderResources();
    CycleRenderer renderer;
    renderer.setup(unit->renderBlock());
    Sound sound(frames);
    renderer.render({sound.left.data(), sound.right.data()}, frames);
    return sound;
}

} // namespace velotrine
