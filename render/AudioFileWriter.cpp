#include "render/AudioFileWriter.h"

#include "commandline/Errors.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

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

/// Samples as whole steps of `bits` bits, rounded to the nearest, in the upper bits of 32. The library's own
/// conversion would round down: twice the error, and half a step of offset.
void nearestSteps(std::span<const float> samples, int bits, std::int32_t* steps)
{
    constexpr int allBits = 32;
    // Adding 1.5 x 2^52 rounds to a whole number as std::llrint does, and without a call for each sample.
    constexpr double roundingShift = 6755399441055744.0;
    const auto fullScale = static_cast<double>(std::int64_t{1} << (bits - 1));
    std::ranges::transform(samples, steps, [fullScale, bits](float sample) {
        const auto bounded =
            std::min(std::max(-fullScale, static_cast<double>(sample) * fullScale), fullScale - 1.0);
        return static_cast<std::int32_t>(bounded + roundingShift - roundingShift) << (allBits - bits);
    });
}

/// A FLAC stream that any player can follow names rates above 16 bits in tens of Hz (RFC 9639,
/// section 9.1.2).
bool flacHolds(int sampleRate)
{
    constexpr int largestInHz = 65535;
    constexpr int largestInTensOfHz = 655350;
    return sampleRate <= largestInHz || (sampleRate <= largestInTensOfHz && sampleRate % 10 == 0);
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

struct AudioFileWriter::Encoder
{
    SNDFILE* handle = nullptr;
    SampleFormat samples = SampleFormat::s24;
    std::vector<std::int32_t> steps; ///< scratch of writeSteps()

    ~Encoder()
    {
        if (handle != nullptr)
            sf_close(handle);
    }

    sf_count_t writeSteps(std::span<const float> interleaved)
    {
        const auto bits = static_cast<int>(8 * bytesPerSample(samples));
        steps.resize(interleaved.size());
        nearestSteps(interleaved, bits, steps.data());
        return sf_write_int(handle, steps.data(), static_cast<sf_count_t>(steps.size()));
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
    return sf_format_check(&info) != 0 &&
           (format.container != AudioContainer::flac || flacHolds(format.sampleRate));
}

std::string AudioFileWriter::commentIn(const std::string& path)
{
    SF_INFO info{};
    auto* const file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        return "";
    const char* const text = sf_get_string(file, SF_STR_COMMENT);
    std::string comment = text != nullptr ? text : "";
    sf_close(file);
    return comment;
}

AudioFileWriter::AudioFileWriter(std::string path, const Format& format, OutputFile::Existing existing)
    : output(std::move(path), existing), encoder(std::make_unique<Encoder>())
{
    auto info = infoOf(format);
    encoder->samples = format.samples;
    errno = 0;
    encoder->handle = sf_open_fd(output.descriptor(), SFM_WRITE, &info, SF_FALSE);
    if (encoder->handle == nullptr)
        encoder->fail(output.name());
    // The chunk of peak values holds the time of day, which would make two equal renderings differ.
    sf_command(encoder->handle, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    if (!format.comment.empty())
        sf_set_string(encoder->handle, SF_STR_COMMENT, format.comment.c_str());
}

AudioFileWriter::~AudioFileWriter() = default;

void AudioFileWriter::write(std::span<const float> interleaved)
{
    errno = 0;
    const auto count = static_cast<sf_count_t>(interleaved.size());
    const auto written = encoder->samples == SampleFormat::f32
                             ? sf_write_float(encoder->handle, interleaved.data(), count)
                             : encoder->writeSteps(interleaved);
    if (written != count)
        encoder->fail(output.name());
}

void AudioFileWriter::finish()
{
    errno = 0;
    if (sf_close(std::exchange(encoder->handle, nullptr)) != 0)
        encoder->fail(output.name());
}

} // namespace velotrine
