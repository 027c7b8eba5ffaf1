#include "render/AudioFileWriter.h"

#include "render/Errors.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <sndfile.h>

namespace velotrine {

namespace {

constexpr int channelCount = 2;

int subformatOf(SampleFormat samples)
{
    switch (samples) {
    case SampleFormat::s16:
        return SF_FORMAT_PCM_16;
    case SampleFormat::s24:
        return SF_FORMAT_PCM_24;
    case SampleFormat::f32:
        return SF_FORMAT_FLOAT;
    }
    return 0;
}

std::int64_t bytesPerSample(SampleFormat samples)
{
    switch (samples) {
    case SampleFormat::s16:
        return 2;
    case SampleFormat::s24:
        return 3;
    case SampleFormat::f32:
        return 4;
    }
    return 0;
}

int containerOf(const AudioFileWriter::Format& format)
{
    if (format.container == AudioContainer::flac)
        return SF_FORMAT_FLAC;
    // A WAV counts its bytes in 32 bits. Its successor for longer ones is RF64 (EBU Tech 3306).
    constexpr std::int64_t largestWav = 0xFFFF0000;
    const auto bytes = format.expectedFrames * channelCount * bytesPerSample(format.samples);
    return bytes > largestWav ? SF_FORMAT_RF64 : SF_FORMAT_WAV;
}

SF_INFO infoOf(const AudioFileWriter::Format& format)
{
    SF_INFO info{};
    info.samplerate = format.sampleRate;
    info.channels = channelCount;
    info.format = containerOf(format) | subformatOf(format.samples);
    return info;
}

} // namespace

struct AudioFileWriter::File
{
    SNDFILE* handle = nullptr;

    ~File()
    {
        if (handle != nullptr)
            sf_close(handle);
    }

    [[noreturn]] void fail(const std::string& name) const
    {
        // Where the system refused, its own word is clearer than the library's.
        const char* const reason = errno != 0 ? std::strerror(errno) : sf_strerror(handle);
        throw WorkError(name + ": could not be written: " + reason);
    }
};

bool AudioFileWriter::isPossible(const Format& format)
{
    const auto info = infoOf(format);
    // The largest rate that a FLAC stream can name.
    constexpr int maxFlacRate = 655350;
    return sf_format_check(&info) != 0 &&
           (format.container != AudioContainer::flac || format.sampleRate <= maxFlacRate);
}

AudioFileWriter::AudioFileWriter(std::string path, const Format& format)
    : output(std::move(path)), file(std::make_unique<File>())
{
    auto info = infoOf(format);
    errno = 0;
    file->handle = sf_open_fd(output.descriptor(), SFM_WRITE, &info, SF_FALSE);
    if (file->handle == nullptr)
        file->fail(output.name());
    // The chunk of peak values holds the time of day, which would make two equal renderings differ.
    sf_command(file->handle, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(file->handle, SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

AudioFileWriter::~AudioFileWriter() = default;

void AudioFileWriter::write(std::span<const float> interleaved)
{
    errno = 0;
    const auto count = static_cast<sf_count_t>(interleaved.size());
    if (sf_write_float(file->handle, interleaved.data(), count) != count)
        file->fail(output.name());
}

void AudioFileWriter::finish()
{
    errno = 0;
    if (sf_close(std::exchange(file->handle, nullptr)) != 0)
        file->fail(output.name());
}

} // namespace velotrine
