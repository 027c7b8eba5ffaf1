#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/Repeatedly.h"
#include "tests/plugin/Vst3Host.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "tests/plugin/Sound.h"
#include "tests/plugin/VirtualDisplay.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

constexpr double sampleRate = 48000.0;
constexpr HostTransport stopped{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = false};
constexpr HostTransport rolling{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};

/// JUCE's wrapper looks for a display as it is loaded, and keeps to it.
class Vst3 : public testing::Test
{
protected:
    const VirtualDisplay& display = VirtualDisplay::shared();
};

std::uint32_t idOf(const Vst3Host& host, std::size_t index)
{
    return host.parameters().at(index).id;
}

std::uint32_t programId(const Vst3Host& host)
{
    constexpr std::int32_t isProgramChange = 1 << 15;
    for (const auto& parameter : host.parameters())
        if ((parameter.flags & isProgramChange) != 0)
            return parameter.id;
    throw std::runtime_error("no program parameter");
}

TEST_F(Vst3, IsAnInstrumentWithOneOutputAndNoInputs)
{
    const Vst3Host host;
    EXPECT_EQ(host.vendor(), "Marrowbeck");
    EXPECT_EQ(host.category(), "Instrument|Synth");
    EXPECT_EQ(host.audioInputs(), 0);
    EXPECT_EQ(host.audioOutputs(), 1);
    EXPECT_EQ(host.eventInputs(), 0);
}

TEST_F(Vst3, ListsTheInstrumentsParametersFirstAndInTheirOrder)
{
    const Vst3Host host;
    const auto parameters = host.parameters();
    ASSERT_GE(parameters.size(), parameterCount);
    for (const auto& info : parameterTable()) {
        const auto& parameter = parameters[info.address];
        EXPECT_EQ(parameter.title, info.name);
        EXPECT_EQ(parameter.stepCount,
                  info.isDiscrete() ? static_cast<int>(info.maxValue - info.minValue) : 0)
            << info.name;
        const auto expected = (info.initialValue - info.minValue) / (info.maxValue - info.minValue);
        EXPECT_NEAR(parameter.defaultValue, static_cast<double>(expected), 1e-6);
        EXPECT_NEAR(host.value(parameter.id), static_cast<double>(expected), 1e-6);
    }
    // What is left is the wrapper's own: bypass and program.
    EXPECT_EQ(parameters.size(), parameterCount + 2);
}

TEST_F(Vst3, ReadsBackEveryTextThatItWrites)
{
    const Vst3Host host;
    for (const auto& parameter : host.parameters())
        for (int i = 0; i <= 16; ++i) {
            const auto text = host.text(parameter.id, i / 16.0);
            const auto value = host.valueOf(parameter.id, text);
            ASSERT_TRUE(value) << parameter.title << " " << text;
            EXPECT_EQ(host.text(parameter.id, *value), text) << parameter.title;
        }
    EXPECT_EQ(host.text(idOf(host, 4), 6.0 / 11.0), "F#");
    EXPECT_EQ(host.text(idOf(host, 6), 80.0 / 260.0), "120.0");
    EXPECT_EQ(host.text(idOf(host, 9), 0.25), "4 spots");
}

TEST_F(Vst3, HasThePresetsAsPrograms)
{
    const Vst3Host host;
    std::vector<std::string> names;
    for (const auto& preset : presetTable())
        names.emplace_back(preset.name);
    EXPECT_EQ(host.programs(), names);
}

Sound playedIn(Vst3Host& host, const BlockSizes& sizes)
{
    constexpr std::array edges{1000, 20000, 60001};
    Sound sound(80000);
    EXPECT_TRUE(host.start(sampleRate, 100000));
    inBlocks(sound.frames(), sizes, edges, [&](int offset, int frames) {
        const auto transport = offset >= 1000 && offset < 60001 ? rolling : stopped;
        std::vector<Vst3Automation> automation;
        if (offset == 20000)
            automation = {{idOf(host, 9), 1.0}, {idOf(host, 7), 0.25}};
        EXPECT_TRUE(host.process(sound.left.data() + offset, sound.right.data() + offset, frames, transport,
                                 automation));
    });
    return sound;
}

TEST_F(Vst3, SoundsTheSameWhateverTheHostsBlockSizes)
{
    Vst3Host reference;
    const auto expected = playedIn(reference, blocksOf(100000));
    EXPECT_FALSE(expected.isSilent());
    for (const auto& sizes : allBlockSizes()) {
        Vst3Host host;
        EXPECT_TRUE(playedIn(host, sizes) == expected) << sizes.name;
    }
}

