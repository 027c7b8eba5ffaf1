#include "plugin/HostedInstrument.h"

#include "audiounit/Presets.h"
#include "tests/plugin/Repeatedly.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/Sound.h"

#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double sampleRate = 48000.0;
constexpr double fastTempo = 240.0; ///< a bar a second
constexpr HostTransport stopped{.tempo = fastTempo, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = false};
constexpr HostTransport rolling{.tempo = fastTempo, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};
constexpr auto volume = addressOf(GlobalParameter::volume);

struct HostedPlayer
{
    explicit HostedPlayer(double rate = sampleRate) { EXPECT_TRUE(instrument.prepare(rate)); }

    Sound render(int frames)
    {
        Sound sound(frames);
        instrument.render({sound.left.data(), sound.right.data()}, frames);
        return sound;
    }

    RecordingHost host;
    HostedInstrument instrument{host};
};

TEST(HostedInstrument, IsSilentUntilTheHostPlays)
{
    HostedPlayer player;
    EXPECT_TRUE(player.render(20000).isSilent());
    player.instrument.setTransport(stopped);
    EXPECT_TRUE(player.render(20000).isSilent());
    player.instrument.setTransport(rolling);
    EXPECT_FALSE(player.render(48000).isSilent());
}

TEST(HostedInstrument, SoundsLikeTheAudioUnitAtTheSameTempo)
{
    for (const double rate : {8000.0, 44100.0, 44056.25, 96000.0}) {
        constexpr int frames = 60000;
        HostedPlayer player(rate);
        player.instrument.choosePreset(1);
        player.instrument.setTransport(rolling);
        const auto expected = soundOfTheAudioUnit(frames, rate, fastTempo,
                                                  [](VelotrineAudioUnit& unit) { selectPreset(unit, 1); });
        EXPECT_FALSE(expected.isSilent());
        EXPECT_TRUE(player.render(frames) == expected) << rate;
    }
}

/// Two bars with a start, automation, a tempo change and a stop, each at its own frame.
Sound sessionIn(const BlockSizes& sizes)
{
    constexpr std::array edges{1000, 20011, 20012, 33333, 60001};
    Sound sound(80000);
    HostedPlayer player;
    player.instrument.setTransport(stopped);
    inBlocks(sound.frames(), sizes, edges, [&](int offset, int frames) {
        auto transport = offset >= 1000 && offset < 60001 ? rolling : stopped;
        if (offset >= 33333)
            transport.tempo = 131.5;
        player.instrument.setTransport(transport);
        if (offset == 20011)
            player.instrument.setValue(volume, 0.3);
        if (offset == 20012)
            player.instrument.setValue(addressOf(RingParameter::spots, 2), 15.0);
        player.instrument.render({sound.left.data() + offset, sound.right.data() + offset}, frames);
    });
    return sound;
}

TEST(HostedInstrument, SoundsTheSameWhateverTheHostsBlockSizes)
{
    const auto expected = sessionIn(blocksOf(100000));
    EXPECT_FALSE(expected.isSilent());
    for (const auto& sizes : allBlockSizes())
        EXPECT_TRUE(sessionIn(sizes) == expected) << sizes.name;
}

/// The audio unit in cycles of its own, each of which asks the host and renders, however long nothing plays.
class TirelessUnit
{
public:
    TirelessUnit()
    {
        unit->setMusicalContextBlock([this](double* tempo, double* numerator, std::int64_t* denominator,
                                            double*, std::int64_t*, double*) {
            *tempo = transport.tempo;
            *numerator = transport.beatsPerBar;
            *denominator = static_cast<std::int64_t>(transport.beatUnit);
            return true;
        });
        unit->setTransportStateBlock([this](AUHostTransportStateFlags* flags, double*, double*, double*) {
            *flags = transport.isPlaying ? AUHostTransportStateMoving : AUHostTransportStateFlags{0};
            return true;
        });
        (*unit->outputBusses())[0].setFormat({sampleRate, 2});
        unit->setMaximumFramesToRender(CycleRenderer::defaultCycleFrames);
        unit->allocateRenderResources();
        renderer.setup(unit->renderBlock());
    }

    std::shared_ptr<VelotrineAudioUnit> unit = makeInstrument();
    HostTransport transport;
    CycleRenderer renderer;
};

