#include "tests/reference/SideBySide.h"

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr int longestBlock = 8192;
const std::vector<int> mixedBlocks{512, 1, 64, 17, 1000, 32, 8192, 255, 2, 333, 64, 48};

struct Piece
{
    std::string name;
    std::function<void(SideBySide&)> prepare;
    double seconds = 5.0;
    std::vector<int> blocks{512}; ///< lengths of the process calls, over and over
    double sampleRate = 48000.0;
};

void PrintTo(const Piece& piece, std::ostream* stream)
{
    *stream << piece.name;
}

void requireSound(const SideBySide& players)
{
    EXPECT_GT(players.notesFired(), 0u);
    EXPECT_GT(players.peak(), 0.01f);
    ::testing::Test::RecordProperty("notes", std::to_string(players.notesFired()));
    ::testing::Test::RecordProperty("largestSampleError",
                                    std::to_string(players.largestError() * 1.0e9) + "e-9");
}

class EngineAndTranscription : public ::testing::TestWithParam<Piece>
{};

TEST_P(EngineAndTranscription, PlayTheSameNotesAndSamplesOnEveryInstructionSet)
{
    const Piece& piece = GetParam();
    SideBySide players{longestBlock, piece.sampleRate};
    piece.prepare(players);
    const auto end = static_cast<int>(piece.seconds * piece.sampleRate);
    int frame = 0;
    for (std::size_t call = 0; frame < end; ++call) {
        const int frames = piece.blocks[call % piece.blocks.size()];
        const auto difference = players.process(frames);
        ASSERT_FALSE(difference) << *difference;
        frame += frames;
    }
    requireSound(players);
}

const auto pieceName = [](const ::testing::TestParamInfo<Piece>& info) { return info.param.name; };

void playInternally(SideBySide& players)
{
    players.set(GlobalParameter::sync, 0.0f);
    players.setInternalPlaying(true);
}

/// Sixteen voices sound all the time.
void playDensely(SideBySide& players, float drudgery, float timbre)
{
    playInternally(players);
    players.set(GlobalParameter::bpm, 300.0f);
    players.set(GlobalParameter::activity, 1.0f);
    players.set(GlobalParameter::calories, 1.0f);
    players.set(GlobalParameter::drudgery, drudgery);
    players.setAllRings(RingParameter::spots, 16.0f);
    players.setAllRings(RingParameter::probability, 1.0f);
    players.setAllRings(RingParameter::timbre, timbre);
}

std::string percent(float value)
{
    return std::to_string(std::lround(value * 100.0f));
}

std::vector<Piece> ordinaryPieces()
{
    return {
        {"AtTheDefaults", playInternally, 20.0},
        {"AtTheDefaultsAt44100Hz", playInternally, 10.0, {512}, 44100.0},
        {"AtTheDefaultsAt96000Hz", playInternally, 10.0, {512}, 96000.0},
        {"AtTheDefaultsInMixedBlocks", playInternally, 10.0, mixedBlocks},
        {"WithLongSlowNotesAndMuchFeedback",
         [](SideBySide& players) {
             playInternally(players);
             players.set(GlobalParameter::bpm, 40.0f);
             players.set(GlobalParameter::drudgery, 1.0f);
             players.setAllRings(RingParameter::timbre, 0.0f);
         },
         20.0, mixedBlocks},
        {"WithManySpotsOnAllRingsAndUnlikelyNotes",
         [](SideBySide& players) {
             playDensely(players, 0.5f, 0.3f);
             players.set(GlobalParameter::boredom, 0.9f);
             players.setAllRings(RingParameter::probability, 0.1f);
         },
         10.0, mixedBlocks, 44100.0},
        {"WithMotionlessRings",
         [](SideBySide& players) {
             playInternally(players);
             players.set(GlobalParameter::activity, 0.0f);
             players.set(GlobalParameter::calories, 0.0f);
         },
         10.0, mixedBlocks},
    };
}