TEST_F(Vst3, SoundsTheSameWhateverTheHostsBlockSizesWithAutomationEvery32Frames)
{
    const auto played = [](const std::function<int(int done)>& blockAt) {
        Vst3Host host;
        constexpr int frames = 32 * 1000;
        Sound sound(frames);
        EXPECT_TRUE(host.start(sampleRate, 32));
        for (int done = 0; done < frames;) {
            const int count = blockAt(done);
            std::vector<Vst3Automation> automation;
            if (done % 32 == 0)
                automation = {{idOf(host, 7), 0.5 + 0.4 * std::sin(done / 2000.0)},
                              {idOf(host, 0), 0.5 + 0.5 * std::cos(done / 2000.0)}};
            EXPECT_TRUE(host.process(sound.left.data() + done, sound.right.data() + done, count, rolling,
                                     automation));
            done += count;
        }
        return sound;
    };
    const auto expected = played([](int) { return 32; });
    EXPECT_FALSE(expected.isSilent());
    EXPECT_TRUE(played([](int) { return 1; }) == expected);
    EXPECT_TRUE(played([](int done) { return std::min(1 + done % 17, 32 - done % 32); }) == expected);
}

TEST_F(Vst3, SoundsLikeTheAudioUnitAtEveryRateThatADeviceHas)
{
    for (const double rate : {8000.0, 11025.0, 22050.0, 44100.0, 44056.25, 47999.999, 48000.0, 88200.0,
                              96000.0, 176400.0, 192000.0, 384000.0, 768000.0}) {
        constexpr int frames = 60000;
        Vst3Host host;
        ASSERT_TRUE(host.start(rate, frames));
        Sound sound(frames);
        ASSERT_TRUE(host.process(sound.left.data(), sound.right.data(), frames, rolling));
        const auto expected = soundOfTheAudioUnit(frames, rate, rolling.tempo, [](VelotrineAudioUnit&) {});
        EXPECT_TRUE(sound == expected) << rate;
    }
}

TEST_F(Vst3, SurvivesARateThatNoDeviceHas)
{
    for (const double rate : {0.0, -48000.0, 1.0, 1e9, std::nan("")}) {
        Vst3Host host;
        host.start(rate, 512);
        Sound sound(512);
        host.process(sound.left.data(), sound.right.data(), 512, rolling);
        EXPECT_TRUE(sound.isSilent()) << rate;
        ASSERT_TRUE(host.start(sampleRate, 48000));
        Sound later(48000);
        host.process(later.left.data(), later.right.data(), 48000, rolling);
        EXPECT_FALSE(later.isSilent()) << rate;
    }
}

TEST_F(Vst3, IsSilentBeforeTheTransportRolls)
{
    Vst3Host host;
    ASSERT_TRUE(host.start(sampleRate, 48000));
    for (const auto& transport : {std::optional<HostTransport>(), std::optional(stopped)}) {
        Sound sound(48000);
        host.process(sound.left.data(), sound.right.data(), 48000, transport);
        EXPECT_TRUE(sound.isSilent());
    }
}

TEST_F(Vst3, SoundsAtEveryBlockSize)
{
    Vst3Host host;
    ASSERT_TRUE(host.start(sampleRate, 16384));
    for (const int frames : {0, 1, 2, 10, 17, 32, 64, 1024, 4096, 16384}) {
        Sound sound(16385);
        ASSERT_TRUE(host.process(sound.left.data(), sound.right.data(), frames, rolling));
        EXPECT_EQ(sound.left[static_cast<std::size_t>(frames)], Sound::untouched);
    }
}

TEST_F(Vst3, SavesTheSameBytesAfterLoadingThem)
{
    Vst3Host first;
    for (std::size_t i = 0; i < parameterCount; ++i)
        first.setValue(idOf(first, i), 0.37);
    const auto saved = first.save();
    ASSERT_FALSE(saved.empty());
    const Vst3Host second;
    EXPECT_TRUE(second.load(saved));
    EXPECT_EQ(second.save(), saved);
}

