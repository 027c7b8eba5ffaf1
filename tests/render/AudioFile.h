#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velotrine {

/// An audio file as a player reads it.
struct AudioFile
{
    int sampleRate = 0; ///< Hz
    int channels = 0;
    int format = 0;                  ///< libsndfile's container and sample format
    std::vector<float> samples;      ///< interleaved; full scale is 1
    std::vector<std::int32_t> whole; ///< the same with full scale 2^31; of no meaning for floats

    [[nodiscard]] std::int64_t frames() const { return static_cast<std::int64_t>(samples.size()) / channels; }

    /// One channel of it.
    [[nodiscard]] std::vector<float> channel(int index) const;
};

/// Throws when it is not an audio file.
[[nodiscard]] AudioFile readAudioFile(const std::string& path);

} // namespace velotrine