std::vector<Piece> densePieces()
{
    std::vector<Piece> pieces;
    for (const float drudgery : {0.0f, 0.5f, 0.8f, 1.0f})
        for (const float timbre : {0.0f, 0.5f, 1.0f})
            pieces.push_back({"WithDrudgery" + percent(drudgery) + "AndTimbre" + percent(timbre),
                              [=](SideBySide& players) { playDensely(players, drudgery, timbre); }});
    for (const int block : {1, 17, 32, 64, 8192})
        pieces.push_back({"InBlocksOf" + std::to_string(block),
                          [](SideBySide& players) { playDensely(players, 0.5f, 0.0f); },
                          5.0,
                          {block}});
    for (const int rate : {44100, 96000})
        pieces.push_back({"At" + std::to_string(rate) + "Hz",
                          [](SideBySide& players) { playDensely(players, 0.5f, 0.0f); }, 5.0, mixedBlocks,
                          static_cast<double>(rate)});
    return pieces;
}

std::vector<Piece> hostPieces()
{
    struct Metre
    {
        std::string name;
        double beatsPerBar;
        double beatUnit;
    };

    struct NamedTempo
    {
        std::string name;
        double quartersPerMinute;
    };

    std::vector<Piece> pieces;
    for (const Metre& metre :
         {Metre{"5_4", 5, 4}, Metre{"7_8", 7, 8}, Metre{"3_16", 3, 16}, Metre{"Unknown", 0, 0}})
        for (const NamedTempo& tempo :
             {NamedTempo{"33_3", 33.3}, NamedTempo{"120", 120.0}, NamedTempo{"987", 987.0}})
            pieces.push_back({"Metre" + metre.name + "Tempo" + tempo.name,
                              [=](SideBySide& players) {
                                  players.setHostTempo(tempo.quartersPerMinute, metre.beatsPerBar,
                                                       metre.beatUnit);
                                  players.setHostPlaying(true);
                              },
                              5.0, mixedBlocks});
    return pieces;
}

Piece unusual(const std::string& name, const std::function<void(SideBySide&)>& change)
{
    return {name,
            [change](SideBySide& players) {
                playInternally(players);
                change(players);
            },
            5.0, mixedBlocks};
}

Piece unusual(const std::string& name, GlobalParameter parameter, float value)
{
    return unusual(name, [=](SideBySide& players) { players.set(parameter, value); });
}

Piece unusual(const std::string& name, RingParameter parameter, float value)
{
    return unusual(name, [=](SideBySide& players) { players.setAllRings(parameter, value); });
}

std::vector<Piece> outOfRangePieces()
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    return {
        unusual("PhaseBeyondTwoTurns", RingParameter::phase, 2.5f),
        unusual("PhaseBelowZero", RingParameter::phase, -1.0f),
        unusual("PhaseBeyondThreeTurns", RingParameter::phase, 3.7f),
        unusual("ActivityAboveOne", GlobalParameter::activity, 1.5f),
        unusual("ActivityBelowZero", GlobalParameter::activity, -0.5f),
        unusual("CaloriesAboveOne", GlobalParameter::calories, 3.0f),
        unusual("CaloriesFarAboveOne", GlobalParameter::calories, 40.0f),
        unusual("SpotsBeyondSixteen", RingParameter::spots, 20.0f),
        unusual("NegativeSpotsOnOneRing",
                [](SideBySide& players) { players.set(addressOf(RingParameter::spots, 2), -3.0f); }),
        unusual("TempoBelowItsRange", GlobalParameter::bpm, 20.0f),
        unusual("TempoAboveItsRange", GlobalParameter::bpm, 500.0f),
        unusual("TempoNotANumber", GlobalParameter::bpm, nan),
        unusual("TimbreBelowZero", RingParameter::timbre, -1.0f),
        unusual("TimbreAboveOne", RingParameter::timbre, 2.0f),
        unusual("TimbreInfinite", RingParameter::timbre, infinity),
        unusual("TimbreMinusInfinite", RingParameter::timbre, -infinity),
        unusual("ProbabilityNotANumberOnOneRing",
                [](SideBySide& players) { players.set(addressOf(RingParameter::probability, 3), nan); }),
        unusual("DrudgeryNotANumber", GlobalParameter::drudgery, nan),
        unusual("DrudgeryAboveOne", GlobalParameter::drudgery, 1.2f),
        unusual("BoredomNotANumber", GlobalParameter::boredom, nan),
        unusual("RootNegative", GlobalParameter::rootNote, -5.0f),
        unusual("RootNoWholeNumber", GlobalParameter::rootNote, 2.7f),
        unusual("RootNegativeAndNoWholeNumber", GlobalParameter::rootNote, -2.7f),
        unusual("RootAndScaleBeyondTheirRanges",
                [](SideBySide& players) {
                    players.set(GlobalParameter::rootNote, 31.0f);
                    players.set(GlobalParameter::scaleType, 7.0f);
                }),
        unusual("OctaveNegative", RingParameter::octave, -2.0f),
    };
}

