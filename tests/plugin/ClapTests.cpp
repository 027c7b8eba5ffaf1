#include "tests/plugin/ClapHost.h"

#include "audiounit/Parameters.h"

#include <array>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double sampleRate = 48000.0;
constexpr HostTransport stopped{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = false};
constexpr HostTransport rolling{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};
constexpr clap_id volume = 7;

class Clap : public testing::Test
{
protected:
    ClapLibrary library;
};

/// With events every 32 frames of the session, wherever the blocks begin, a start and a stop.
Sound sessionOf(ClapHost& host, const BlockSizes& sizes)
{
    constexpr std::array edges{1000, 60001};
    Sound sound(80000);
    EXPECT_TRUE(host.start(sampleRate, 100000));
    inBlocks(sound.frames(), sizes, edges, [&](int offset, int frames) {
        std::vector<ClapAutomation> automation;
        for (int frame = 0; frame < frames; ++frame)
            if ((offset + frame) % 32 == 0) {
                const auto turn = static_cast<double>(offset + frame) / 20000.0;
                automation.push_back({static_cast<std::uint32_t>(frame), volume, 0.5 + 0.4 * std::sin(turn)});
                automation.push_back({static_cast<std::uint32_t>(frame), 0, 0.5 + 0.5 * std::cos(turn)});
            }
        const auto transport = offset >= 1000 && offset < 60001 ? rolling : stopped;
        const auto status = host.process(sound.left.data() + offset, sound.right.data() + offset,
                                         static_cast<std::uint32_t>(frames), transport, automation);
        EXPECT_EQ(status, CLAP_PROCESS_CONTINUE);
    });
    return sound;
}

TEST_F(Clap, DescribesItselfToAScanner)
{
    const auto& factory = library.factory();
    ASSERT_EQ(factory.get_plugin_count(&factory), 1u);
    EXPECT_EQ(factory.get_plugin_descriptor(&factory, 1), nullptr);
    const auto& descriptor = *factory.get_plugin_descriptor(&factory, 0);
    EXPECT_STREQ(descriptor.id, "example.marrowbeck.velotrine");
    EXPECT_STREQ(descriptor.name, "Velotrine");
    EXPECT_STREQ(descriptor.vendor, "Marrowbeck");
    std::vector<std::string> features;
    for (const auto* feature = descriptor.features; *feature != nullptr; ++feature)
        features.emplace_back(*feature);
    EXPECT_EQ(features, (std::vector<std::string>{"instrument", "synthesizer", "stereo"}));
}

TEST_F(Clap, RefusesAnyOtherPluginFactoryOrExtension)
{
    const auto& factory = library.factory();
    clap_host_t host{};
    host.clap_version = CLAP_VERSION;
    EXPECT_EQ(factory.create_plugin(&factory, &host, "another.plugin"), nullptr);
    EXPECT_EQ(factory.create_plugin(&factory, nullptr, "example.marrowbeck.velotrine"), nullptr);
    EXPECT_EQ(library.entry().get_factory("another.factory"), nullptr);
    const ClapHost real(library);
    EXPECT_EQ(real.plugin().get_extension(&real.plugin(), "another.extension"), nullptr);
}

TEST_F(Clap, HasOneOutputOfSoundAndOneOfNotes)
{
    const ClapHost host(library);
    const auto& ports = host.extension<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
    EXPECT_EQ(ports.count(&host.plugin(), true), 0u);
    ASSERT_EQ(ports.count(&host.plugin(), false), 1u);
    clap_audio_port_info_t info{};
    ASSERT_TRUE(ports.get(&host.plugin(), 0, false, &info));
    EXPECT_EQ(info.channel_count, 2u);
    EXPECT_STREQ(info.port_type, CLAP_PORT_STEREO);
    EXPECT_FALSE(ports.get(&host.plugin(), 1, false, &info));
    const auto& notes = host.extension<clap_plugin_note_ports_t>(CLAP_EXT_NOTE_PORTS);
    EXPECT_EQ(notes.count(&host.plugin(), true), 0u);
    ASSERT_EQ(notes.count(&host.plugin(), false), 1u);
    clap_note_port_info_t port{};
    ASSERT_TRUE(notes.get(&host.plugin(), 0, false, &port));
    EXPECT_EQ(port.supported_dialects, std::uint32_t{CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI});
    EXPECT_EQ(port.preferred_dialect, std::uint32_t{CLAP_NOTE_DIALECT_CLAP});
    EXPECT_FALSE(notes.get(&host.plugin(), 1, false, &port));
    EXPECT_FALSE(notes.get(&host.plugin(), 0, true, &port));
}