TEST_F(Vst3, AHostThatSendsBackTheValuesThatItReadsChangesNothing)
{
    // The first three come out one float beside, on the way to 0..1 and back.
    Vst3Host host;
    ASSERT_TRUE(host.start(sampleRate, 512));
    Sound sound(512);
    for (const auto* const tempo : {"105.00025", "125.00033", "180.00102", "97.3"}) {
        auto state = host.save();
        const auto number = state.find("\"bpm\": ") + 7;
        state.replace(number, state.find(',', number) - number, tempo);
        ASSERT_TRUE(host.load(state));
        const auto saved = host.save();
        ASSERT_NE(saved.find(tempo), std::string::npos);
        std::vector<Vst3Automation> all;
        for (const auto& parameter : host.parameters())
            if (parameter.id != programId(host))
                all.push_back(
                    {parameter.id, static_cast<double>(static_cast<float>(host.value(parameter.id)))});
        host.process(sound.left.data(), sound.right.data(), 512, rolling, all);
        EXPECT_EQ(host.save(), saved);
    }
}

TEST_F(Vst3, LoadingItsOwnStateIsNotHeard)
{
    Vst3Host undisturbed;
    Vst3Host loading;
    for (int block = 0; block < 200; ++block) {
        if (block == 0) {
            ASSERT_TRUE(undisturbed.start(sampleRate, 512));
            ASSERT_TRUE(loading.start(sampleRate, 512));
        }
        Sound expected(512);
        Sound sound(512);
        undisturbed.process(expected.left.data(), expected.right.data(), 512, rolling);
        loading.process(sound.left.data(), sound.right.data(), 512, rolling);
        ASSERT_TRUE(sound == expected) << block;
        ASSERT_TRUE(loading.load(loading.save()));
    }
}

TEST_F(Vst3, ARefusedStateLeavesEverythingAsItWas)
{
    const Vst3Host host;
    host.setValue(idOf(host, 0), 0.125);
    const auto before = host.save();
    for (const auto& state : {std::string(), std::string("no state"), before.substr(0, before.size() / 2)}) {
        host.load(state);
        EXPECT_EQ(host.save(), before);
    }
}

TEST_F(Vst3, AStateOutlastsTheProgramThatAHostSendsAfterIt)
{
    const Vst3Host first;
    first.setValue(programId(first), 3.0 / 9.0);
    first.setValue(idOf(first, 0), 0.125);
    const auto saved = first.save();
    Vst3Host second;
    EXPECT_TRUE(second.load(saved));
    second.setValue(programId(second), 0.0);
    ASSERT_TRUE(second.start(sampleRate, 512));
    Sound sound(512);
    second.process(sound.left.data(), sound.right.data(), 512, rolling, {{programId(second), 0.0}});
    EXPECT_EQ(second.save(), saved);
}

TEST_F(Vst3, SavesAndLoadsOnAnotherThreadWhileItPlays)
{
    Vst3Host host;
    ASSERT_TRUE(host.start(sampleRate, 512));
    const auto saved = host.save();
    const auto parameters = host.parameters();
    const Repeatedly other([&] {
        EXPECT_FALSE(host.save().empty());
        EXPECT_TRUE(host.load(saved));
    });
    std::mt19937 random(1);
    for (int block = 0; block < 200; ++block) {
        const auto id = parameters[random() % parameterCount].id;
        Sound sound(512);
        host.process(sound.left.data(), sound.right.data(), 512, rolling,
                     {{id, std::uniform_real_distribution(0.0, 1.0)(random)}});
        EXPECT_TRUE(std::ranges::all_of(sound.left, [](float sample) { return std::abs(sample) <= 1.0f; }));
    }
}

TEST_F(Vst3, TakesValuesFromTwoThreadsWhileItPlays)
{
    Vst3Host host;
    ASSERT_TRUE(host.start(sampleRate, 512));
    const auto parameters = host.parameters();
    const Repeatedly other([&, i = std::size_t{0}]() mutable {
        host.setValue(parameters[i % parameterCount].id, static_cast<double>(i % 11) / 10.0);
        ++i;
    });
    for (int block = 0; block < 300; ++block) {
        Sound sound(512);
        host.process(sound.left.data(), sound.right.data(), 512, rolling,
                     {{parameters[static_cast<std::size_t>(block) % parameterCount].id, block % 7 / 6.0}});
        EXPECT_TRUE(std::ranges::all_of(sound.left, [](float sample) { return std::abs(sample) <= 1.0f; }));
    }
}

