#include "tests/plugin/Vst3Host.h"

#include "audiounit/Parameters.h"
#include "tests/support/Sound.h"
#include "tests/support/VirtualDisplay.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

// What a host or a session may do wrong: the plug-in must ignore it and play on.

namespace velotrine {
namespace {

constexpr double sampleRate = 48000.0;
constexpr HostTransport rolling{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};
constexpr auto infinity = std::numeric_limits<double>::infinity();

class Vst3Mistakes : public testing::Test
{
protected:
    const VirtualDisplay& display = VirtualDisplay::shared();
};

/// Starts the plug-in as a host should, and hears a second of it.
Sound aSecondOf(Vst3Host& host)
{
    EXPECT_TRUE(host.start(sampleRate, 48000));
    Sound sound(48000);
    EXPECT_TRUE(host.process(sound.left.data(), sound.right.data(), 48000, rolling));
    return sound;
}

const Sound& expectedSecond()
{
    static const auto sound = [] {
        Vst3Host host;
        return aSecondOf(host);
    }();
    return sound;
}

bool isBounded(const Sound& sound)
{
    return std::ranges::all_of(sound.left, [](float sample) { return std::abs(sample) <= 1.0f; });
}

/// A state that differs from that of a new plug-in.
std::string aState()
{
    const Vst3Host host;
    for (const auto& parameter : host.parameters())
        host.setValue(parameter.id, 0.375);
    return host.save();
}

TEST_F(Vst3Mistakes, TrustsNoLengthInTheWrappersPartOfAState)
{
    const auto saved = aState();
    constexpr std::string_view magic = "JUCEPrivateData";
    const auto lengthAt = saved.size() - magic.size() - 8;
    Vst3Host host;
    const auto before = host.save();
    for (const std::uint64_t length :
         {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{saved.size()}, std::uint64_t{1} << 31,
          std::uint64_t{1} << 32, std::uint64_t{1} << 63, ~std::uint64_t{0}, ~std::uint64_t{0} - 22}) {
        auto state = saved;
        for (std::size_t i = 0; i < 8; ++i)
            state[lengthAt + i] = static_cast<char>(length >> 8 * i);
        EXPECT_FALSE(host.load(state)) << length;
        EXPECT_FALSE(host.load(state.substr(lengthAt))) << length;
        EXPECT_EQ(host.save(), before) << length;
    }
}

TEST_F(Vst3Mistakes, AStateRemembersWhetherTheHostHasBypassedIt)
{
    const auto bypass = [](const Vst3Host& host) { return host.parameters().at(parameterCount).id; };
    Vst3Host first;
    first.setValue(bypass(first), 1.0);
    const auto bypassed = first.save();
    Vst3Host second;
    const auto notBypassed = second.save();
    ASSERT_TRUE(second.load(bypassed));
    EXPECT_EQ(second.value(bypass(second)), 1.0);
    EXPECT_TRUE(aSecondOf(second).isSilent());
    EXPECT_EQ(second.save(), bypassed);
    ASSERT_TRUE(second.load(notBypassed));
    EXPECT_FALSE(aSecondOf(second).isSilent());
}

TEST_F(Vst3Mistakes, PlaysAnyNumberOfFramesWhateverWasAnnounced)
{
    for (const int announced :
         {0, 32, 64, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        Vst3Host host;
        ASSERT_TRUE(host.start(sampleRate, announced)) << announced;
        Sound sound(48000);
        int done = 0;
        for (const int frames : {64, 8192, 1, 39743}) {
            ASSERT_TRUE(host.process(sound.left.data() + done, sound.right.data() + done, frames, rolling));
            done += frames;
        }
        EXPECT_TRUE(sound == expectedSecond()) << announced;
    }
}

TEST_F(Vst3Mistakes, RefusesANegativeNumberOfFrames)
{
    for (const int frames : {-1, -64, std::numeric_limits<int>::min()}) {
        Vst3Host host;
        ASSERT_TRUE(host.start(sampleRate, 64));
        Sound sound(64);
        EXPECT_FALSE(host.process(sound.left.data(), sound.right.data(), frames, rolling)) << frames;
        EXPECT_TRUE(sound == Sound(64)) << frames;
        EXPECT_TRUE(aSecondOf(host) == expectedSecond()) << frames;
    }
}

TEST_F(Vst3Mistakes, ANonFiniteValueChangesNothing)
{
    Vst3Host host;
    ASSERT_TRUE(host.start(sampleRate, 64));
    const auto before = host.save();
    for (const double value : {std::nan(""), infinity, -infinity, 1e300, -1e300})
        for (const auto& parameter : host.parameters()) {
            const auto valueBefore = host.value(parameter.id);
            if (!std::isfinite(value)) {
                host.setValue(parameter.id, value);
                EXPECT_EQ(host.value(parameter.id), valueBefore) << parameter.title << " " << value;
            }
            Sound sound(64);
            EXPECT_TRUE(
                host.process(sound.left.data(), sound.right.data(), 64, rolling, {{parameter.id, value}}));
            EXPECT_EQ(host.save(), before) << parameter.title << " " << value;
        }
    ASSERT_TRUE(host.load(before));
    for (const auto& parameter : host.parameters())
        EXPECT_TRUE(std::isfinite(host.value(parameter.id))) << parameter.title;
    EXPECT_FALSE(aSecondOf(host).isSilent());
}

TEST_F(Vst3Mistakes, AValueOutOfRangeIsBounded)
{
    const Vst3Host host;
    for (const auto& parameter : host.parameters())
        for (const double value : {-5.0, 5.0, 1e300, -1e300}) {
            host.setValue(parameter.id, value);
            EXPECT_EQ(host.value(parameter.id), value < 0.0 ? 0.0 : 1.0) << parameter.title << " " << value;
        }
}

TEST_F(Vst3Mistakes, RefusesToProcessBeforeItIsActiveAndClearsTheOutput)
{
    Vst3Host host;
    for (const bool isAnnounced : {false, true}) {
        if (isAnnounced) {
            ASSERT_TRUE(host.announce(sampleRate, 512));
        }
        Sound sound(512);
        EXPECT_FALSE(host.process(sound.left.data(), sound.right.data(), 512, rolling));
        EXPECT_TRUE(sound.isSilent());
    }
    EXPECT_TRUE(aSecondOf(host) == expectedSecond());
    host.stop();
    Sound sound(512);
    EXPECT_FALSE(host.process(sound.left.data(), sound.right.data(), 512, rolling));
    EXPECT_TRUE(sound.isSilent());
}

TEST_F(Vst3Mistakes, TakesValuesBeforeItIsActive)
{
    Vst3Host host;
    const auto first = host.parameters().front().id;
    EXPECT_TRUE(host.process({.channels = {}, .busCount = 0, .hasBusses = false}, {}, {{first, 0.125}}));
    EXPECT_NE(host.save().find("0.125"), std::string::npos);
}

TEST_F(Vst3Mistakes, AnIncompleteOutputIsSilentAndTheInstrumentPlaysOn)
{
    const std::vector<Vst3Block> blocks{
        {.channels = {}, .frames = 24000},
        {.channels = {}, .frames = 24000, .channelCount = 2, .hasChannels = false},
        {.channels = {}, .frames = 24000, .hasBusses = false},
        {.channels = {}, .frames = 24000, .busCount = 0},
        {.channels = {}, .frames = 24000, .busCount = -1},
        {.channels = {}, .frames = 24000, .channelCount = -1},
        {.channels = {nullptr, nullptr}, .frames = 24000},
        {.channels = {}, .frames = 24000, .channelCount = 2, .busCount = 2, .hasChannels = false}};
    for (const auto& block : blocks) {
        Vst3Host host;
        ASSERT_TRUE(host.start(sampleRate, 64));
        EXPECT_TRUE(host.process(block, rolling));
        Sound sound(24000);
        ASSERT_TRUE(host.process(sound.left.data(), sound.right.data(), 24000, rolling));
        EXPECT_TRUE(std::equal(sound.left.begin(), sound.left.end(), expectedSecond().left.begin() + 24000));
    }
}

TEST_F(Vst3Mistakes, AMissingOrExtraChannelLeavesTheOthersAlone)
{
    Vst3Host host;
    ASSERT_TRUE(host.start(sampleRate, 64));
    for (const int missing : {0, 1}) {
        Sound sound(512);
        std::vector<float*> channels{sound.left.data(), sound.right.data()};
        channels[static_cast<std::size_t>(missing)] = nullptr;
        EXPECT_TRUE(host.process({.channels = channels, .frames = 512}, rolling));
        EXPECT_EQ(missing == 0 ? sound.right : sound.left, std::vector<float>(512, 0.0f));
    }
    Sound sound(512);
    std::vector<float> third(512, Sound::untouched);
    EXPECT_TRUE(host.process(
        {.channels = {sound.left.data(), sound.right.data(), third.data()}, .frames = 512}, rolling));
    EXPECT_TRUE(isBounded(sound));
    EXPECT_EQ(third, std::vector<float>(512, 0.0f));
}

TEST_F(Vst3Mistakes, RefusesSamplesOf64Bits)
{
    Vst3Host host;
    EXPECT_FALSE(host.announce(sampleRate, 512, true));
    ASSERT_TRUE(host.start(sampleRate, 512));
    Sound sound(1024); // 512 of the larger samples
    EXPECT_FALSE(host.process(
        {.channels = {sound.left.data(), sound.right.data()}, .frames = 512, .isDouble = true}, rolling));
    EXPECT_TRUE(sound.isSilent());
    EXPECT_TRUE(aSecondOf(host) == expectedSecond());
}

TEST_F(Vst3Mistakes, RefusesARateThatNoDeviceHasAndKeepsTheOneBefore)
{
    Vst3Host host;
    ASSERT_TRUE(host.announce(sampleRate, 512));
    for (const double rate : {std::nan(""), infinity, -infinity, 0.0, -48000.0, 7999.0, 768001.0, 1e300})
        EXPECT_FALSE(host.announce(rate, 512)) << rate;
    EXPECT_TRUE(host.announce(8000.0, 512));
    EXPECT_TRUE(host.announce(768000.0, 512));
    EXPECT_TRUE(aSecondOf(host) == expectedSecond());
}

TEST_F(Vst3Mistakes, RefusesAMissingListOfOutputs)
{
    const Vst3Host host;
    EXPECT_FALSE(host.takesStereo(false));
    EXPECT_TRUE(host.takesStereo(true));
}

} // namespace
} // namespace velotrine