TEST_F(Clap, ListsTheInstrumentsParametersInTheirOrder)
{
    const ClapHost host(library);
    ASSERT_EQ(host.params().count(&host.plugin()), parameterCount);
    for (const auto& parameter : parameterTable()) {
        clap_param_info_t info{};
        ASSERT_TRUE(
            host.params().get_info(&host.plugin(), static_cast<std::uint32_t>(parameter.address), &info));
        EXPECT_EQ(info.id, parameter.address);
        EXPECT_EQ(info.name, parameter.name);
        EXPECT_EQ(info.min_value, static_cast<double>(parameter.minValue));
        EXPECT_EQ(info.max_value, static_cast<double>(parameter.maxValue));
        EXPECT_EQ(info.default_value, static_cast<double>(parameter.initialValue));
        EXPECT_EQ(host.value(info.id), info.default_value);
        EXPECT_EQ((info.flags & CLAP_PARAM_IS_STEPPED) != 0, parameter.isDiscrete());
        EXPECT_NE(info.flags & CLAP_PARAM_IS_AUTOMATABLE, 0u);
    }
    clap_param_info_t info{};
    EXPECT_FALSE(host.params().get_info(&host.plugin(), parameterCount, &info));
}

TEST_F(Clap, ReadsBackEveryTextThatItWrites)
{
    const ClapHost host(library);
    std::array<char, 64> text{};
    const auto size = static_cast<std::uint32_t>(text.size());
    for (const auto& parameter : parameterTable()) {
        const auto id = static_cast<clap_id>(parameter.address);
        for (int i = 0; i <= 20; ++i) {
            const auto wanted = static_cast<double>(parameter.minValue) +
                                static_cast<double>(parameter.maxValue - parameter.minValue) * i / 20.0;
            ASSERT_TRUE(host.params().value_to_text(&host.plugin(), id, wanted, text.data(), size));
            const std::string first = text.data();
            double read = -1.0;
            ASSERT_TRUE(host.params().text_to_value(&host.plugin(), id, first.c_str(), &read)) << first;
            ASSERT_TRUE(host.params().value_to_text(&host.plugin(), id, read, text.data(), size));
            EXPECT_EQ(first, text.data());
        }
    }
    const auto textOf = [&](clap_id id, double value) {
        host.params().value_to_text(&host.plugin(), id, value, text.data(), size);
        return std::string(text.data());
    };
    EXPECT_EQ(textOf(4, 6.0), "F#");
    EXPECT_EQ(textOf(5, 3.0), "Minor Pentatonic");
    EXPECT_EQ(textOf(6, 120.0), "120.0");
    EXPECT_EQ(textOf(9, 4.0), "4 spots");
    EXPECT_EQ(textOf(19, 0.75), "75 %");
    EXPECT_EQ(textOf(8, 1.0), "On");
    EXPECT_TRUE(host.params().value_to_text(&host.plugin(), 5, 3.0, text.data(), 6));
    EXPECT_STREQ(text.data(), "Minor");
    double value = 0.0;
    EXPECT_FALSE(host.params().text_to_value(&host.plugin(), 4, "H", &value));
    EXPECT_FALSE(host.params().value_to_text(&host.plugin(), parameterCount, 0.0, text.data(), size));
    EXPECT_FALSE(host.params().get_value(&host.plugin(), parameterCount, &value));
}

TEST_F(Clap, TakesValuesWhileItIsNotActive)
{
    ClapHost host(library);
    host.flush({{0, volume, 0.25}, {0, 9, 11.0}, {0, 4000000000U, 1.0}, {0, 0, std::nan("")}});
    EXPECT_EQ(host.value(volume), 0.25);
    EXPECT_EQ(host.value(9), 11.0);
    EXPECT_EQ(host.value(0), 0.5);
    EXPECT_TRUE(host.told.empty());
}

TEST_F(Clap, AutomatesToTheFrameWhateverTheHostsBlockSizes)
{
    ClapHost reference(library);
    const auto expected = sessionOf(reference, blocksOf(100000));
    EXPECT_FALSE(expected.isSilent());
    for (const auto& sizes : allBlockSizes()) {
        ClapHost host(library);
        EXPECT_TRUE(sessionOf(host, sizes) == expected) << sizes.name;
    }
}