TEST_F(Vst3, SurvivesRandomHosts)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](unsigned count) {
            return std::uniform_int_distribution<unsigned>(0, count - 1)(random);
        };
        Vst3Host host;
        const auto parameters = host.parameters();
        ASSERT_TRUE(host.start(8000.0 + below(184000), 4096));
        for (int block = 0; block < 30; ++block) {
            std::vector<Vst3Automation> automation;
            for (unsigned i = 0; i < below(40); ++i)
                automation.push_back({below(50) == 0 ? below(1000000) : parameters[below(parameterCount)].id,
                                      (below(2001) - 500.0) / (1 + below(1000))});
            auto transport = below(4) == 0 ? stopped : rolling;
            transport.tempo = below(1000);
            transport.beatsPerBar = below(20);
            transport.beatUnit = below(20);
            const auto frames = static_cast<int>(below(4097));
            Sound sound(4097);
            host.process(sound.left.data(), sound.right.data(), frames, transport, automation);
            ASSERT_TRUE(std::all_of(sound.left.begin(), sound.left.begin() + frames, [](float sample) {
                return std::abs(sample) <= 1.0f;
            })) << seed;
            ASSERT_EQ(sound.left[static_cast<std::size_t>(frames)], Sound::untouched);
        }
    }
}

class Vst3Editor : public testing::Test
{
protected:
    const VirtualDisplay& display = VirtualDisplay::shared();
};

TEST_F(Vst3Editor, ShowsItselfInTheHostsWindowWithoutAWindowManager)
{
    Vst3Host host;
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.open(parent));
    EXPECT_EQ(host.size(), std::pair(480, 360));
    host.runLoop(300ms);
    EXPECT_GT(display.coloursIn(parent), manyColours);
    EXPECT_TRUE(host.resize(600, 500));
    host.runLoop(50ms);
    EXPECT_EQ(host.size(), std::pair(600, 500));
    EXPECT_NE(host.save().find("\"width\": 600"), std::string::npos);
}

TEST_F(Vst3Editor, OpensAndClosesAnyNumberOfTimes)
{
    Vst3Host host;
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(host.open(parent));
        host.runLoop(30ms);
        host.close();
    }
}

TEST_F(Vst3Editor, AKnobTurnedWithTheMouseReachesTheHostAsOneGesture)
{
    Vst3Host host;
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.open(parent));
    host.runLoop(200ms);
    display.act(std::string("mousemove ") + knob + " mousedown 1");
    host.runLoop(50ms);
    display.act("mousemove_relative -- 0 -20 mousemove_relative -- 0 -20");
    host.runLoop(50ms);
    display.act("mouseup 1");
    host.runLoop(50ms);
    ASSERT_GE(host.told().size(), 3u);
    EXPECT_EQ(host.told().front(), "begin 0");
    EXPECT_EQ(host.told().back(), "end 0");
    EXPECT_GT(host.value(idOf(host, 0)), 0.5);
}

TEST_F(Vst3Editor, TellsTheHostWhatAProgramChanges)
{
    // Without an editor, the wrapper has no loop of the host's to say it in.
    Vst3Host host;
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.open(parent));
    host.runLoop(100ms);
    host.setValue(programId(host), 1.0);
    EXPECT_NE(host.save().find("Lazy 8"), std::string::npos);
    EXPECT_NE(std::ranges::find(host.told(), "29 = 1."), host.told().end());
    EXPECT_NEAR(host.value(idOf(host, 29)), static_cast<double>(presetTable()[9].values[29]), 1e-6);
}

TEST_F(Vst3Editor, OpensAndClosesWhileItPlaysAndIsSavedAndLoadedOnOtherThreads)
{
    Vst3Host host;
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.start(sampleRate, 512));
    const auto saved = host.save();
    std::atomic<int> soundingBlocks{0};
    const Repeatedly player([&] {
        Sound sound(512);
        host.process(sound.left.data(), sound.right.data(), 512, rolling);
        soundingBlocks += sound.isSilent() ? 0 : 1;
        std::this_thread::sleep_for(1ms);
    });
    const Repeatedly keeper([&] {
        EXPECT_FALSE(host.save().empty());
        EXPECT_TRUE(host.load(saved));
        std::this_thread::sleep_for(1ms);
    });
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(host.open(parent));
        host.runLoop(60ms);
        EXPECT_GT(display.coloursIn(parent), manyColours);
        host.close();
    }
    EXPECT_GT(soundingBlocks, 10);
}

TEST_F(Vst3Editor, LeavesTheKeyboardToTheHost)
{
    Vst3Host host;
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    display.giveKeyboardTo(parent);
    ASSERT_TRUE(host.open(parent));
    host.runLoop(200ms);
    display.act(std::string("mousemove ") + knob + " click 1");
    host.runLoop(100ms);
    display.act("key space");
    host.runLoop(50ms);
    EXPECT_TRUE(display.takeKeyPress(parent));
}

} // namespace
} // namespace velotrine
