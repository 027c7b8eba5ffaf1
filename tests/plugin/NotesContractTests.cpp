#include "tests/plugin/PluginContract.h"

#include "tests/support/NoteRecorder.h"
#include "tests/support/PlayedNotes.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <random>
#include <vector>

namespace velotrine {
namespace {

constexpr auto volume = addressOf(GlobalParameter::volume);

template <typename Plugin>
class NotesContract : public testing::Test
{};

TYPED_TEST_SUITE(NotesContract, EveryFormat, FormatNames);

/// A plug-in and all notes that it has sent, by frames since its first block.
template <typename Plugin>
class Player
{
public:
    explicit Player(int maxFrames = 100000)
    {
        EXPECT_TRUE(plugin.start(sampleRate, maxFrames));
        plugin.setTransport(stopped);
    }

    void render(int frames)
    {
        Sound sound(frames);
        EXPECT_TRUE(plugin.render(sound.left.data(), sound.right.data(), frames));
        for (auto message : plugin.notes()) {
            EXPECT_GE(message.frame, 0);
            EXPECT_LT(message.frame, frames);
            message.frame += played;
            sent.push_back(message);
        }
        played += frames;
    }

    void render(int frames, const HostTransport& transport)
    {
        plugin.setTransport(transport);
        render(frames);
    }

    Plugin plugin;
    std::vector<NoteMessage> sent;
    int played = 0;
};

/// The transport rolls from frame 1000 to 70001.
template <typename Plugin>
std::vector<NoteMessage> notesOfASession(const BlockSizes& sizes)
{
    Player<Plugin> player;
    constexpr std::array edges{1000, 70001};
    inBlocks(200000, sizes, edges, [&](int offset, int frames) {
        if (offset == 1000)
            player.plugin.setTransport(rolling);
        if (offset == 70001)
            player.plugin.setTransport(stopped);
        player.render(frames);
    });
    return player.sent;
}

TYPED_TEST(NotesContract, SendsEveryNoteOfTheKernelAtTheFrameOfItsCrossing)
{
    Player<TypeParam> player;
    player.render(60000, rolling);
    const auto expected = strikesOfTheKernel(60000, sampleRate, rolling.tempo);
    EXPECT_GT(expected.size(), 10u);
    EXPECT_EQ(strikesIn(player.sent), expected);
}

TYPED_TEST(NotesContract, EndsEachNoteAfterItsLengthOrWhereItsKeyIsStruckAgain)
{
    Player<TypeParam> player;
    player.render(60000, rolling);
    player.render(100000, stopped);
    EXPECT_EQ(inPlainOrder(player.sent), messagesOfTheKernel(60000, 100000, sampleRate, rolling.tempo));
    EXPECT_EQ(mistakeIn(player.sent), "");
}

TYPED_TEST(NotesContract, SendsTheSameWhateverTheHostsBlockSizes)
{
    const auto expected = notesOfASession<TypeParam>(blocksOf(100000));
    EXPECT_GT(expected.size(), 10u);
    EXPECT_EQ(mistakeIn(expected), "");
    for (const auto& sizes : allBlockSizes())
        EXPECT_EQ(notesOfASession<TypeParam>(sizes), expected) << sizes.name;
}

TYPED_TEST(NotesContract, SendsTheSameAtVolumeZeroWhereNothingIsHeard)
{
    Player<TypeParam> loud;
    loud.render(60000, rolling);
    Player<TypeParam> silent;
    silent.plugin.setValue(volume, 0.0);
    silent.plugin.setTransport(rolling);
    Sound sound(60000);
    ASSERT_TRUE(silent.plugin.render(sound.left.data(), sound.right.data(), sound.frames()));
    EXPECT_TRUE(sound.isSilent());
    EXPECT_FALSE(loud.sent.empty());
    EXPECT_EQ(silent.plugin.notes(), loud.sent);
}

TYPED_TEST(NotesContract, EndsAllNotesInTheFirstFrameAfterItWasStopped)
{
    Player<TypeParam> player;
    while (mistakeIn(player.sent).empty())
        player.render(64, rolling);
    player.plugin.stop();
    ASSERT_TRUE(player.plugin.start(sampleRate, 100000));
    const int restarted = player.played;
    player.render(1000, stopped);
    EXPECT_EQ(mistakeIn(player.sent), "");
    EXPECT_EQ(player.sent.back().frame, restarted);
}

TYPED_TEST(NotesContract, LosesNoEndOfANoteInAHostWithoutRoom)
{
    Player<TypeParam> player;
    for (unsigned seed = 0; seed < 400; ++seed) {
        std::mt19937 random(seed);
        player.plugin.setRoomForNotes(std::uniform_int_distribution(0, 3)(random));
        player.render(std::uniform_int_distribution(1, 4000)(random), rolling);
    }
    player.plugin.setRoomForNotes(1000);
    player.render(100000, stopped);
    EXPECT_GT(player.sent.size(), 100u);
    EXPECT_EQ(mistakeIn(player.sent), "");
}

TYPED_TEST(NotesContract, EveryKeyThatGoesDownGoesUpInRandomLives)
{
    for (unsigned seed = 0; seed < 10; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int count) {
            return std::uniform_int_distribution(0, count - 1)(random);
        };
        Player<TypeParam> player(4096);
        for (int block = 0; block < 300; ++block) {
            for (int i = below(3); i > 0; --i)
                player.plugin.setValue(static_cast<ParameterAddress>(below(static_cast<int>(parameterCount))),
                                       below(1000) / 999.0 * (1 + below(16)));
            auto transport = below(6) == 0 ? stopped : rolling;
            transport.tempo = 60.0 + below(400);
            player.plugin.setRoomForNotes(below(8) == 0 ? below(4) : 1000);
            player.render(1 + below(4096), transport);
            if (below(40) == 0) {
                player.plugin.stop();
                ASSERT_TRUE(player.plugin.start(sampleRate, 4096));
            }
        }
        player.plugin.setRoomForNotes(1000);
        for (int block = 0; block < 40; ++block)
            player.render(4096, stopped);
        ASSERT_GT(player.sent.size(), 50u) << seed;
        ASSERT_EQ(mistakeIn(player.sent), "") << seed;
    }
}

} // namespace
} // namespace velotrine
