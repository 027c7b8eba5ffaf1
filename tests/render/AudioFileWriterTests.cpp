#include "render/AudioFileWriter.h"

#include "commandline/Errors.h"
#include "tests/render/AudioFile.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

namespace velotrine {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::FloatNear;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pointwise;
using testing::StartsWith;

constexpr float halfStepOf16Bits = 0.5f / 32768.0f;
constexpr float halfStepOf24Bits = 0.5f / 8388608.0f;

/// A stereo sweep of every size and sign, and not in steps of any format.
std::vector<float> testSamples()
{
    std::vector<float> samples;
    constexpr int count = 20000;
    for (int i = 0; i < count; ++i) {
        const auto size = std::exp2(-static_cast<float>(i % 26));
        samples.push_back(size * std::sin(static_cast<float>(i) * 0.731f) * 0.999f);
    }
    return samples;
}

AudioFile writtenAndRead(const std::vector<float>& samples, const AudioFileWriter::Format& format)
{
    const TemporaryFolder folder;
    AudioFileWriter writer(folder.file("a"), format);
    writer.write(samples);
    writer.finish();
    writer.file().commit();
    return readAudioFile(folder.file("a"));
}

TEST(AudioFileWriter, WritesStereoOfTheAskedContainerFormatAndRate)
{
    const auto formatOf = [](AudioContainer container, SampleFormat samples, int rate) {
        const auto file = writtenAndRead({0.0f, 0.0f}, {container, samples, rate, 1});
        EXPECT_EQ(file.channels, 2);
        EXPECT_EQ(file.sampleRate, rate);
        return file.format;
    };
    EXPECT_EQ(formatOf(AudioContainer::wav, SampleFormat::s16, 44100), SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(formatOf(AudioContainer::wav, SampleFormat::s24, 48000), SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    EXPECT_EQ(formatOf(AudioContainer::wav, SampleFormat::f32, 768000), SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    EXPECT_EQ(formatOf(AudioContainer::flac, SampleFormat::s16, 8000), SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    EXPECT_EQ(formatOf(AudioContainer::flac, SampleFormat::s24, 192000), SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
}

TEST(AudioFileWriter, KeepsFloatsAsTheyAre)
{
    const auto samples = testSamples();
    const auto file = writtenAndRead(samples, {AudioContainer::wav, SampleFormat::f32, 48000, 0});
    EXPECT_EQ(file.samples, samples);
}

TEST(AudioFileWriter, RoundsToTheNearestStep)
{
    const auto samples = testSamples();
    for (const auto container : {AudioContainer::wav, AudioContainer::flac}) {
        const auto s16 = writtenAndRead(samples, {container, SampleFormat::s16, 48000, 0});
        EXPECT_THAT(s16.samples, Pointwise(FloatNear(halfStepOf16Bits), samples));
        const auto s24 = writtenAndRead(samples, {container, SampleFormat::s24, 48000, 0});
        EXPECT_THAT(s24.samples, Pointwise(FloatNear(halfStepOf24Bits), samples));
    }
}

TEST(AudioFileWriter, BoundsWhatIsBeyondFullScale)
{
    const std::vector<float> samples{1.0f, -1.0f, 1.5f, -1.5f};
    const auto s16 = writtenAndRead(samples, {AudioContainer::wav, SampleFormat::s16, 48000, 0});
    EXPECT_THAT(s16.whole, ElementsAre(0x7FFF0000, INT32_MIN, 0x7FFF0000, INT32_MIN));
    const auto s24 = writtenAndRead(samples, {AudioContainer::flac, SampleFormat::s24, 48000, 0});
    EXPECT_THAT(s24.whole, ElementsAre(0x7FFFFF00, INT32_MIN, 0x7FFFFF00, INT32_MIN));
}

TEST(AudioFileWriter, KeepsSilenceSilent)
{
    const std::vector<float> silence(2000, 0.0f);
    for (const auto container : {AudioContainer::wav, AudioContainer::flac})
        EXPECT_THAT(writtenAndRead(silence, {container, SampleFormat::s24, 48000, 0}).whole, Each(0));
}

TEST(AudioFileWriter, WritesTheSameBytesForTheSameSamplesInAnyPieces)
{
    const auto samples = testSamples();
    const TemporaryFolder folder;
    for (const auto container : {AudioContainer::wav, AudioContainer::flac}) {
        for (const std::size_t piece : {samples.size(), std::size_t{2}, std::size_t{998}}) {
            AudioFileWriter writer(folder.file(std::to_string(piece)),
                                   {container, SampleFormat::s24, 48000, 0});
            for (std::size_t i = 0; i < samples.size(); i += piece)
                writer.write(std::span(samples).subspan(i, std::min(piece, samples.size() - i)));
            writer.finish();
            writer.file().commit();
        }
        const auto whole = folder.read(std::to_string(samples.size()));
        EXPECT_TRUE(folder.read("2") == whole);
        EXPECT_TRUE(folder.read("998") == whole);
    }
}

TEST(AudioFileWriter, WritesNothingOfTheTimeOfDay)
{
    // A chunk of peak values, which files of floats often have, would hold it.
    const TemporaryFolder folder;
    AudioFileWriter writer(folder.file("a.wav"), {AudioContainer::wav, SampleFormat::f32, 48000, 0});
    writer.write(testSamples());
    writer.finish();
    writer.file().commit();
    EXPECT_THAT(folder.read("a.wav").substr(0, 200), Not(HasSubstr("PEAK")));
}

TEST(AudioFileWriter, UsesTheContainerForLongFilesOnlyBeyondFourGigabytes)
{
    const TemporaryFolder folder;
    const auto beginning = [&folder](std::int64_t frames) {
        AudioFileWriter writer(folder.file("a.wav"), {AudioContainer::wav, SampleFormat::s24, 48000, frames});
        writer.finish();
        writer.file().commit();
        return folder.read("a.wav").substr(0, 4);
    };
    constexpr std::int64_t bytesPerFrame = 6;
    EXPECT_EQ(beginning(0xFFFF0000 / bytesPerFrame), "RIFF");
    EXPECT_EQ(beginning(0xFFFF0000 / bytesPerFrame + 1), "RF64");
}

TEST(AudioFileWriter, AppearsOnlyWhenItIsCommitted)
{
    const TemporaryFolder folder;
    {
        AudioFileWriter writer(folder.file("a.wav"), {});
        writer.write(testSamples());
        writer.finish();
        EXPECT_THAT(folder.entries(), ElementsAre(StartsWith(".velotrine-")));
    }
    EXPECT_THAT(folder.entries(), IsEmpty());
}

TEST(AudioFileWriter, KnowsWhatAContainerCannotHold)
{
    const auto isPossible = [](AudioContainer container, SampleFormat samples, int rate) {
        return AudioFileWriter::isPossible({container, samples, rate, 0});
    };
    EXPECT_TRUE(isPossible(AudioContainer::wav, SampleFormat::f32, 768000));
    EXPECT_TRUE(isPossible(AudioContainer::flac, SampleFormat::s24, 655350));
    EXPECT_FALSE(isPossible(AudioContainer::flac, SampleFormat::f32, 48000));
    EXPECT_FALSE(isPossible(AudioContainer::flac, SampleFormat::s24, 655360));
    EXPECT_FALSE(isPossible(AudioContainer::flac, SampleFormat::s24, 96001));
}

TEST(AudioFileWriter, WritesAtEveryRateThatItCallsPossible)
{
    for (const int rate : {8000, 11025, 44101, 65535, 65536, 65537, 65540, 96001, 192000, 655345, 655350}) {
        const AudioFileWriter::Format format{AudioContainer::flac, SampleFormat::s24, rate, 0};
        bool works = true;
        try {
            EXPECT_EQ(writtenAndRead({0.0f, 0.0f}, format).sampleRate, rate);
        } catch (const WorkError&) {
            works = false;
        }
        EXPECT_EQ(works, AudioFileWriter::isPossible(format)) << rate;
    }
}

TEST(AudioFileWriter, NamesTheFileThatCouldNotBeMade)
{
    const TemporaryFolder folder;
    const auto path = folder.file("missing/a.wav");
    try {
        const AudioFileWriter writer(path, {});
        FAIL() << "a file in a folder that is not there";
    } catch (const WorkError& error) {
        EXPECT_THAT(error.what(), StartsWith(path + ": could not be written: "));
    }
}

} // namespace
} // namespace velotrine
