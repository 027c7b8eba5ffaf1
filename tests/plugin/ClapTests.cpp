#include "tests/plugin/ClapHost.h"
#include "tests/plugin/Repeatedly.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "plugin/HostedInstrument.h"
#include "tests/audiounit/AllocationCounter.h"
#include "tests/plugin/RecordingHost.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <thread>
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

/// With events every 32 frames of the song, a start, a stop and a tempo of its own.
Sound songOf(ClapHost& host, const BlockSizes& sizes)
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

TEST_F(Clap, MakesNothingThatItIsNotAskedFor)
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

TEST_F(Clap, HasOneStereoOutputAndNoOtherPorts)
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
    EXPECT_EQ(notes.count(&host.plugin(), true) + notes.count(&host.plugin(), false), 0u);
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

TEST_F(Clap, IsActivatedAtAnyRateThatADeviceHas)
{
    ClapHost host(library);
    Sound sound(1000);
    for (const double rate : {8000.0, 11025.0, 22050.0, 44100.0, 44056.25, 47999.999, 48000.0, 88200.0,
                              96000.0, 176400.0, 192000.0, 384000.0, 768000.0}) {
        ASSERT_TRUE(host.start(rate, 1000)) << rate;
        EXPECT_EQ(host.process(sound.left.data(), sound.right.data(), 1000, rolling), CLAP_PROCESS_CONTINUE);
    }
    for (const double rate : {0.0, -48000.0, 1e9, std::nan("")})
        EXPECT_FALSE(host.start(rate, 1000)) << rate;
}

TEST_F(Clap, SoundsAtEveryBlockSize)
{
    ClapHost host(library);
    ASSERT_TRUE(host.start(sampleRate, 16384));
    for (const auto& transport :
         {std::optional(rolling), std::optional(stopped), std::optional<HostTransport>()})
        for (const std::uint32_t frames : {0U, 1U, 2U, 10U, 17U, 32U, 64U, 100U, 1024U, 4096U, 16384U}) {
            Sound sound(16385);
            ASSERT_EQ(host.process(sound.left.data(), sound.right.data(), frames, transport),
                      CLAP_PROCESS_CONTINUE);
            EXPECT_TRUE(std::all_of(sound.left.begin(), sound.left.begin() + frames,
                                    [](float sample) { return std::abs(sample) <= 1.0f; }));
            EXPECT_EQ(sound.left[frames], Sound::untouched);
        }
}

TEST_F(Clap, SoundsTheSameWhateverTheHostsBlockSizes)
{
    ClapHost reference(library);
    const auto expected = songOf(reference, blocksOf(100000));
    EXPECT_FALSE(expected.isSilent());
    for (const auto& sizes : allBlockSizes()) {
        ClapHost host(library);
        EXPECT_TRUE(songOf(host, sizes) == expected) << sizes.name;
    }
}

TEST_F(Clap, SoundsLikeTheAudioUnitAtTheSameTempo)
{
    constexpr int frames = 60000;
    ClapHost host(library);
    ASSERT_TRUE(host.start(44100.0, frames));
    Sound sound(frames);
    host.process(sound.left.data(), sound.right.data(), frames, rolling);
    const auto expected = soundOfTheAudioUnit(frames, 44100.0, rolling.tempo, [](VelotrineAudioUnit&) {});
    EXPECT_FALSE(expected.isSilent());
    EXPECT_TRUE(sound == expected);
}

