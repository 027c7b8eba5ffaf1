#include "tests/render/ProgramTest.h"

#include "audiounit/Presets.h"
#include "engine/RingCount.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

namespace velotrine {
namespace {

using testing::Each;
using testing::SizeIs;

constexpr int drumCircle = 1;
constexpr std::int64_t framesPerBar = 96000; // four quarters at 120 a minute and 48000 Hz
constexpr std::int64_t cycleFrames = 32;

float presetValue(ParameterAddress address)
{
    return presetTable()[drumCircle].values[address];
}

float peak(std::span<const float> samples)
{
    float largest = 0.0f;
    for (const float sample : samples)
        largest = std::max(largest, std::abs(sample));
    return largest;
}

/// Frames at which the hand crosses a spot of a ring that does not turn. The clock moves on before each frame
/// and the hand stands `phase` behind it; a ring is first seen where it stands, which is no crossing.
std::vector<std::int64_t> crossings(int ring, double bars)
{
    const auto spots = static_cast<int>(presetValue(addressOf(RingParameter::spots, ring)));
    const auto phase =
        std::max(static_cast<double>(presetValue(addressOf(RingParameter::phase, ring))), 0.001);
    std::vector<std::int64_t> frames;
    for (int i = -spots; i < spots * static_cast<int>(bars + 1); ++i) {
        const double clock = phase + static_cast<double>(i) / spots;
        const double frame = std::ceil(clock * framesPerBar) - 1.0;
        if (frame > 0.0 && clock < bars)
            frames.push_back(static_cast<std::int64_t>(frame));
    }
    return frames;
}

/// Frames at which a loud sound begins after quiet that is longer than the lowest note's period.
std::vector<std::int64_t> onsets(const std::vector<float>& samples)
{
    constexpr float loud = 0.05f;
    constexpr float quiet = 0.012f;
    constexpr std::int64_t pause = 1500;
    std::vector<std::int64_t> found;
    std::int64_t lastNoise = -pause;
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(samples.size()); ++i) {
        const float size = std::abs(samples[static_cast<std::size_t>(i)]);
        if (size > loud && i - lastNoise > pause)
            found.push_back(i);
        // The rise from quiet to loud takes a few frames and is no end of the pause.
        if (size > loud || (size > quiet && !found.empty() && i - found.back() < pause))
            lastNoise = i;
    }
    return found;
}

class DrumCircle : public ProgramTest
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(presetTable()[drumCircle].name, "Drum Circle");
        ASSERT_EQ(presetValue(addressOf(GlobalParameter::bpm)), 120.0f);
        // Nothing turns or wobbles: crossings are where the spots are.
        ASSERT_EQ(presetValue(addressOf(GlobalParameter::activity)), 0.0f);
        ASSERT_EQ(presetValue(addressOf(GlobalParameter::calories)), 0.0f);
    }

    /// One ring alone; the others play on in silence.
    [[nodiscard]] std::vector<float> ringAlone(int ring, const std::string& bars) const
    {
        std::vector<std::string> arguments{"--preset", "Drum Circle", "--bars", bars, "--tail", "none"};
        for (int other = 0; other < ringCount; ++other)
            if (other != ring)
                arguments.insert(arguments.end(), {"--set", "ringVolR" + std::to_string(other + 1) + "=0"});
        return sound(arguments).channel(0);
    }
};

