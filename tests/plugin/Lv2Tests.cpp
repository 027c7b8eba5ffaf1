#include "tests/plugin/Lv2Host.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "plugin/lv2/Lv2Names.h"

#include <lv2/time/time.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr double sampleRate = 48000.0;
constexpr HostTransport stopped{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = false};
constexpr HostTransport rolling{.tempo = 240.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = true};
constexpr auto volume = addressOf(GlobalParameter::volume);

class Lv2 : public testing::Test
{
protected:
    Lv2Library library;
};

/// One run, in which the host says something of its transport.
Sound playedBy(Lv2Host& host, int frames, const std::vector<Lv2Position>& positions = {})
{
    Sound sound(frames);
    host.run(sound.left.data(), sound.right.data(), static_cast<std::uint32_t>(frames), positions);
    return sound;
}

TEST_F(Lv2, HasOnePluginAndOneEditor)
{
    ASSERT_NE(library.plugin(0), nullptr);
    EXPECT_STREQ(library.plugin(0)->URI, lv2PluginUri);
    EXPECT_EQ(library.plugin(1), nullptr);
    ASSERT_NE(library.ui(0), nullptr);
    EXPECT_STREQ(library.ui(0)->URI, lv2UiUri);
    EXPECT_EQ(library.ui(1), nullptr);
    EXPECT_EQ(library.plugin(0)->extension_data("another:extension"), nullptr);
    EXPECT_EQ(library.ui(0)->extension_data("another:extension"), nullptr);
}

TEST_F(Lv2, RefusesAHostThatLacksWhatItNeedsAndSaysWhy)
{
    const Lv2Host incapable(library, sampleRate, {LV2_URID__map});
    EXPECT_FALSE(incapable.hasPlugin());
    for (const double rate : {0.0, -48000.0, 7999.0, 768001.0, std::nan("")}) {
        const Lv2Host host(library, rate);
        EXPECT_FALSE(host.hasPlugin()) << rate;
        ASSERT_EQ(host.logged.size(), 1u);
        EXPECT_TRUE(host.logged[0].starts_with("Velotrine: There is no sound at a sample rate of "));
    }
}

/// A session in which the transport starts, changes its tempo and stops, each at a frame of whatever block
/// the host is in. The host says so once.
Sound sessionOf(Lv2Host& host, const BlockSizes& sizes)
{
    auto faster = rolling;
    faster.tempo = 301.25;
    const std::vector<Lv2Position> edges{positionOf(0, stopped), positionOf(1000, rolling),
                                         positionOf(33333, faster), positionOf(70001, stopped)};
    constexpr std::array automated{20000, 50001}; // a control port says one value a block
    Sound sound(80000);
    host.start();
    inBlocks(sound.frames(), sizes, automated, [&](int offset, int frames) {
        if (offset == automated[0])
            host.controls[volume] = 0.3f;
        if (offset == automated[1])
            host.controls[addressOf(RingParameter::spots, 2)] = 15.0f;
        std::vector<Lv2Position> positions;
        for (auto edge : edges)
            if (edge.frame >= offset && edge.frame < offset + frames) {
                edge.frame -= offset;
                positions.push_back(edge);
            }
        host.run(sound.left.data() + offset, sound.right.data() + offset, static_cast<std::uint32_t>(frames),
                 positions);
    });
    return sound;
}

TEST_F(Lv2, FollowsTheTransportToTheFrameWhateverTheHostsBlockSizes)
{
    Lv2Host reference(library);
    const auto expected = sessionOf(reference, blocksOf(100000));
    EXPECT_FALSE(expected.isSilent());
    EXPECT_TRUE(std::all_of(expected.left.begin(), expected.left.begin() + 1000,
                            [](float sample) { return sample == 0.0f; }));
    for (const auto& sizes : allBlockSizes()) {
        Lv2Host host(library);
        EXPECT_TRUE(sessionOf(host, sizes) == expected) << sizes.name;
    }
}

TEST_F(Lv2, AHostThatSaysNothingOfItsTransportHasChangedNothing)
{
    Lv2Host host(library);
    host.start();
    EXPECT_TRUE(playedBy(host, 48000).isSilent());
    EXPECT_NE(host.save().find("\"sync\": 1"), std::string::npos);
    EXPECT_NE(host.save().find("\"bpm\": 120"), std::string::npos);
    EXPECT_TRUE(playedBy(host, 48000, {positionOf(0, stopped)}).isSilent());
    EXPECT_FALSE(playedBy(host, 48000, {positionOf(0, rolling)}).isSilent());
    EXPECT_FALSE(playedBy(host, 48000).isSilent()); // still rolling
}