INSTANTIATE_TEST_SUITE_P(Playing, EngineAndTranscription, ::testing::ValuesIn(ordinaryPieces()), pieceName);
INSTANTIATE_TEST_SUITE_P(PlayingDensely, EngineAndTranscription, ::testing::ValuesIn(densePieces()),
                         pieceName);
INSTANTIATE_TEST_SUITE_P(FollowingAHost, EngineAndTranscription, ::testing::ValuesIn(hostPieces()),
                         pieceName);
INSTANTIATE_TEST_SUITE_P(OutOfRange, EngineAndTranscription, ::testing::ValuesIn(outOfRangePieces()),
                         pieceName);

/// Bars shorter than a frame: the phases leave [0, 1), the wobble is many turns deep, and the hand comes out
/// at negative positions.
TEST(EngineAndTranscriptionAtExtremes, AgreeWhereBarsAreShorterThanAFrame)
{
    SideBySide players{longestBlock, 48000.0};
    players.set(GlobalParameter::calories, 1.0f);
    players.setHostTempo(1.0e7, 1.0, 64.0);
    for (int run = 0; run < 20; ++run) {
        players.setHostPlaying(true);
        for (const int frames : {32, 1, 17, 7, 64, 3, 128}) {
            const auto difference = players.process(frames);
            ASSERT_FALSE(difference) << "run " << run << ": " << *difference;
        }
        players.setHostPlaying(false);
        const auto difference = players.process(4096);
        ASSERT_FALSE(difference) << "after run " << run << ": " << *difference;
    }
    requireSound(players);
}

/// Bars of a few frames with a wobble many turns deep. Wobble phases run backwards without end there, and the
/// further they have run the fewer digits are left of their sines, so that the host starts afresh every now
/// and then.
TEST(EngineAndTranscriptionAtExtremes, AgreeWhereTheWobbleIsManyTurnsDeep)
{
    SideBySide players{longestBlock, 48000.0};
    players.set(GlobalParameter::calories, 1.0f);
    players.setHostTempo(60000.0, 1.0, 64.0);
    for (int run = 0; run < 20; ++run) {
        players.setHostPlaying(true);
        for (const int frames : mixedBlocks) {
            const auto difference = players.process(frames);
            ASSERT_FALSE(difference) << "run " << run << ": " << *difference;
        }
        players.setHostPlaying(false);
        const auto difference = players.process(64);
        ASSERT_FALSE(difference) << "after run " << run << ": " << *difference;
    }
    requireSound(players);
}

/// One frame of an Activity that no control gives throws the rotations out of the turn by dozens of turns.
TEST(EngineAndTranscriptionAtExtremes, AgreeWhereARotationComesBackFromFarOutsideTheTurn)
{
    for (const float activity : {1.0e4f, -1.0e4f})
        for (const float after : {0.0f, 0.5f, 1.0f}) {
            SCOPED_TRACE(testing::Message() << activity << ", then " << after);
            SideBySide players{longestBlock, 48000.0};
            playInternally(players);
            players.set(GlobalParameter::bpm, 300.0f);
            players.set(GlobalParameter::activity, activity);
            auto difference = players.process(1);
            ASSERT_FALSE(difference) << *difference;
            players.set(GlobalParameter::activity, after);
            for (int frame = 0; frame < 96000;)
                for (const int frames : {32, 17, 512}) {
                    difference = players.process(frames);
                    ASSERT_FALSE(difference) << *difference;
                    frame += frames;
                }
            requireSound(players);
        }
}