/// The notes of a second, in the dialect in which they came.
std::vector<NoteMessage> notesOfASecond(ClapHost& host, std::uint16_t strikeType)
{
    Sound sound(48000);
    EXPECT_TRUE(host.start(sampleRate, 48000));
    host.process(sound.left.data(), sound.right.data(), 48000, rolling);
    EXPECT_FALSE(host.notes.empty());
    EXPECT_EQ(host.eventTypes.at(0), strikeType);
    return host.notes;
}

TEST_F(Clap, SendsNotesInTheFormatsOwnDialectUnlessTheHostKnowsOnlyMidi)
{
    ClapHost silent(library);
    ClapHost knowsBoth(library, CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI | CLAP_NOTE_DIALECT_MIDI2);
    ClapHost knowsMidi(library, CLAP_NOTE_DIALECT_MIDI | CLAP_NOTE_DIALECT_MIDI_MPE);
    ClapHost knowsNeither(library, CLAP_NOTE_DIALECT_MIDI2);
    const auto expected = notesOfASecond(silent, CLAP_EVENT_NOTE_ON);
    EXPECT_EQ(notesOfASecond(knowsBoth, CLAP_EVENT_NOTE_ON), expected);
    EXPECT_EQ(notesOfASecond(knowsMidi, CLAP_EVENT_MIDI), expected);
    EXPECT_EQ(notesOfASecond(knowsNeither, CLAP_EVENT_NOTE_ON), expected);
}

TEST_F(Clap, EndsAllNotesInTheFirstFrameAfterAReset)
{
    ClapHost host(library);
    ASSERT_TRUE(host.start(sampleRate, 64));
    Sound sound(64);
    int keysDown = 0;
    const auto play = [&] {
        host.process(sound.left.data(), sound.right.data(), 64, rolling);
        for (const auto& note : host.notes)
            keysDown += note.isOn ? 1 : -1;
    };
    while (keysDown == 0)
        play();
    host.plugin().reset(&host.plugin());
    host.process(sound.left.data(), sound.right.data(), 64, stopped);
    EXPECT_EQ(host.notes.size(), static_cast<std::size_t>(keysDown));
    for (const auto& note : host.notes)
        EXPECT_TRUE(!note.isOn && note.frame == 0);
}

TEST_F(Clap, SurvivesAHostWithoutBuffers)
{
    ClapHost host(library);
    ASSERT_TRUE(host.start(sampleRate, 512));
    EXPECT_EQ(host.process(nullptr, nullptr, 512, rolling), CLAP_PROCESS_CONTINUE);
    clap_process_t nothing{};
    nothing.frames_count = 512;
    EXPECT_EQ(host.plugin().process(&host.plugin(), &nothing), CLAP_PROCESS_CONTINUE);
    EXPECT_EQ(host.plugin().process(&host.plugin(), nullptr), CLAP_PROCESS_ERROR);
}

TEST_F(Clap, LoadsAStateInPiecesOfAnySizeAndAsksTheHostToReadItsValues)
{
    ClapHost first(library);
    first.flush({{0, volume, 0.25}});
    const auto saved = first.save();
    for (const std::size_t bytesAtATime : {1U, 7U, 4096U}) {
        ClapHost second(library);
        EXPECT_TRUE(second.load(saved, bytesAtATime));
        EXPECT_EQ(second.save(), saved);
        EXPECT_EQ(second.rescans, 1);
    }
}

TEST_F(Clap, SaysInTheHostsLogWhyAStateIsRefused)
{
    ClapHost host(library);
    for (const auto& state : {std::string(), std::string("no state"), host.save().substr(0, 100)}) {
        host.logged.clear();
        EXPECT_FALSE(host.load(state));
        ASSERT_EQ(host.logged.size(), 1u);
        EXPECT_TRUE(host.logged[0].starts_with("The state is refused: ")) << host.logged[0];
    }
}

TEST_F(Clap, SurvivesEventsBeyondTheBlockAndOfUnknownParameters)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](unsigned count) {
            return std::uniform_int_distribution<unsigned>(0, count - 1)(random);
        };
        ClapHost host(library);
        ASSERT_TRUE(host.start(sampleRate, 4096));
        for (int block = 0; block < 30; ++block) {
            std::vector<ClapAutomation> automation;
            for (unsigned i = 0; i < below(40); ++i)
                automation.push_back({below(5000), below(45), (below(2001) - 1000.0) / (1 + below(100))});
            Sound sound(static_cast<int>(below(4096)));
            host.process(sound.left.data(), sound.right.data(), static_cast<std::uint32_t>(sound.frames()),
                         rolling, automation);
            ASSERT_TRUE(sound.isInBounds()) << seed;
        }
    }
}

} // namespace
} // namespace velotrine