TEST_F(Lv2, APositionThatSaysOnlyWhatHasChangedLeavesTheRest)
{
    const auto soundAfter = [this](const std::vector<Lv2Position>& positions) {
        Lv2Host host(library);
        host.start();
        for (const auto& position : positions)
            playedBy(host, 0, {position});
        return playedBy(host, 60000);
    };
    auto waltz = rolling;
    waltz.tempo = 200.0;
    waltz.beatsPerBar = 3;
    waltz.beatUnit = 8;
    const auto expected = soundAfter({positionOf(0, waltz)});
    EXPECT_FALSE(expected.isSilent());
    EXPECT_FALSE(soundAfter({positionOf(0, rolling)}) == expected);
    EXPECT_TRUE(soundAfter({positionOf(0, stopped),
                            {0, {{LV2_TIME__beatsPerMinute, 200.0}}},
                            {0, {{LV2_TIME__beatsPerBar, std::int32_t{3}}}},
                            {0, {{LV2_TIME__beatUnit, std::int64_t{8}}}},
                            {0, {{LV2_TIME__speed, std::int32_t{1}}}},
                            {0, {}}}) == expected);
}

TEST_F(Lv2, KeepsTheLastTempoAndMetreWhereTheHostSendsNonsense)
{
    constexpr auto nan = std::numeric_limits<float>::quiet_NaN();
    constexpr auto infinity = std::numeric_limits<double>::infinity();
    Lv2Host sane(library);
    sane.start();
    const auto expected = playedBy(sane, 60000, {positionOf(0, rolling)});
    for (const auto& nonsense : std::vector<std::map<std::string, Lv2Position::Number>>{
             {{LV2_TIME__beatsPerMinute, nan}, {LV2_TIME__beatsPerBar, nan}, {LV2_TIME__beatUnit, nan}},
             {{LV2_TIME__beatsPerMinute, infinity}, {LV2_TIME__beatsPerBar, -infinity}},
             {{LV2_TIME__beatsPerMinute, -1.0f}, {LV2_TIME__beatsPerBar, 0.0f}, {LV2_TIME__beatUnit, 0.0f}},
             {{LV2_TIME__beatsPerMinute, std::int64_t{1} << 62}, {LV2_TIME__beatUnit, std::int32_t{-4}}}}) {
        Lv2Host host(library);
        host.start();
        auto sound = playedBy(host, 20000, {positionOf(0, rolling)});
        const auto rest = playedBy(host, 40000, {{0, nonsense}});
        sound.left.insert(sound.left.end(), rest.left.begin(), rest.left.end());
        sound.right.insert(sound.right.end(), rest.right.begin(), rest.right.end());
        EXPECT_TRUE(sound == expected);
    }
}

