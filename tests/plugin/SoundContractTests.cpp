#include "tests/plugin/PluginContract.h"

#include "audiounit/Parameters.h"
#include "tests/support/AllocationCounter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <vector>

namespace velotrine {
namespace {

constexpr auto activity = addressOf(GlobalParameter::activity);
constexpr auto volume = addressOf(GlobalParameter::volume);
constexpr auto sync = addressOf(GlobalParameter::sync);

constexpr std::array deviceRates{8000.0,  11025.0, 22050.0,  44056.25, 44100.0,  47999.999, 48000.0,
                                 88200.0, 96000.0, 176400.0, 192000.0, 384000.0, 768000.0};

template <typename Plugin>
class SoundContract : public testing::Test
{};

TYPED_TEST_SUITE(SoundContract, EveryFormat, FormatNames);

/// A session whose transport starts, changes its tempo and stops, with two values automated in between.
Sound sessionOf(PluginUnderTest& plugin, const BlockSizes& sizes)
{
    auto faster = rolling;
    faster.tempo = 301.25;
    const std::array<int, 5> edges{1000, 20000, 33333, 50001, 70001};
    const std::array<std::function<void()>, 5> changes{
        [&] { plugin.setTransport(rolling); },
        [&] {
            plugin.setValue(volume, 0.25);
            plugin.setValue(addressOf(RingParameter::spots, 0), 16.0);
        },
        [&] { plugin.setTransport(faster); },
        [&] { plugin.setValue(addressOf(RingParameter::spots, 2), 15.0); },
        [&] { plugin.setTransport(stopped); }};
    Sound sound(80000);
    EXPECT_TRUE(plugin.start(sampleRate, 100000));
    plugin.setTransport(stopped);
    inBlocks(sound.frames(), sizes, edges, [&](int offset, int frames) {
        const auto* const edge = std::ranges::find(edges, offset);
        if (edge != edges.end())
            changes.at(static_cast<std::size_t>(edge - edges.begin()))();
        EXPECT_TRUE(plugin.render(sound.left.data() + offset, sound.right.data() + offset, frames));
    });
    return sound;
}

TYPED_TEST(SoundContract, SoundsTheSameWhateverTheHostsBlockSizes)
{
    TypeParam reference;
    const auto expected = sessionOf(reference, blocksOf(100000));
    EXPECT_FALSE(expected.isSilent());
    EXPECT_TRUE(std::all_of(expected.left.begin(), expected.left.begin() + 1000,
                            [](float sample) { return sample == 0.0f; }));
    for (const auto& sizes : allBlockSizes()) {
        TypeParam plugin;
        EXPECT_TRUE(sessionOf(plugin, sizes) == expected) << sizes.name;
    }
}

TYPED_TEST(SoundContract, SoundsTheSameWhateverTheHostsBlockSizesWithAutomationEvery32Frames)
{
    const auto played = [](const std::function<int(int done)>& blockAt) {
        TypeParam plugin;
        Sound sound(32 * 1000);
        EXPECT_TRUE(plugin.start(sampleRate, 32));
        plugin.setTransport(rolling);
        for (int done = 0; done < sound.frames();) {
            const int frames = blockAt(done);
            if (done % 32 == 0) {
                plugin.setValue(volume, 0.5 + 0.4 * std::sin(done / 2000.0));
                plugin.setValue(activity, 0.5 + 0.5 * std::cos(done / 2000.0));
            }
            EXPECT_TRUE(plugin.render(sound.left.data() + done, sound.right.data() + done, frames));
            done += frames;
        }
        return sound;
    };
    const auto expected = played([](int) { return 32; });
    EXPECT_FALSE(expected.isSilent());
    EXPECT_TRUE(played([](int) { return 1; }) == expected);
    EXPECT_TRUE(played([](int done) { return std::min(1 + done % 17, 32 - done % 32); }) == expected);
}

TYPED_TEST(SoundContract, SoundsLikeTheAudioUnitAtEveryRateThatADeviceHas)
{
    constexpr int frames = 60000;
    for (const double rate : deviceRates) {
        TypeParam plugin;
        ASSERT_TRUE(plugin.start(rate, frames)) << rate;
        const auto expected = soundOfTheAudioUnit(frames, rate, rolling.tempo, [](VelotrineAudioUnit&) {});
        EXPECT_TRUE(playedBy(plugin, frames, rolling) == expected) << rate;
    }
}

TYPED_TEST(SoundContract, ChangesItsRateAndPlaysOn)
{
    TypeParam plugin;
    for (const double rate : deviceRates) {
        ASSERT_TRUE(plugin.start(rate, 1000)) << rate;
        EXPECT_TRUE(playedBy(plugin, 1000, rolling).isInBounds()) << rate;
    }
}

TYPED_TEST(SoundContract, RefusesARateThatNoDeviceHasAndStartsAtOneLater)
{
    for (const double rate : {0.0, -48000.0, 1.0, 7999.0, 768001.0, 1e9, std::nan("")}) {
        TypeParam plugin;
        EXPECT_FALSE(plugin.start(rate, 512)) << rate;
        ASSERT_TRUE(plugin.start(sampleRate, 48000));
        EXPECT_FALSE(playedBy(plugin, 48000, rolling).isSilent()) << rate;
    }
}

TYPED_TEST(SoundContract, IsSilentBeforeTheTransportRolls)
{
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 48000));
    EXPECT_TRUE(playedBy(plugin, 48000).isSilent()) << "the host says nothing";
    EXPECT_TRUE(playedBy(plugin, 48000, stopped).isSilent());
    EXPECT_FALSE(playedBy(plugin, 48000, rolling).isSilent());
}