TEST_F(Clap, IsSilentBeforeTheTransportRolls)
{
    ClapHost host(library);
    ASSERT_TRUE(host.start(sampleRate, 48000));
    Sound sound(48000);
    host.process(sound.left.data(), sound.right.data(), 48000, std::nullopt);
    EXPECT_TRUE(sound.isSilent());
    host.process(sound.left.data(), sound.right.data(), 48000, stopped);
    EXPECT_TRUE(sound.isSilent());
    host.process(sound.left.data(), sound.right.data(), 48000, rolling);
    EXPECT_FALSE(sound.isSilent());
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

TEST_F(Clap, SavesTheSameBytesAfterLoadingThem)
{
    ClapHost first(library);
    for (const auto& parameter : parameterTable())
        first.flush({{0, static_cast<clap_id>(parameter.address),
                      static_cast<double>(parameter.minValue) +
                          0.37 * static_cast<double>(parameter.maxValue - parameter.minValue)}});
    const auto saved = first.save();
    ASSERT_FALSE(saved.empty());
    for (const std::size_t bytesAtATime : {1U, 7U, 4096U}) {
        ClapHost second(library);
        EXPECT_TRUE(second.load(saved, bytesAtATime));
        EXPECT_EQ(second.save(), saved);
        EXPECT_EQ(second.rescans, 1);
        for (const auto& parameter : parameterTable())
            EXPECT_EQ(second.value(static_cast<clap_id>(parameter.address)),
                      first.value(static_cast<clap_id>(parameter.address)));
    }
}

TEST_F(Clap, LoadingItsOwnStateIsNotHeard)
{
    ClapHost undisturbed(library);
    ClapHost loading(library);
    ASSERT_TRUE(undisturbed.start(sampleRate, 512));
    ASSERT_TRUE(loading.start(sampleRate, 512));
    for (int block = 0; block < 200; ++block) {
        Sound expected(512);
        Sound sound(512);
        undisturbed.process(expected.left.data(), expected.right.data(), 512, rolling);
        loading.process(sound.left.data(), sound.right.data(), 512, rolling);
        ASSERT_TRUE(sound == expected) << block;
        ASSERT_TRUE(loading.load(loading.save()));
    }
}

TEST_F(Clap, RefusesWhatIsNoStateAndSaysSoInTheHostsLog)
{
    ClapHost host(library);
    host.flush({{0, volume, 0.125}});
    const auto before = host.save();
    for (const auto& state : {std::string(), std::string("no state"), before.substr(0, 100),
                              std::string(2000000, ' '), std::string(100, '\0')}) {
        host.logged.clear();
        EXPECT_FALSE(host.load(state));
        ASSERT_EQ(host.logged.size(), 1u);
        EXPECT_TRUE(host.logged[0].starts_with("The state is refused: ")) << host.logged[0];
        EXPECT_EQ(host.save(), before);
    }
}

TEST_F(Clap, TheRenderThreadTakesNoMemory)
{
    ClapHost host(library);
    {
        const AllocationCounter counter;
        host.start(sampleRate, 4096);
        ASSERT_GT(counter.count(), 0) << "the plug-in's memory is not counted";
    }
    std::vector<float> left(4096);
    std::vector<float> right(4096);
    std::array<float*, 2> channels{left.data(), right.data()};
    clap_audio_buffer_t output{};
    output.data32 = channels.data();
    output.channel_count = 2;
    clap_event_transport_t transport{};
    transport.flags = CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_IS_PLAYING;
    transport.tempo = 240.0;
    clap_event_param_value_t change{};
    change.header = {.size = sizeof change,
                     .time = 40,
                     .space_id = CLAP_CORE_EVENT_SPACE_ID,
                     .type = CLAP_EVENT_PARAM_VALUE,
                     .flags = 0};
    const clap_input_events_t in{
        .ctx = &change,
        .size = [](const clap_input_events_t*) { return 1U; },
        .get = [](const clap_input_events_t* list,
                  std::uint32_t) { return static_cast<const clap_event_header_t*>(list->ctx); }};
    const clap_output_events_t out{
        .ctx = nullptr,
        .try_push = [](const clap_output_events_t*, const clap_event_header_t*) { return true; }};
    clap_process_t process{};
    process.frames_count = 4096;
    process.transport = &transport;
    process.audio_outputs = &output;
    process.audio_outputs_count = 1;
    process.in_events = &in;
    process.out_events = &out;
    const AllocationCounter counter;
    for (int block = 0; block < 50; ++block) {
        change.param_id = static_cast<clap_id>(block % 39);
        change.value = 0.5;
        host.plugin().process(&host.plugin(), &process);
    }
    EXPECT_EQ(counter.count(), 0);
}

TEST_F(Clap, SavesAndLoadsOnAnotherThreadWhileItPlays)
{
    ClapHost host(library);
    ASSERT_TRUE(host.start(sampleRate, 512));
    const auto saved = host.save();
    const Repeatedly other([&] {
        EXPECT_TRUE(host.load(saved));
        EXPECT_FALSE(host.save().empty());
    });
    const Repeatedly reader([&] {
        for (clap_id id = 0; id < parameterCount; ++id)
            EXPECT_TRUE(std::isfinite(host.value(id)));
    });
    Sound sound(512);
    for (int block = 0; block < 300; ++block) {
        std::vector<ClapAutomation> automation;
        for (std::uint32_t frame = 0; frame < 512; frame += 32)
            automation.push_back({frame,
                                  static_cast<clap_id>((frame / 32 + static_cast<std::uint32_t>(block)) % 39),
                                  static_cast<double>(frame) / 100.0});
        host.process(sound.left.data(), sound.right.data(), 512, rolling, automation);
    }
}

TEST_F(Clap, SurvivesRandomHosts)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](unsigned count) {
            return std::uniform_int_distribution<unsigned>(0, count - 1)(random);
        };
        ClapHost host(library);
        ASSERT_TRUE(host.start(8000.0 + below(184000), 4096));
        for (int block = 0; block < 30; ++block) {
            std::vector<ClapAutomation> automation;
            for (unsigned i = 0; i < below(40); ++i)
                automation.push_back({below(5000), below(45), (below(2001) - 1000.0) / (1 + below(100))});
            auto transport = below(4) == 0 ? stopped : rolling;
            transport.tempo = below(1000);
            transport.beatsPerBar = below(20);
            transport.beatUnit = below(20);
            const auto frames = below(4096);
            Sound sound(4096);
            host.process(sound.left.data(), sound.right.data(), frames, transport, automation);
            ASSERT_TRUE(std::all_of(sound.left.begin(), sound.left.begin() + frames, [](float sample) {
                return std::abs(sample) <= 1.0f;
            })) << seed;
        }
    }
}

TEST_F(Clap, ManyLiveSideBySide)
{
    std::vector<std::unique_ptr<ClapHost>> hosts;
    for (int i = 0; i < 20; ++i) {
        hosts.push_back(std::make_unique<ClapHost>(library));
        ASSERT_TRUE(hosts.back()->start(sampleRate, 512));
    }
    for (auto& host : hosts) {
        Sound sound(48000);
        for (int done = 0; done < 48000; done += 480)
            host->process(sound.left.data() + done, sound.right.data() + done, 480, rolling);
        EXPECT_FALSE(sound.isSilent());
    }
}

} // namespace
} // namespace velotrine