/// Words with nothing after them: reading on ends the program.
class WordsAtTheEndOfMemory
{
public:
    explicit WordsAtTheEndOfMemory(std::span<const std::uint64_t> words)
        : pageBytes(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
          memory(mmap(nullptr, 2 * pageBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
    {
        if (memory == MAP_FAILED || words.size_bytes() > pageBytes)
            throw std::runtime_error("no memory of this kind");
        auto* const secondPage = static_cast<std::byte*>(memory) + pageBytes;
        mprotect(secondPage, pageBytes, PROT_NONE);
        first = secondPage - words.size_bytes();
        std::memcpy(first, words.data(), words.size_bytes());
    }

    ~WordsAtTheEndOfMemory() { munmap(memory, 2 * pageBytes); }

    WordsAtTheEndOfMemory(const WordsAtTheEndOfMemory&) = delete;
    WordsAtTheEndOfMemory& operator=(const WordsAtTheEndOfMemory&) = delete;

    [[nodiscard]] void* data() const noexcept { return first; }

private:
    std::size_t pageBytes;
    void* memory;
    std::byte* first = nullptr;
};

TEST_F(Lv2, ReadsNothingBeyondTheEndOfABrokenSequence)
{
    Lv2Host host(library);
    host.start();
    const auto whole = host.sequenceOf({positionOf(0, rolling)});
    LV2_Atom head{};
    std::memcpy(&head, whole.data(), sizeof head);
    const auto runWith = [&](std::uint32_t size, std::size_t wordAt, std::uint64_t word) {
        std::vector<std::uint64_t> words(whole.begin(), whole.begin() + 1 + (size + 7) / 8);
        words[0] = (words[0] & ~std::uint64_t{0xffffffff}) | size;
        if (wordAt < words.size())
            words[wordAt] = word;
        const WordsAtTheEndOfMemory atEnd(words);
        Sound sound(64);
        host.connect(lv2Port::left, sound.left.data());
        host.connect(lv2Port::right, sound.right.data());
        host.connect(lv2Port::time, atEnd.data());
        host.run(64);
        EXPECT_TRUE(sound.isInBounds());
    };
    constexpr std::size_t nowhere = 1000;
    for (std::uint32_t size = 0; size < head.size; ++size)
        runWith(size, nowhere, 0);
    for (std::size_t at = 1; at < (head.size + 8) / 8; ++at)
        for (const std::uint64_t word : {std::uint64_t{0}, ~std::uint64_t{0}, std::uint64_t{0xffffffff},
                                         std::uint64_t{0xffffffff00000000}, std::uint64_t{0xfffffff8}})
            runWith(head.size, at, word);
}

TEST_F(Lv2, TakesNothingFromAnAtomThatIsNoSequence)
{
    for (const bool isSequence : {true, false}) {
        Lv2Host host(library);
        host.start();
        auto words = host.sequenceOf({positionOf(0, rolling)});
        if (!isSequence)
            words[0] += std::uint64_t{1000} << 32U; // the type stands in the upper half
        Sound sound(48000);
        host.connect(lv2Port::left, sound.left.data());
        host.connect(lv2Port::right, sound.right.data());
        host.connect(lv2Port::time, words.data());
        host.run(48000);
        EXPECT_NE(sound.isSilent(), isSequence);
    }
}

TEST_F(Lv2, SurvivesPortsThatAreNotConnected)
{
    Lv2Host host(library);
    host.start();
    for (std::uint32_t port = 0; port <= lv2Port::time + 5; ++port)
        host.connect(port, nullptr);
    host.run(1000);
    Lv2Host complete(library);
    complete.start();
    const auto expected = playedBy(complete, 60000, {positionOf(0, rolling)});
    const auto sequence = host.sequenceOf({positionOf(0, rolling)});
    Sound sound(60000);
    Lv2Host deaf(library);
    deaf.start();
    auto words = sequence;
    deaf.connect(lv2Port::time, words.data());
    deaf.connect(lv2Port::right, sound.right.data());
    deaf.run(60000);
    EXPECT_EQ(sound.right, expected.right);
}

TEST_F(Lv2, APresetsPortsSoundLikeThePreset)
{
    for (std::size_t number = 0; number < presetCount; ++number) {
        Lv2Host host(library);
        host.controls = presetTable()[number].values;
        EXPECT_EQ(host.restore(std::nullopt, LV2_ATOM__String), LV2_STATE_ERR_NO_PROPERTY);
        EXPECT_TRUE(host.logged.empty());
        host.start();
        constexpr int frames = 30000;
        const auto expected =
            soundOfTheAudioUnit(frames, sampleRate, rolling.tempo,
                                [number](VelotrineAudioUnit& unit) { selectPreset(unit, number); });
        EXPECT_TRUE(playedBy(host, frames, {positionOf(0, rolling)}) == expected) << number;
    }
}

TEST_F(Lv2, SurvivesPositionsAtFramesBeyondTheBlock)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](unsigned count) {
            return std::uniform_int_distribution<unsigned>(0, count - 1)(random);
        };
        Lv2Host host(library, 8000.0 + below(184000));
        host.start();
        for (int block = 0; block < 30; ++block) {
            for (unsigned i = 0; i < below(10); ++i)
                host.controls[below(parameterCount)] =
                    (static_cast<float>(below(2001)) - 1000.0f) / static_cast<float>(1 + below(100));
            std::vector<Lv2Position> positions;
            for (unsigned i = 0; i < below(4); ++i) {
                auto transport = below(4) == 0 ? stopped : rolling;
                transport.tempo = below(1000);
                transport.beatsPerBar = below(20);
                transport.beatUnit = below(20);
                positions.push_back(positionOf(static_cast<std::int64_t>(below(6000)) - 1000, transport));
            }
            ASSERT_TRUE(playedBy(host, static_cast<int>(below(4096)), positions).isInBounds()) << seed;
            if (below(10) == 0) {
                host.stop();
                host.start();
            }
        }
    }
}

} // namespace
} // namespace velotrine
