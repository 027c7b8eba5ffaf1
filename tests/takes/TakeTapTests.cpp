#include "takes/TakeTap.h"

#include "audiounit/Parameters.h"
#include "takes/TakeAssembler.h"
#include "tests/support/AllocationCounter.h"
#include "tests/takes/TakenInstrument.h"

#include <cstddef>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using test::soundOf;
using test::TakenInstrument;

constexpr int cycle = 32;

class Tap : public testing::Test
{
protected:
    void render(int cycles)
    {
        for (int i = 0; i < cycles; ++i)
            instrument.render(cycle);
    }

    void renderUntilSilent()
    {
        do
            render(1);
        while (!kernel.isAtRest());
    }

    void collect()
    {
        instrument.tap.records().takeAll([this](const TakeRecord& record) { assembler.add(record); });
    }

    [[nodiscard]] bool isRecording()
    {
        collect();
        return assembler.takeSoFar().has_value();
    }

    /// Ends the take, if one is being recorded, and gives those that have ended.
    std::vector<Take> takes()
    {
        instrument.tap.setRecording(false);
        render(1);
        collect();
        return assembler.finishedTakes();
    }

    void play()
    {
        kernel.sync = false;
        kernel.internalPlaying = true;
    }

    TakenInstrument instrument;
    VelotrineDSPKernel& kernel = instrument.kernel();
    TakeAssembler assembler;
};

TEST_F(Tap, NotesNothingUnlessTakesAreWanted)
{
    play();
    render(100);
    EXPECT_FALSE(isRecording());
    EXPECT_TRUE(takes().empty());
}

TEST_F(Tap, BeginsATakeWhenTheInstrumentBeginsToPlay)
{
    kernel.setParameter(addressOf(GlobalParameter::activity), 0.25f);
    kernel.seed = 7;
    kernel.sameMusicAtEveryStart = true;
    kernel.hostTempo = 99.5;
    instrument.tap.setRecording(true);
    render(5);
    EXPECT_FALSE(isRecording());
    play();
    render(1);
    EXPECT_TRUE(isRecording());
    render(3);
    EXPECT_EQ(instrument.tap.frames(), 4 * cycle);

    const auto ended = takes();
    ASSERT_EQ(ended.size(), 1U);
    auto expected = TakeStart();
    expected.values[addressOf(GlobalParameter::activity)] = 0.25f;
    expected.seed = 7;
    expected.sameMusicAtEveryStart = true;
    expected.host = TakeHost{.tempo = 99.5};
    EXPECT_EQ(ended[0].start, expected);
    const auto sync = addressOf(GlobalParameter::sync);
    EXPECT_EQ(ended[0].changes,
              (std::vector<TakeChange>{{.time = {.amount = 0.0}, .value = 0.0, .target = takeTarget(sync)},
                                       {.time = {.amount = 0.0}, .value = 1.0, .target = TakeTarget::play},
                                       {.time = {.amount = 4.0 * cycle}, .target = TakeTarget::end}}));
    EXPECT_TRUE(assembler.finishedTakes().empty()) << "each take is handed out once";
}

TEST_F(Tap, NotesAChangeAtTheCycleInWhichItIsHeard)
{
    instrument.tap.setRecording(true);
    kernel.sync = false;
    render(1);
    play();
    render(10);
    kernel.drudgery = 0.75f;
    kernel.seed = 9;
    render(5);
    kernel.drudgery = 0.75f;
    render(5);

    const auto ended = takes();
    ASSERT_EQ(ended.size(), 1U);
    const auto drudgery = addressOf(GlobalParameter::drudgery);
    EXPECT_EQ(ended[0].changes,
              (std::vector<TakeChange>{
                  {.time = {.amount = 0.0}, .value = 1.0, .target = TakeTarget::play},
                  {.time = {.amount = 10.0 * cycle}, .value = 0.75, .target = takeTarget(drudgery)},
                  {.time = {.amount = 10.0 * cycle}, .value = 9.0, .target = TakeTarget::seed},
                  {.time = {.amount = 20.0 * cycle}, .value = 0.0, .target = TakeTarget::end},
              }));
}

TEST_F(Tap, WaitsForSilenceAndAClockThatStands)
{
    play();
    render(2000);
    instrument.tap.setRecording(true);
    render(2000);
    EXPECT_FALSE(isRecording()) << "it plays";
    kernel.internalPlaying = false;
    render(1);
    play();
    render(1);
    EXPECT_FALSE(isRecording()) << "it still sounds";
    kernel.internalPlaying = false;
    renderUntilSilent();
    render(1);
    EXPECT_NE(kernel.rngState, 12345U);

    instrument.samples.clear();
    play();
    render(3000);
    EXPECT_TRUE(isRecording());
    const auto heard = instrument.samples;
    const auto ended = takes();
    ASSERT_EQ(ended.size(), 1U);
    EXPECT_TRUE(ended[0].start.generator) << "the dice have gone on";
    EXPECT_EQ(soundOf(ended[0], static_cast<std::int64_t>(heard.size())), heard);
}

