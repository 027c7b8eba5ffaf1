#include "tests/host/JackListener.h"
#include "tests/host/PlayingEngine.h"
#include "tests/support/JackServer.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double timeoutSeconds = 10.0;

TEST(RealDevice, TheSoundGoesToARunningJackServer)
{
    const JackServer server;
    PlayingEngine playing;
    ASSERT_FALSE(playing.engine.start());
    EXPECT_EQ(playing.instrument->dspKernel->sampleRate, 48000.0);
    EXPECT_GT(peakOnJack(0.5), 0.1f);
}

TEST(RealDevice, AStoppedInstrumentIsSilentOnJack)
{
    const JackServer server;
    PlayingEngine playing;
    playing.instrument->dspKernel->internalPlaying = false;
    ASSERT_FALSE(playing.engine.start());
    EXPECT_EQ(peakOnJack(0.3), 0.0f);
}

TEST(RealDevice, AKilledJackServerStopsTheSoundButNotTheClock)
{
    std::optional<JackServer> server(std::in_place);
    PlayingEngine playing;
    ASSERT_FALSE(playing.engine.start());
    int changes = 0;
    playing.engine.onDeviceChanged = [&] { ++changes; };

    for (int round = 0; round < 2; ++round) {
        EXPECT_GT(peakOnJack(0.4), 0.1f);
        server->kill();
        ASSERT_TRUE(runMessagesUntil([&] { return !playing.engine.hasDevice(); }, timeoutSeconds));
        const auto clock = playing.clock();
        EXPECT_TRUE(runMessagesUntil([&] { return playing.clock() != clock; }, timeoutSeconds));

        server.emplace();
        ASSERT_TRUE(runMessagesUntil([&] { return playing.engine.hasDevice(); }, timeoutSeconds));
        EXPECT_EQ(changes, 2 * (round + 1));
    }
    EXPECT_GT(peakOnJack(0.4), 0.1f);
}

TEST(RealDevice, AJackServerThatEndsByItselfIsNoticedToo)
{
    std::optional<JackServer> server(std::in_place);
    PlayingEngine playing;
    ASSERT_FALSE(playing.engine.start());
    server.reset();
    EXPECT_TRUE(runMessagesUntil([&] { return !playing.engine.hasDevice(); }, timeoutSeconds));
}

TEST(RealDevice, AFrozenJackServerStopsTheSoundButNeitherTheClockNorTheApplication)
{
    const JackServer server;
    PlayingEngine playing;
    ASSERT_FALSE(playing.engine.start());
    EXPECT_GT(peakOnJack(0.4), 0.1f);
    server.freeze();
    runMessagesFor(0.6);
    const auto clock = playing.clock();
    EXPECT_TRUE(runMessagesUntil([&] { return playing.clock() != clock; }, timeoutSeconds));

    server.thaw();
    EXPECT_TRUE(runMessagesUntil([] { return peakOnJack(0.4) > 0.1f; }, timeoutSeconds));
}

/// An ALSA whose default device writes what it plays to a file, as 32-bit floats, faster than real time.
class AlsaToFile
{
public:
    AlsaToFile()
    {
        folder.write("asoundrc", "pcm.null { type null }\n"
                                 "pcm.!default {\n"
                                 "  type file\n"
                                 "  slave.pcm \"null\"\n"
                                 "  file \"" +
                                     folder.file("played") +
                                     "\"\n"
                                     "  format \"raw\"\n"
                                     "  hint { show on description \"To a file\" }\n"
                                     "}\n");
        ::setenv("ALSA_CONFIG_PATH", folder.file("asoundrc").c_str(), 1);
    }

    ~AlsaToFile() { ::setenv("ALSA_CONFIG_PATH", "/dev/null", 1); }

    AlsaToFile(const AlsaToFile&) = delete;
    AlsaToFile& operator=(const AlsaToFile&) = delete;

    [[nodiscard]] float peak() const
    {
        const auto bytes = folder.read("played");
        float loudest = 0.0f;
        for (std::size_t i = 0; i + sizeof(float) <= bytes.size(); i += sizeof(float)) {
            float sample = 0.0f;
            std::memcpy(&sample, bytes.data() + i, sizeof sample);
            loudest = std::max(loudest, std::abs(sample));
        }
        return loudest;
    }

private:
    TemporaryFolder folder;
};

TEST(RealDevice, WithoutAServerTheSoundGoesToAlsasDefault)
{
    const AlsaToFile alsa;
    {
        PlayingEngine playing;
        ASSERT_FALSE(playing.engine.start());
        EXPECT_TRUE(playing.engine.hasDevice());
        runMessagesFor(0.2);
    }
    EXPECT_GT(alsa.peak(), 0.1f);
    EXPECT_LE(alsa.peak(), 1.0f);
}

TEST(RealDevice, AnAlsaDeviceThatAppearsLaterIsTaken)
{
    PlayingEngine playing;
    EXPECT_TRUE(playing.engine.start());
    const AlsaToFile alsa;
    EXPECT_TRUE(runMessagesUntil([&] { return playing.engine.hasDevice(); }, timeoutSeconds));
}

} // namespace
} // namespace velotrine