TYPED_TEST(SoundContract, IsSilentWhileItIsStopped)
{
    TypeParam plugin;
    plugin.setTransport(rolling);
    const auto isSilent = [&plugin] {
        Sound sound(48000);
        plugin.render(sound.left.data(), sound.right.data(), sound.frames());
        return sound.isSilent();
    };
    EXPECT_TRUE(isSilent());
    ASSERT_TRUE(plugin.start(sampleRate, 48000));
    EXPECT_FALSE(isSilent());
    plugin.stop();
    EXPECT_TRUE(isSilent());
}

TYPED_TEST(SoundContract, FollowsTheSwitchFromTheHostsClockToItsOwn)
{
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 48000));
    plugin.setValue(sync, 0.0);
    playedBy(plugin, 32);
    // Its own clock stands until somebody presses play in the editor.
    EXPECT_TRUE(playedBy(plugin, 48000, rolling).isSilent());
    plugin.setValue(sync, 1.0);
    EXPECT_FALSE(playedBy(plugin, 48000).isSilent());
}

TYPED_TEST(SoundContract, WritesAllFramesThatAreAskedForAndNoMore)
{
    TypeParam plugin;
    ASSERT_TRUE(plugin.start(sampleRate, 16384));
    for (const auto& transport :
         {std::optional(rolling), std::optional(stopped), std::optional<HostTransport>()})
        for (const int frames : {0, 1, 2, 10, 17, 32, 64, 100, 1024, 4096, 16384}) {
            Sound sound(16385);
            plugin.setTransport(transport);
            ASSERT_TRUE(plugin.render(sound.left.data(), sound.right.data(), frames));
            const auto asked = static_cast<std::size_t>(frames);
            EXPECT_EQ(sound.left[asked], Sound::untouched) << frames;
            EXPECT_EQ(sound.right[asked], Sound::untouched) << frames;
            sound.left.resize(asked);
            sound.right.resize(asked);
            EXPECT_TRUE(sound.isInBounds()) << frames;
        }
}