TEST_F(Tap, EndsATakeWhenAllIsSilentAndBeginsAnotherWithTheNextStart)
{
    instrument.tap.setRecording(true);
    render(1);
    for (int piece = 0; piece < 3; ++piece) {
        instrument.samples.clear();
        play();
        render(3000);
        kernel.internalPlaying = false;
        renderUntilSilent();
        const auto heard = instrument.samples;
        render(100);
        collect();
        const auto ended = assembler.finishedTakes();
        ASSERT_EQ(ended.size(), 1U);
        EXPECT_EQ(ended[0].changes.back().time.amount, static_cast<double>(heard.size()));
        EXPECT_EQ(soundOf(ended[0], static_cast<std::int64_t>(heard.size())), heard);
    }
}

TEST_F(Tap, EndsATakeWhenTheRateChanges)
{
    instrument.tap.setRecording(true);
    render(1);
    play();
    render(10);
    kernel.setup(TakenInstrument::longestCycle, 44100.0);
    render(10);
    kernel.internalPlaying = false;
    renderUntilSilent();
    render(1);
    play();
    render(1);

    const auto ended = takes();
    ASSERT_EQ(ended.size(), 2U);
    EXPECT_EQ(ended[0].start.sampleRate, 48000.0);
    EXPECT_EQ(ended[0].changes.back(),
              (TakeChange{.time = {.amount = 10.0 * cycle}, .target = TakeTarget::end}));
    EXPECT_EQ(ended[1].start.sampleRate, 44100.0);
}

TEST_F(Tap, EndsATakeWhoseNotesNobodyFetches)
{
    instrument.tap.setRecording(true);
    render(1);
    play();
    // A value that is another in each cycle fills the buffer.
    for (std::size_t cycles = 0; cycles < 2 * RecordBuffer::capacity; ++cycles) {
        kernel.activity = cycles % 2 == 0 ? 0.25f : 0.75f;
        render(1);
    }
    collect();
    render(1);
    EXPECT_FALSE(isRecording()) << "it plays on";
    const auto ended = assembler.finishedTakes();
    ASSERT_EQ(ended.size(), 1U);
    const auto length = ended[0].changes.back().time.amount;
    EXPECT_GT(length, cycle * (static_cast<double>(RecordBuffer::capacity) - 100.0));
    EXPECT_LE(length, cycle * static_cast<double>(RecordBuffer::capacity));

    const auto heard =
        std::vector<float>(instrument.samples.begin() + cycle,
                           instrument.samples.begin() + cycle + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(soundOf(ended[0], static_cast<std::int64_t>(length)), heard) << "up to there it is whole";
}

TEST_F(Tap, DoesNotBeginWhereATransportHasRunUnheard)
{
    instrument.tap.setRecording(true);
    render(1);
    // With sync on, the play button is not heard; with sync off, its clock goes on without a start.
    kernel.internalPlaying = true;
    render(10);
    kernel.sync = false;
    render(10);
    EXPECT_FALSE(isRecording());
}

TEST_F(Tap, ATakeSoFarEndsWhereItHasCome)
{
    instrument.tap.setRecording(true);
    render(1);
    EXPECT_FALSE(assembler.takeSoFar(0));
    play();
    render(7);
    collect();
    const auto soFar = assembler.takeSoFar(instrument.tap.frames());
    ASSERT_TRUE(soFar);
    EXPECT_EQ(soFar->changes.back(),
              (TakeChange{.time = {.amount = 7.0 * cycle}, .target = TakeTarget::end}));
    EXPECT_TRUE(isRecording());
}

TEST_F(Tap, EndsTheLongestTakeItself)
{
    instrument.tap.setRecording(true);
    render(1);
    play();
    render(1);
    collect();
    auto& records = instrument.tap.records();
    std::size_t pushed = 0;
    for (; pushed < Take::maxChanges + 1000; ++pushed) {
        if (records.room() == 0)
            collect();
        ASSERT_TRUE(records.push({.frame = static_cast<std::int64_t>(pushed),
                                  .bits = 0,
                                  .kind = TakeRecord::Kind::change,
                                  .target = TakeTarget::seed}));
    }
    collect();
    const auto ended = assembler.finishedTakes();
    ASSERT_EQ(ended.size(), 1U);
    EXPECT_EQ(ended[0].changes.size(), Take::maxChanges);
    EXPECT_EQ(ended[0].changes.back().target, TakeTarget::end);
}

TEST_F(Tap, NeitherTakesNorGivesBackMemoryOnTheRenderThread)
{
    std::vector<float> left(cycle);
    std::vector<float> right(cycle);
    instrument.tap.setRecording(true);
    const AllocationCounter counter;
    for (int i = 0; i < 1000; ++i) {
        kernel.sync = false;
        kernel.internalPlaying = i % 300 > 10;
        kernel.boredom = i % 2 == 0 ? 0.25f : 0.75f;
        kernel.process(left.data(), right.data(), cycle);
        instrument.tap.note(kernel, cycle);
    }
    EXPECT_EQ(counter.count(), 0);
    EXPECT_TRUE(isRecording());
}

} // namespace
} // namespace velotrine
