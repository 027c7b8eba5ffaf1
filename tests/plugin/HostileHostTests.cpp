#include "plugin/ThreadChecks.h"
#include "tests/plugin/HostileHost.h"

#include <algorithm>
#include <array>
#include <barrier>
#include <cstddef>
#include <limits>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace velotrine {
namespace {

constexpr auto infinity = std::numeric_limits<double>::infinity();
constexpr auto notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto smallest = std::numeric_limits<double>::denorm_min();
constexpr auto largest = std::numeric_limits<double>::max();
constexpr std::array nonsense{notANumber, infinity, -infinity, smallest, -smallest, largest,
                              -largest,   0.0,      -1.0,      1e9,      -1e9,      1e-300};

using Mistake = void (*)(PluginUnderTest&);

void sendsNonsenseAsValues(PluginUnderTest& plugin)
{
    for (const double value : nonsense) {
        for (ParameterAddress address = 0; address < parameterCount; ++address)
            plugin.setValue(address, value);
        expectBoundedBlock(plugin, 512);
    }
}

void sendsNonsenseAsTransport(PluginUnderTest& plugin)
{
    for (const double value : nonsense)
        for (auto member : {&HostTransport::tempo, &HostTransport::tempoPerFrame, &HostTransport::beatsPerBar,
                            &HostTransport::beatUnit}) {
            auto transport = rolling;
            transport.*member = value;
            plugin.setTransport(transport);
            expectBoundedBlock(plugin, 512);
        }
}

void startsAndStopsItsTransportInEachBlock(PluginUnderTest& plugin)
{
    for (int block = 0; block < 200; ++block) {
        auto transport = block % 2 == 0 ? rolling : stopped;
        transport.tempo = 1.0 + 97.0 * (block % 11);
        plugin.setTransport(transport);
        expectBoundedBlock(plugin, 1 + block % 70);
    }
}

void asksForMoreFramesThanItAnnounced(PluginUnderTest& plugin)
{
    for (const int announced : {0, 1, 17, 512}) {
        plugin.start(sampleRate, announced);
        plugin.setTransport(rolling);
        for (const int frames : {0, 1, 17, 8192, 0, 100000})
            expectBoundedBlock(plugin, frames);
    }
}

void announcesRatesThatNoDeviceHas(PluginUnderTest& plugin)
{
    for (const double rate : nonsense) {
        plugin.start(rate, 512);
        plugin.setTransport(rolling);
        expectBoundedBlock(plugin, 512);
    }
    for (const double rate : {8000.0, 768000.0, 44100.0}) {
        EXPECT_TRUE(plugin.start(rate, 512)) << rate;
        expectBoundedBlock(plugin, 8192);
    }
}

void givesNoBuffers(PluginUnderTest& plugin)
{
    std::vector<float> channel(8192);
    plugin.setTransport(rolling);
    plugin.render(nullptr, nullptr, 8192);
    plugin.render(channel.data(), nullptr, 8192);
    plugin.render(nullptr, channel.data(), 8192);
}

void givesOneBufferForBothChannels(PluginUnderTest& plugin)
{
    std::vector<float> channel(8193, Sound::untouched);
    plugin.setTransport(rolling);
    plugin.render(channel.data(), channel.data(), 8192);
    EXPECT_EQ(channel.back(), Sound::untouched);
    channel.pop_back();
    EXPECT_TRUE(std::ranges::all_of(channel, [](float sample) { return std::abs(sample) <= 1.0f; }));
}

void startsAndStopsAgainAndAgain(PluginUnderTest& plugin)
{
    for (int time = 0; time < 10; ++time) {
        plugin.stop();
        plugin.stop();
        expectBoundedBlock(plugin, 64);
        plugin.start(sampleRate, 512);
        plugin.start(sampleRate, 512);
        expectBoundedBlock(plugin, 64);
    }
}

void savesAndLoadsBeforeEachBlock(PluginUnderTest& plugin)
{
    for (int time = 0; time < 50; ++time) {
        plugin.load(plugin.save());
        plugin.load("");
        expectBoundedBlock(plugin, 64);
    }
}

void setsValuesWhileStopped(PluginUnderTest& plugin)
{
    plugin.stop();
    sendsNonsenseAsValues(plugin);
}

void closesAnEditorThatIsNotOpen(PluginUnderTest& plugin)
{
    plugin.closeEditor();
    plugin.closeEditor();
}

std::vector<HostMistake> mistakesOf(PluginUnderTest& plugin)
{
    constexpr std::array<std::pair<const char*, Mistake>, 11> ofEveryFormat{
        {{"nonsense as values", sendsNonsenseAsValues},
         {"nonsense as transport", sendsNonsenseAsTransport},
         {"a transport that starts and stops", startsAndStopsItsTransportInEachBlock},
         {"more frames than announced", asksForMoreFramesThanItAnnounced},
         {"rates that no device has", announcesRatesThatNoDeviceHas},
         {"no buffers", givesNoBuffers},
         {"one buffer twice", givesOneBufferForBothChannels},
         {"starts and stops", startsAndStopsAgainAndAgain},
         {"saves and loads", savesAndLoadsBeforeEachBlock},
         {"values while stopped", setsValuesWhileStopped},
         {"an editor that is not open", closesAnEditorThatIsNotOpen}}};
    auto all = plugin.forbiddenCalls();
    for (const auto& [name, make] : ofEveryFormat)
        all.push_back({name, [&plugin, mistake = make] { mistake(plugin); }});
    return all;
}

template <typename Plugin>
class HostileHost : public testing::Test
{
protected:
    void SetUp() override
    {
        if (checksThreads)
            GTEST_SKIP() << "a debug build stops a host that breaks its promises";
    }
};

TYPED_TEST_SUITE(HostileHost, EveryFormat, FormatNames);

TYPED_TEST(HostileHost, LeavesThePluginAsNewWhateverItDoesBeforeAnythingElse)
{
    const auto& expected = pieceOfANewPlugin<TypeParam>();
    EXPECT_FALSE(expected.isSilent());
    const auto count = [] {
        TypeParam plugin;
        return mistakesOf(plugin).size();
    }();
    for (std::size_t i = 0; i < count; ++i) {
        TypeParam plugin;
        const auto mistake = mistakesOf(plugin).at(i);
        mistake.make();
        expectBoundedBlock(plugin, 512);
        EXPECT_TRUE(aNewPieceOf(plugin) == expected) << mistake.name;
    }
}

TYPED_TEST(HostileHost, LeavesThePluginAsNewWhateverItDoesWhileItPlays)
{
    TypeParam plugin;
    for (const auto& mistake : mistakesOf(plugin)) {
        EXPECT_TRUE(plugin.start(sampleRate, 512));
        plugin.setTransport(rolling);
        expectBoundedBlock(plugin, 4096);
        mistake.make();
        expectBoundedBlock(plugin, 512);
        EXPECT_TRUE(aNewPieceOf(plugin) == pieceOfANewPlugin<TypeParam>()) << mistake.name;
    }
}

TYPED_TEST(HostileHost, LeavesThePluginAsNewAfterMistakesInAnyOrder)
{
    TypeParam plugin;
    for (unsigned seed = 0; seed < 5; ++seed) {
        auto mistakes = mistakesOf(plugin);
        std::shuffle(mistakes.begin(), mistakes.end(), std::mt19937(seed));
        for (const auto& mistake : mistakes) {
            SCOPED_TRACE(mistake.name);
            mistake.make();
            expectBoundedBlock(plugin, 64);
        }
        EXPECT_TRUE(aNewPieceOf(plugin) == pieceOfANewPlugin<TypeParam>()) << seed;
    }
}

TYPED_TEST(HostileHost, PlaysManyInstancesInThreadsThatShareThem)
{
    constexpr std::size_t instances = 64;
    constexpr std::size_t threadCount = 8;
    constexpr int frames = 480;
    constexpr int blocks = 48000 / frames;
    std::vector<std::unique_ptr<TypeParam>> plugins;
    for (std::size_t i = 0; i < instances; ++i) {
        plugins.push_back(std::make_unique<TypeParam>());
        ASSERT_TRUE(plugins.back()->load(stateOfANewPieceEachTime()));
        ASSERT_TRUE(plugins.back()->start(sampleRate, 512));
        playedBy(*plugins.back(), 512, stopped);
        plugins.back()->setTransport(rolling);
    }
    std::vector<Sound> sounds(instances, Sound(48000));
    std::barrier endOfBlock(threadCount);
    std::vector<std::jthread> threads;
    for (std::size_t thread = 0; thread < threadCount; ++thread)
        threads.emplace_back([&, thread] {
            for (int block = 0; block < blocks; ++block) {
                // Each instance is another thread's in the next block.
                const auto first = (thread + static_cast<std::size_t>(block)) % threadCount;
                for (auto i = first; i < instances; i += threadCount) {
                    const auto offset = block * frames;
                    plugins[i]->render(sounds[i].left.data() + offset, sounds[i].right.data() + offset,
                                       frames);
                }
                endOfBlock.arrive_and_wait();
            }
        });
    threads.clear();
    for (const auto& sound : sounds)
        ASSERT_TRUE(sound == pieceOfANewPlugin<TypeParam>());
}

} // namespace
} // namespace velotrine