/// At a low rate a modulator makes more than a turn from one sample to the next, 9.9 kHz at 8 kHz, and far
/// beyond the keyboard a carrier does, too.
TEST(EngineAndTranscriptionAtExtremes, AgreeWhereVoicesMakeMoreThanATurnASample)
{
    struct Case
    {
        float octave;
        float drudgery;
        double turnsASample; ///< of the fastest modulator, at least
    };

    constexpr double sampleRate = 8000.0;
    for (const auto& [octave, drudgery, turnsASample] :
         {Case{7.0f, 0.0f, 1.2}, Case{7.0f, 0.5f, 1.2}, Case{7.0f, 1.0f, 1.2}, Case{10.0f, 0.0f, 9.0}}) {
        SCOPED_TRACE(testing::Message() << "octave " << octave << ", Drudgery " << drudgery);
        SideBySide players{longestBlock, sampleRate};
        playDensely(players, drudgery, 1.0f);
        players.setAllRings(RingParameter::octave, octave);
        for (int frame = 0; frame < 5 * static_cast<int>(sampleRate);)
            for (const int frames : {32, 512, 1, 1000}) {
                const auto difference = players.process(frames);
                ASSERT_FALSE(difference) << *difference;
                frame += frames;
            }
        EXPECT_GT(players.fastestModulator(), turnsASample);
        requireSound(players);
    }
}

/// Whichever of a few round numbers, or any between the smallest and the largest.
double roundOrNot(Dice& dice, const std::vector<double>& ascending)
{
    return dice.oneIn(3) ? dice.between(ascending.front(), ascending.back())
                         : ascending[dice.below(ascending.size())];
}

/// Round numbers of frames in a bar, spots and offsets that divide it, wobbles of round depth: hands come to
/// spots exactly on a frame, or nearer to it than roundings, so that the last bits of where the hand stands
/// decide which frame fires. Short bars, so that many spots are met.
TEST(EngineAndTranscriptionAtExtremes, AgreeOnEveryFireWhereRoundingsDecideIt)
{
    constexpr double sampleRate = 48000.0;
    constexpr int pieces = 150;
    constexpr int framesPerPiece = 4800;
    Dice dice{1};
    std::size_t notes = 0;
    for (int piece = 0; piece < pieces; ++piece) {
        SideBySide players{64, sampleRate};
        players.set(GlobalParameter::drudgery, 0.0f);
        players.setAllRings(RingParameter::probability, 1.0f);
        players.setAllRings(RingParameter::timbre, 1.0f);
        players.set(GlobalParameter::activity, static_cast<float>(roundOrNot(dice, {0, 0.25, 0.5, 1})));
        players.set(GlobalParameter::calories, static_cast<float>(roundOrNot(dice, {0, 0.25, 0.5, 1})));
        for (int ring = 0; ring < ringCount; ++ring) {
            players.set(addressOf(RingParameter::spots, ring), static_cast<float>(1 + dice.below(16)));
            players.set(addressOf(RingParameter::phase, ring),
                        static_cast<float>(roundOrNot(dice, {0, 0.125, 0.25, 0.375, 0.5, 0.75, 1})));
        }
        const double framesPerQuarter = roundOrNot(dice, {256, 480, 512, 600, 1000, 1024, 1200, 2400});
        players.setHostTempo(60.0 * sampleRate / framesPerQuarter, static_cast<double>(1 + dice.below(4)),
                             4.0);
        players.setHostPlaying(true);
        const int frames = dice.oneIn(2) ? 32 : 64;
        for (int frame = 0; frame < framesPerPiece; frame += frames) {
            const auto difference = players.process(frames);
            ASSERT_FALSE(difference) << "piece " << piece << ": " << *difference;
        }
        notes += players.notesFired();
    }
    EXPECT_GT(notes, 20000U);
}

