#pragma once

#include "commandline/OutputFile.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace velotrine {

enum class AudioContainer
{
    wav,
    flac,
};

enum class SampleFormat
{
    s16,
    s24,
    f32,
};

/// Stereo samples into a WAV or FLAC file. The same samples give the same bytes. All failures are WorkErrors
/// that name the file.
class AudioFileWriter
{
public:
    struct Format
    {
        AudioContainer container = AudioContainer::wav;
        SampleFormat samples = SampleFormat::s24;
        int sampleRate = 48000;          ///< Hz
        std::int64_t expectedFrames = 0; ///< decides whether a WAV needs sizes beyond 4 GiB
        std::string comment{};           ///< for whoever asks the file what it is
    };

    /// Whether the container can hold these samples at this rate.
    [[nodiscard]] static bool isPossible(const Format& format);

    /// The comment in a file, or "" for one without, and for what is no audio file.
    [[nodiscard]] static std::string commentIn(const std::string& path);

    AudioFileWriter(std::string path, const Format& format,
                    OutputFile::Existing existing = OutputFile::Existing::replaced);
    ~AudioFileWriter();
    AudioFileWriter(const AudioFileWriter&) = delete;
    AudioFileWriter& operator=(const AudioFileWriter&) = delete;

    /// @param interleaved  left and right, within [-1, 1]
    void write(std::span<const float> interleaved);

    /// Completes the file; it appears under its name when it is committed.
    void finish();

    /// What it writes to.
    [[nodiscard]] OutputFile& file() noexcept { return output; }

private:
    struct Encoder;

    OutputFile output;
    std::unique_ptr<Encoder> encoder;
};

} // namespace velotrine