TEST(HostedInstrument, SoundsTheSameAfterRestsAsIfItHadAskedTheHostInEveryCycle)
{
    for (unsigned seed = 0; seed < 30; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int count) {
            return std::uniform_int_distribution(0, count - 1)(random);
        };
        TirelessUnit expected;
        HostedPlayer player;
        auto& kernel = *player.instrument.audioUnit()->dspKernel;
        bool hasSounded = false;
        for (int block = 0; block < 60; ++block) {
            // Now and then nothing plays for longer than any note sounds.
            expected.transport.isPlaying = below(3) == 0;
            expected.transport.tempo = below(4) == 0 ? 0.0 : 100.0 + below(100);
            expected.transport.beatsPerBar = 3 + below(3);
            expected.transport.beatUnit = 4;
            player.instrument.setTransport(expected.transport);
            const bool sync = below(4) != 0;
            const bool internalPlaying = below(4) == 0;
            for (auto* const each : {&kernel, expected.unit->dspKernel.get()}) {
                each->sync = sync;
                each->internalPlaying = internalPlaying;
            }
            const std::array lengths{1, 31, 32, 33, 500, 4096, 48000, 100000};
            const auto frames = lengths[static_cast<std::size_t>(below(static_cast<int>(lengths.size())))];
            for (const int piece : {frames, 7, 64}) {
                Sound sound(piece);
                expected.renderer.render({sound.left.data(), sound.right.data()}, piece);
                ASSERT_TRUE(player.render(piece) == sound) << seed << " " << block;
                hasSounded = hasSounded || !sound.isSilent();
            }
        }
        EXPECT_TRUE(hasSounded) << seed;
    }
}

TEST(HostedInstrument, PlaysOnAtOnceWhenSyncIsSwitchedOnWhileTheHostRolls)
{
    HostedPlayer player;
    auto& kernel = *player.instrument.audioUnit()->dspKernel;
    kernel.sync = false;
    player.instrument.setTransport(rolling);
    EXPECT_TRUE(player.render(48000).isSilent());
    kernel.sync = true;
    player.instrument.setTransport(rolling);
    EXPECT_FALSE(player.render(48000).isSilent());
}

TEST(HostedInstrument, AValueHoldsFromTheFirstCycleThatBeginsAtItsFrameOrAfter)
{
    const auto silencedAt = [](int frame) {
        HostedPlayer player;
        player.instrument.choosePreset(9);
        player.instrument.setTransport(rolling);
        auto sound = player.render(48000);
        for (const int frames : {frame, 200}) {
            const auto more = player.render(frames);
            sound.left.insert(sound.left.end(), more.left.begin(), more.left.end());
            player.instrument.setValue(volume, 0.0);
        }
        const auto lastSounding =
            std::find_if(sound.left.rbegin(), sound.left.rend(), [](float sample) { return sample != 0.0f; });
        return static_cast<int>(sound.left.rend() - lastSounding) - 48000;
    };
    EXPECT_EQ(silencedAt(64), 64);
    EXPECT_EQ(silencedAt(65), 96);
    EXPECT_EQ(silencedAt(95), 96);
    EXPECT_EQ(silencedAt(96), 96);
}

TEST(HostedInstrument, FollowsATempoThatGrowsWithEachFrame)
{
    HostedPlayer player;
    auto ramp = rolling;
    ramp.tempo = 60.0;
    ramp.tempoPerFrame = 60.0 / 48000.0;
    player.instrument.setTransport(ramp);
    player.render(48000);
    EXPECT_NEAR(player.instrument.audioUnit()->dspKernel->hostTempo, 120.0, 0.1);
    // A mean of 90 quarter notes a minute for a second is three eighths of a bar.
    EXPECT_NEAR(player.instrument.audioUnit()->dspKernel->clockPhaseBuf, 0.375, 0.001);
}

