#pragma once

#include "render/AudioFileWriter.h"

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

/// Collects what an instrument renders, cycle by cycle, and writes it in larger pieces. All failures are
/// WorkErrors that name the file.
class SoundFile
{
public:
    SoundFile(std::string path, const AudioFileWriter::Format& format, OutputFile::Existing existing)
        : writer(std::move(path), format, existing)
    {}

    /// @param left, right  of one length
    void add(std::span<const float> left, std::span<const float> right);

    /// Writes what is left, and completes the file.
    void finish();

    [[nodiscard]] OutputFile& output() noexcept { return writer.file(); }

private:
    /// In samples of both channels.
    static constexpr std::size_t pieceLength = 8192;

    void write();

    AudioFileWriter writer;
    std::vector<float> interleaved;
};

} // namespace velotrine
