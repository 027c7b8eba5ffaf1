#pragma once

#include "render/AudioFileWriter.h"

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace velotrine {

/// Collects what an instrument renders, cycle by cycle, and writes it in larger pieces on a thread of its
/// own, so that rendering does not wait for an encoder or a disk. All failures are WorkErrors that name the
/// file; those of the thread come with a later call.
class SoundFile
{
public:
    SoundFile(std::string path, const AudioFileWriter::Format& format, OutputFile::Existing existing);

    /// @param left, right  of one length
    void add(std::span<const float> left, std::span<const float> right);

    /// Waits until all is written, and completes the file.
    void finish();

    /// What it writes to; not before it is finished.
    [[nodiscard]] OutputFile& output() noexcept { return writer.file(); }

private:
    /// In samples of both channels. Threads that wake each other more often wait for that; what is under way
    /// in longer pieces leaves a processor's cache.
    static constexpr std::size_t pieceLength = 65536;

    void handOver();
    void waitUntilWritten(std::unique_lock<std::mutex>& lock);
    void writePieces(const std::stop_token& stop);

    AudioFileWriter writer; ///< the thread's, until it is finished
    std::vector<float> interleaved;

    std::mutex mutex; ///< for these
    std::condition_variable_any changed;
    std::vector<float> piece; ///< to be written, and then the thread's alone; empty once it is
    std::exception_ptr failure;

    std::jthread thread; ///< ends before all else does
};

} // namespace velotrine
