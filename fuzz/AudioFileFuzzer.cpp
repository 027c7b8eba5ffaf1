// Samples into an audio file of any kind, in pieces, and what a reader finds there.

#include "fuzz/Demand.h"
#include "render/AudioFileWriter.h"
#include "tests/render/AudioFile.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

namespace velotrine {
namespace {

constexpr std::size_t mostFrames = 3000;

AudioFileWriter::Format anyFormat(FuzzedDataProvider& input)
{
    AudioFileWriter::Format format;
    format.container = input.ConsumeBool() ? AudioContainer::wav : AudioContainer::flac;
    format.samples = input.PickValueInArray({SampleFormat::s16, SampleFormat::s24, SampleFormat::f32});
    format.sampleRate = input.ConsumeIntegralInRange(8000, 768000);
    // Decides between two kinds of WAV; the file's own count is what is written.
    format.expectedFrames = input.ConsumeIntegralInRange<std::int64_t>(0, std::int64_t{1} << 40);
    return format;
}

std::vector<float> anySamples(FuzzedDataProvider& input)
{
    std::vector<float> samples(2 * input.ConsumeIntegralInRange<std::size_t>(1, mostFrames));
    for (auto& sample : samples)
        sample = input.remaining_bytes() > 0 ? input.ConsumeFloatingPointInRange(-1.0f, 1.0f) : 0.0f;
    return samples;
}

void write(FuzzedDataProvider& input, const std::string& path, const AudioFileWriter::Format& format,
           const std::vector<float>& samples)
{
    AudioFileWriter writer(path, format);
    const auto piece = 2 * input.ConsumeIntegralInRange<std::size_t>(1, mostFrames);
    for (std::size_t done = 0; done < samples.size(); done += piece)
        writer.write(std::span(samples).subspan(done, std::min(piece, samples.size() - done)));
    writer.finish();
    writer.file().commit();
}

float largestError(SampleFormat format)
{
    // Half a step, and a whole one at the upper end of the range, which has one step fewer.
    return format == SampleFormat::f32 ? 0.0f : format == SampleFormat::s24 ? 0x1p-23f : 0x1p-15f;
}

void writeAndRead(FuzzedDataProvider& input)
{
    static const TemporaryFolder folder;
    const auto path = folder.file("sound");
    const auto format = anyFormat(input);
    if (!AudioFileWriter::isPossible(format))
        return;
    const auto samples = anySamples(input);
    write(input, path, format, samples);
    const auto file = readAudioFile(path);
    demand(file.sampleRate == format.sampleRate && file.channels == 2, "the file says its rate and channels");
    demand(std::ranges::equal(file.samples, samples,
                              [error = largestError(format.samples)](float read, float written) {
                                  return std::abs(read - written) <= error;
                              }),
           "what is read is what was written, to the nearest step");
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    velotrine::writeAndRead(input);
    return 0;
}
