#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/Repeatedly.h"
#include "tests/plugin/Vst3Host.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "tests/support/Sound.h"
#include "tests/support/VirtualDisplay.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>
#include <string>
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

TEST_F(Vst3, IsAnInstrumentWithOneOutputOfSoundAndOneOfNotesAndNoInputs)
{
    const Vst3Host host;
    EXPECT_EQ(host.vendor(), "Marrowbeck");
    EXPECT_EQ(host.category(), "Instrument|Synth");
    EXPECT_EQ(host.audioInputs(), 0);
    EXPECT_EQ(host.audioOutputs(), 1);
    EXPECT_EQ(host.eventInputs(), 0);
    EXPECT_EQ(host.eventOutputs(), 1);
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
    // The rest are the wrapper's own: bypass and program.
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

TEST_F(Vst3, IsSilentAtARateThatNoDeviceHas)
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

TEST_F(Vst3, AHostThatSendsBackTheValuesThatItReadsChangesNothing)
{
    // The first three come back from 0..1 as the neighbouring float.
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
            if (parameter.id != host.programParameter())
                all.push_back(
                    {parameter.id, static_cast<double>(static_cast<float>(host.value(parameter.id)))});
        host.process(sound.left.data(), sound.right.data(), 512, rolling, all);
        EXPECT_EQ(host.save(), saved);
    }
}

TEST_F(Vst3, AStateOutlastsTheProgramThatAHostSendsAfterIt)
{
    const Vst3Host first;
    first.setValue(first.programParameter(), 3.0 / 9.0);
    first.setValue(idOf(first, 0), 0.125);
    const auto saved = first.save();
    Vst3Host second;
    EXPECT_TRUE(second.load(saved));
    second.setValue(second.programParameter(), 0.0);
    ASSERT_TRUE(second.start(sampleRate, 512));
    Sound sound(512);
    second.process(sound.left.data(), sound.right.data(), 512, rolling, {{second.programParameter(), 0.0}});
    EXPECT_EQ(second.save(), saved);
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

TEST_F(Vst3, SurvivesAutomationOfUnknownParameters)
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

TEST_F(Vst3, EndsAllNotesInTheFirstFrameOfABypass)
{
    Vst3Host host;
    const auto bypass = host.parameters().at(parameterCount).id;
    ASSERT_TRUE(host.start(sampleRate, 64));
    Sound sound(64);
    std::vector<NoteMessage> sent;
    const auto play = [&](double isBypassed) {
        host.process(sound.left.data(), sound.right.data(), 64, rolling, {{bypass, isBypassed}});
        sent.insert(sent.end(), host.notes().begin(), host.notes().end());
    };
    const auto keysAreDown = [&sent] {
        return std::ranges::count(sent, true, &NoteMessage::isOn) * 2 != std::ssize(sent);
    };
    while (!keysAreDown())
        play(0.0);
    play(1.0);
    EXPECT_FALSE(keysAreDown());
    ASSERT_FALSE(host.notes().empty());
    for (const auto& message : host.notes())
        EXPECT_EQ(message.frame, 0);
    EXPECT_TRUE(sound.isSilent());
    play(1.0);
    EXPECT_TRUE(host.notes().empty());
}

TEST_F(Vst3, TellsTheHostWhatAProgramChanges)
{
    // Without an editor, the wrapper has no loop of the host's to say it in.
    Vst3Host host;
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    ASSERT_TRUE(host.open(parent));
    host.runLoop(100ms);
    host.setValue(host.programParameter(), 1.0);
    EXPECT_NE(host.save().find("Lazy 8"), std::string::npos);
    EXPECT_NE(std::ranges::find(host.told(), "29 = 1."), host.told().end());
    EXPECT_NEAR(host.value(idOf(host, 29)), static_cast<double>(presetTable()[9].values[29]), 1e-6);
}

} // namespace
} // namespace velotrine