TEST_F(DrumCircle, IsSixteenBarsOfStereoAndATailThatEndsInSilence)
{
    const auto file = sound({"--preset", "Drum Circle", "--bars", "16"});
    EXPECT_EQ(file.format, SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    EXPECT_EQ(file.sampleRate, 48000);
    ASSERT_EQ(file.channels, 2);

    const auto left = file.channel(0);
    EXPECT_EQ(left, file.channel(1));
    // All notes ring for half a second or little more.
    constexpr std::int64_t played = 16 * framesPerBar;
    EXPECT_GT(file.frames(), played);
    EXPECT_LT(file.frames(), played + 48000 * 6 / 10);

    const std::span all(left);
    EXPECT_GT(peak(all), 0.3f);
    EXPECT_LT(peak(all), 1.0f);
    EXPECT_GT(peak(all.subspan(played, 4800)), 0.01f);
    EXPECT_LT(peak(all.last(cycleFrames)), 0.002f);
    for (std::size_t bar = 0; bar < 16; ++bar)
        EXPECT_GT(peak(all.subspan(bar * framesPerBar, framesPerBar)), 0.3f) << bar;
}

TEST_F(DrumCircle, BeginsWithTheFirstCrossingAndSilenceBefore)
{
    const auto left = sound({"--preset", "Drum Circle", "--bars", "0.1", "--tail", "none"}).channel(0);
    const auto first = std::ranges::find_if(left, [](float sample) { return sample != 0.0f; });
    std::int64_t crossing = framesPerBar;
    for (int ring = 0; ring < ringCount; ++ring)
        crossing = std::min(crossing, crossings(ring, 1.0).front());
    EXPECT_LE(std::abs(first - left.begin() - crossing), cycleFrames);
}

TEST_F(DrumCircle, SoundsWhereTheHandCrossesASpotAndNowhereElse)
{
    for (const int ring : {0, 2, 3, 4}) {
        ASSERT_EQ(presetValue(addressOf(RingParameter::probability, ring)), 1.0f);
        const auto expected = crossings(ring, 2.9);
        const auto heard = onsets(ringAlone(ring, "2.9"));
        ASSERT_THAT(heard, SizeIs(expected.size())) << ring;
        for (std::size_t i = 0; i < heard.size(); ++i)
            EXPECT_LE(std::abs(heard[i] - expected[i]), cycleFrames) << "ring " << ring << ", note " << i;
    }
}

TEST_F(DrumCircle, LeavesOutSomeCrossingsOfTheRingThatIsNotCertain)
{
    constexpr int ring = 1;
    ASSERT_EQ(presetValue(addressOf(RingParameter::probability, ring)), 0.648f);
    const auto expected = crossings(ring, 3.9);
    const auto heard = onsets(ringAlone(ring, "3.9"));
    EXPECT_GT(heard.size(), 4U);
    EXPECT_LT(heard.size(), expected.size());
    for (const auto onset : heard)
        EXPECT_TRUE(std::ranges::any_of(expected, [onset](auto crossing) {
            return std::abs(onset - crossing) <= cycleFrames;
        })) << onset;
}

class OneSpot : public ProgramTest
{
protected:
    /// One spot on one ring, crossed at frame 9609: 0.1001 bars of 96000 frames are 9609.6.
    static constexpr std::int64_t crossing = 9609;

    [[nodiscard]] AudioFile playedFor(std::int64_t frames) const
    {
        std::vector<std::string> arguments{"--preset",  "1",
                                           "--seconds", std::to_string(static_cast<double>(frames) / 48000.0),
                                           "--midi",    "notes.mid"};
        for (const auto* const setting :
             {"spotsR1=1", "phaseR1=0.1001", "spotsR2=0", "spotsR3=0", "spotsR4=0", "spotsR5=0"})
            arguments.insert(arguments.end(), {"--set", setting});
        return sound(arguments);
    }

    /// Bytes of a note-on on the first ring's channel.
    [[nodiscard]] bool hasNotes() const { return folder.read("notes.mid").find('\x90') != std::string::npos; }
};

TEST_F(OneSpot, IsNotPlayedWhenItIsCrossedJustBehindTheEnd)
{
    // The cycle of 32 frames that begins at 9600 holds the end and the crossing.
    for (const auto frames : {crossing - 5, crossing}) {
        const auto file = playedFor(frames);
        EXPECT_EQ(file.frames(), frames);
        EXPECT_THAT(file.samples, Each(0.0f));
        EXPECT_FALSE(hasNotes());
    }
}

TEST_F(OneSpot, IsPlayedWhenItIsCrossedAtTheLastFrame)
{
    const auto file = playedFor(crossing + 1);
    EXPECT_GT(file.frames(), crossing + 1);
    EXPECT_GT(peak(file.samples), 0.1f);
    EXPECT_TRUE(hasNotes());
}

} // namespace
} // namespace velotrine