TYPED_TEST(SoundContract, BoundsEveryValueAndIgnoresNaN)
{
    TypeParam plugin;
    TypeParam bounded;
    ASSERT_TRUE(plugin.start(sampleRate, 32));
    ASSERT_TRUE(bounded.start(sampleRate, 32));
    const auto setAll = [](PluginUnderTest& each, const auto& valueOf) {
        for (const auto& parameter : parameterTable()) {
            each.setValue(parameter.address, static_cast<double>(valueOf(parameter)));
            playedBy(each, 32);
        }
    };
    setAll(bounded, [](const auto& parameter) { return parameter.maxValue; });
    const auto saved = bounded.save();
    for (const auto& parameter : parameterTable())
        EXPECT_NE(saved.find("\"" + parameter.identifier + "\""), std::string::npos);
    setAll(plugin, [](const auto& parameter) { return parameter.maxValue + 100.0f; });
    EXPECT_EQ(plugin.save(), saved);
    setAll(plugin, [](const auto&) { return std::numeric_limits<float>::quiet_NaN(); });
    EXPECT_EQ(plugin.save(), saved);
}

TYPED_TEST(SoundContract, KeepsTheLastTempoWhereTheHostSendsNonsense)
{
    TypeParam sane;
    ASSERT_TRUE(sane.start(sampleRate, 60000));
    const auto expected = playedBy(sane, 60000, rolling);
    constexpr auto infinity = std::numeric_limits<double>::infinity();
    for (const double tempo : {std::nan(""), infinity, -infinity, -1.0, 0.0, 1e300}) {
        TypeParam plugin;
        ASSERT_TRUE(plugin.start(sampleRate, 60000));
        auto sound = playedBy(plugin, 20000, rolling);
        sound.append(playedBy(plugin, 40000, {.tempo = tempo, .isPlaying = true}));
        EXPECT_TRUE(sound == expected) << tempo;
    }
}

TYPED_TEST(SoundContract, TheRenderThreadDoesNotAllocate)
{
    TypeParam plugin;
    {
        const AllocationCounter counter;
        ASSERT_TRUE(plugin.start(sampleRate, 4096));
        ASSERT_GT(counter.count(), 0) << "the plug-in's memory is not counted";
    }
    Sound sound(4096);
    int taken = 0;
    bool hasSounded = false;
    for (int block = 0; block < 60; ++block) {
        auto transport = block % 20 == 19 ? stopped : rolling;
        transport.tempo = 200.0 + block;
        plugin.setTransport(transport);
        plugin.setValue(static_cast<ParameterAddress>(block) % parameterCount, 0.75);
        const AllocationCounter counter;
        plugin.render(sound.left.data(), sound.right.data(), sound.frames());
        taken += counter.count();
        hasSounded = hasSounded || !sound.isSilent();
    }
    EXPECT_EQ(taken, 0);
    EXPECT_TRUE(hasSounded);
}

TYPED_TEST(SoundContract, SurvivesRandomHosts)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int count) {
            return std::uniform_int_distribution(0, count - 1)(random);
        };
        TypeParam plugin;
        const auto start = [&] { return plugin.start(8000.0 + below(184000), 4096); };
        ASSERT_TRUE(start());
        for (int block = 0; block < 30; ++block) {
            for (int i = below(40); i > 0; --i)
                plugin.setValue(static_cast<ParameterAddress>(below(static_cast<int>(parameterCount))),
                                (below(2001) - 1000.0) / (1 + below(100)));
            auto transport = below(4) == 0 ? stopped : rolling;
            transport.tempo = below(1000);
            transport.beatsPerBar = below(20);
            transport.beatUnit = below(20);
            ASSERT_TRUE(playedBy(plugin, below(4097), transport).isInBounds()) << seed;
            if (below(10) == 0) {
                plugin.stop();
                ASSERT_TRUE(start());
            }
        }
    }
}

TYPED_TEST(SoundContract, ManyInstancesPlaySideBySide)
{
    std::vector<std::unique_ptr<TypeParam>> plugins;
    for (int i = 0; i < 20; ++i) {
        plugins.push_back(std::make_unique<TypeParam>());
        ASSERT_TRUE(plugins.back()->start(sampleRate, 480));
    }
    for (auto& plugin : plugins) {
        Sound sound(0);
        for (int done = 0; done < 48000; done += 480)
            sound.append(playedBy(*plugin, 480, rolling));
        EXPECT_FALSE(sound.isSilent());
    }
}

} // namespace
} // namespace velotrine
