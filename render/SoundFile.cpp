#include "render/SoundFile.h"

#include <utility>

namespace velotrine {

SoundFile::SoundFile(std::string path, const AudioFileWriter::Format& format, OutputFile::Existing existing)
    : writer(std::move(path), format, existing),
      thread([this](const std::stop_token& stop) { writePieces(stop); })
{}

void SoundFile::add(std::span<const float> left, std::span<const float> right)
{
    const auto before = interleaved.size();
    interleaved.resize(before + 2 * left.size());
    auto* sample = interleaved.data() + before;
    for (std::size_t i = 0; i < left.size(); ++i) {
        *sample++ = left[i];
        *sample++ = right[i];
    }
    if (interleaved.size() >= pieceLength)
        handOver();
}

void SoundFile::finish()
{
    handOver();
    std::unique_lock lock(mutex);
    waitUntilWritten(lock);
    writer.finish();
}

void SoundFile::handOver()
{
    std::unique_lock lock(mutex);
    waitUntilWritten(lock);
    piece.swap(interleaved);
    changed.notify_all();
}

void SoundFile::waitUntilWritten(std::unique_lock<std::mutex>& lock)
{
    changed.wait(lock, [this] { return piece.empty(); });
    if (failure)
        std::rethrow_exception(failure);
}

void SoundFile::writePieces(const std::stop_token& stop)
{
    std::unique_lock lock(mutex);
    while (changed.wait(lock, stop, [this] { return !piece.empty(); })) {
        lock.unlock();
        std::exception_ptr thrown;
        try {
            writer.write(piece);
        } catch (...) {
            thrown = std::current_exception();
        }
        lock.lock();
        failure = thrown;
        piece.clear();
        changed.notify_all();
    }
}

} // namespace velotrine