TEST(HostedInstrument, KeepsTheLastTempoAndMetreWhereTheHostSendsNonsense)
{
    HostedPlayer player;
    player.instrument.setTransport(rolling);
    player.render(64);
    const auto& kernel = *player.instrument.audioUnit()->dspKernel;
    for (const double nonsense : {0.0, -120.0, 1e9, 1e-9, std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        player.instrument.setTransport(HostTransport{.tempo = nonsense,
                                                     .tempoPerFrame = nonsense,
                                                     .beatsPerBar = nonsense,
                                                     .beatUnit = nonsense,
                                                     .isPlaying = true});
        player.render(64);
        EXPECT_EQ(kernel.hostTempo, fastTempo) << nonsense;
        EXPECT_EQ(kernel.hostBeatsPerBar, 4.0) << nonsense;
        EXPECT_EQ(kernel.hostBeatUnit, 4.0) << nonsense;
    }
    EXPECT_TRUE(kernel.hostPlaying);
}

TEST(HostedInstrument, SoundsTheSameOnEitherSideWhenTheOtherIsMissing)
{
    HostedPlayer both;
    both.instrument.setTransport(rolling);
    const auto expected = both.render(48000);

    HostedPlayer leftOnly;
    leftOnly.instrument.setTransport(rolling);
    Sound sound(48000);
    leftOnly.instrument.render({sound.left.data(), nullptr}, 20000);
    leftOnly.instrument.render({}, 10);
    leftOnly.instrument.render({nullptr, sound.right.data() + 20010}, 27990);
    EXPECT_TRUE(std::equal(sound.left.begin(), sound.left.begin() + 20000, expected.left.begin()));
    EXPECT_TRUE(std::equal(sound.right.begin() + 20010, sound.right.end(), expected.right.begin() + 20010));
    EXPECT_EQ(sound.left[20000], Sound::untouched);
}

TEST(HostedInstrument, WritesNothingForNoFrames)
{
    HostedPlayer player;
    Sound sound(1);
    player.instrument.render({sound.left.data(), sound.right.data()}, 0);
    player.instrument.render({sound.left.data(), sound.right.data()}, -7);
    EXPECT_EQ(sound.left[0], Sound::untouched);
}

TEST(HostedInstrument, IsSilentWhileItIsNotPrepared)
{
    RecordingHost host;
    HostedInstrument instrument(host);
    instrument.setTransport(rolling);
    Sound sound(1000);
    instrument.render({sound.left.data(), sound.right.data()}, 1000);
    EXPECT_TRUE(sound.isSilent());
    instrument.reset();
}

TEST(HostedInstrument, AResetSilencesAllNotesAtOnce)
{
    HostedPlayer player;
    player.instrument.choosePreset(9);
    player.instrument.setTransport(rolling);
    ASSERT_FALSE(player.render(48001).isSilent());
    player.instrument.setTransport(stopped);
    player.instrument.reset();
    EXPECT_TRUE(player.render(4800).isSilent());
}

TEST(HostedInstrument, LoadingAStateLeavesSoundingNotesAlone)
{
    HostedPlayer player;
    player.instrument.choosePreset(9);
    const auto saved = player.instrument.saveState();
    HostedPlayer undisturbed;
    undisturbed.instrument.choosePreset(9);
    for (auto* const each : {&player, &undisturbed})
        each->instrument.setTransport(rolling);
    ASSERT_TRUE(player.render(48007) == undisturbed.render(48007));
    ASSERT_EQ(player.instrument.restoreState(saved), std::nullopt);
    EXPECT_TRUE(player.render(48007) == undisturbed.render(48007));
}

TEST(HostedInstrument, TheRenderThreadDoesNotAllocate)
{
    HostedPlayer player;
    player.instrument.choosePreset(6);
    Sound sound(4096);
    const AllocationCounter counter;
    for (int block = 0; block < 60; ++block) {
        player.instrument.setTransport(block % 7 == 6 ? stopped : rolling);
        for (ParameterAddress address = 0; address < parameterCount; ++address)
            player.instrument.setValue(address, static_cast<double>(block % 10) / 10.0);
        player.instrument.setValue(volume, 0.5);
        player.instrument.render({sound.left.data(), sound.right.data()}, 17 + 67 * block);
        if (block == 30)
            player.instrument.reset();
    }
    EXPECT_EQ(counter.count(), 0);
}

TEST(HostedInstrument, TakesValuesAndStatesFromOtherThreadsWhileItRenders)
{
    HostedPlayer player;
    player.instrument.setTransport(rolling);
    const auto saved = player.instrument.saveState();
    const auto settingEverySecond = [&](ParameterAddress first) {
        return [&player, first, round = 0]() mutable {
            for (auto address = first; address < parameterCount; address += 2)
                player.instrument.setValue(address, static_cast<double>(round % 20) / 3.0);
            ++round;
        };
    };
    const Repeatedly even(settingEverySecond(0));
    const Repeatedly odd(settingEverySecond(1));
    const Repeatedly keeper([&] {
        EXPECT_EQ(player.instrument.restoreState(saved), std::nullopt);
        EXPECT_FALSE(player.instrument.saveState().empty());
    });
    for (int block = 0; block < 300; ++block) {
        const auto sound = player.render(512);
        EXPECT_TRUE(std::ranges::all_of(sound.left, [](float x) { return std::abs(x) <= 1.0f; }));
        player.instrument.followValues();
    }
}

} // namespace
} // namespace velotrine