struct Range
{
    double low;
    double high;
};

Range rangeOf(ParameterAddress address)
{
    constexpr std::array<Range, globalParameterCount> globalRanges{
        {{0, 1}, {0, 1}, {0, 1}, {0, 1}, {0, 11}, {0, 3}, {40, 300}, {0, 1}, {0, 1}}};
    constexpr std::array<Range, ringParameterCount> ringRanges{
        {{0, 16}, {0, 1}, {0, 1}, {0, 7}, {0, 1}, {0, 1}}};
    if (address < globalParameterCount)
        return globalRanges[address];
    return ringRanges[(address - globalParameterCount) / ringCount];
}

/// Changes something, here a parameter, there the transport.
void stir(SideBySide& players, Dice& dice)
{
    for (std::size_t changes = 1 + dice.below(4); changes > 0; --changes) {
        const ParameterAddress address = dice.below(parameterCount);
        const Range range = rangeOf(address);
        // The ends of a range, and whole numbers where only they make sense, come up often.
        const double value = dice.between(range.low, range.high);
        const double chosen = dice.oneIn(6) ? range.low : dice.oneIn(6) ? range.high : value;
        players.set(address, static_cast<float>(chosen));
    }
    if (dice.oneIn(10))
        players.setInternalPlaying(!dice.oneIn(4));
    if (dice.oneIn(10))
        players.setHostPlaying(!dice.oneIn(4));
    if (dice.oneIn(20))
        players.setHostTempo(dice.between(30.0, 400.0), static_cast<double>(dice.below(13)),
                             static_cast<double>(std::size_t{1} << dice.below(5)));
    if (dice.oneIn(30))
        players.setHostTempo(0.0, 0.0, 0.0);
}

struct Storm
{
    std::uint32_t seed;
    double sampleRate;
    double seconds;
    std::vector<int> blocks;
};

void PrintTo(const Storm& storm, std::ostream* stream)
{
    *stream << "seed " << storm.seed << " at " << storm.sampleRate << " Hz";
}

class EngineAndTranscriptionInAStorm : public ::testing::TestWithParam<Storm>
{};

TEST_P(EngineAndTranscriptionInAStorm, PlayTheSameWhateverChangesOnTheWay)
{
    const Storm& storm = GetParam();
    Dice dice{storm.seed};
    SideBySide players{longestBlock, storm.sampleRate};
    players.setHostTempo(150.0, 4.0, 4.0);
    players.setHostPlaying(true);
    players.setInternalPlaying(true);
    const auto end = static_cast<int>(storm.seconds * storm.sampleRate);
    int nextChange = 0;
    for (int frame = 0; frame < end;) {
        if (frame >= nextChange) {
            stir(players, dice);
            nextChange = frame + 100 + static_cast<int>(dice.below(900));
        }
        const int frames = storm.blocks[dice.below(storm.blocks.size())];
        const auto difference = players.process(frames);
        ASSERT_FALSE(difference) << *difference;
        frame += frames;
    }
    requireSound(players);
}

const auto stormName = [](const ::testing::TestParamInfo<Storm>& named) {
    return "Seed" + std::to_string(named.param.seed);
};

const std::array<Storm, 6> storms{{
    {1, 48000.0, 20.0, {512}},
    {2, 44100.0, 20.0, {1, 17, 32, 64, 512}},
    {3, 96000.0, 10.0, {32, 64, 512, 8192}},
    {4, 48000.0, 20.0, {32}},
    {5, 48000.0, 20.0, mixedBlocks},
    {6, 44100.0, 20.0, {17, 64}},
}};

INSTANTIATE_TEST_SUITE_P(Storms, EngineAndTranscriptionInAStorm, ::testing::ValuesIn(storms), stormName);

} // namespace
} // namespace velotrine
