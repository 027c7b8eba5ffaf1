#pragma once

#include <cstddef>
#include <vector>

namespace velotrine {

/// The frames at which sound begins after silence.
inline std::vector<int> onsetsIn(const std::vector<float>& sound)
{
    constexpr int silenceFrames = 100; // longer than a zero crossing
    std::vector<int> frames;
    int zeros = silenceFrames;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        if (sound[i] != 0.0f && zeros >= silenceFrames)
            frames.push_back(static_cast<int>(i));
        zeros = sound[i] == 0.0f ? zeros + 1 : 0;
    }
    return frames;
}

} // namespace velotrine
