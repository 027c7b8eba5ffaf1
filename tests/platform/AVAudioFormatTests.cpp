#include "platform/AVAudioFormat.h"

#include <limits>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(AVAudioFormat, MakesAFormatOfTheRateAndChannelsAskedFor)
{
    const auto format = AVAudioFormat::standardFormat(44100.0, 2);
    ASSERT_TRUE(format.has_value());
    EXPECT_EQ(format->sampleRate, 44100.0);
    EXPECT_EQ(format->channelCount, 2U);
}

TEST(AVAudioFormat, HasNoFormatForARateThatIsNotPositiveAndFinite)
{
    for (const double rate :
         {0.0, -44100.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(AVAudioFormat::standardFormat(rate, 2).has_value()) << rate;
}

TEST(AVAudioFormat, HasNoFormatWithoutChannels)
{
    EXPECT_FALSE(AVAudioFormat::standardFormat(44100.0, 0).has_value());
}

TEST(AVAudioFormat, FormatsAreEqualWhenRateAndChannelsAre)
{
    EXPECT_EQ(AVAudioFormat::standardFormat(48000.0, 2), AVAudioFormat::standardFormat(48000.0, 2));
    EXPECT_NE(AVAudioFormat::standardFormat(48000.0, 2), AVAudioFormat::standardFormat(44100.0, 2));
    EXPECT_NE(AVAudioFormat::standardFormat(48000.0, 2), AVAudioFormat::standardFormat(48000.0, 1));
}

} // namespace
} // namespace velotrine
