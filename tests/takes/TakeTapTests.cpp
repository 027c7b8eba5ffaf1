#include "takes/TakeTap.h"

#include "audiounit/Parameters.h"
#include "takes/TakeRecorder.h"
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

    /// Ends the take, if one is being recorded, and gives those that have ended.
    std::vector<Take> takes()
    {
        instrument.tap.setRecording(false);
        render(1);
        recorder.collect();
        return recorder.finishedTakes();
    }

    TakenInstrument instrument;
    VelotrineDSPKernel& kernel = instrument.kernel();
    TakeRecorder recorder{instrument.tap.records()};
};

TEST_F(Tap, NotesNothingUnlessTakesAreWanted)
{
    kernel.sync = false;
    kernel.internalPlaying = true;
    render(100);
    recorder.collect();
    EXPECT_FALSE(recorder.isRecording());
    EXPECT_TRUE(takes().empty());
}

TEST_F(Tap, BeginsATakeWithTheStateOfAnInstrumentThatIsSilent)
{
    kernel.setParameter(addressOf(GlobalParameter::activity), 0.25f);
    kernel.seed = 7;
    kernel.sameMusicAtEveryStart = true;
    kernel.hostTempo = 99.5;
    instrument.tap.setRecording(true);
    render(1);
    recorder.collect();
    EXPECT_TRUE(recorder.isRecording());
    render(3);

    const auto ended = takes();
    ASSERT_EQ(ended.size(), 1U);
    auto expected = TakeStart();
    expected.values[addressOf(GlobalParameter::activity)] = 0.25f;
    expected.seed = 7;
    expected.sameMusicAtEveryStart = true;
    expected.host = TakeHost{.tempo = 99.5};
    EXPECT_EQ(ended[0].start, expected);
    EXPECT_EQ(ended[0].changes,
              (std::vector<TakeChange>{{.time = {.amount = 3.0 * cycle}, .target = TakeTarget::end}}));
    EXPECT_TRUE(recorder.finishedTakes().empty()) << "each take is handed out once";
}

TEST_F(Tap, NotesAChangeAtTheCycleInWhichItIsHeard)
{
    instrument.tap.setRecording(true);
    render(1);
    kernel.sync = false;
    kernel.internalPlaying = true;
    render(10);
    kernel.drudgery = 0.75f;
    kernel.seed = 9;
    render(5);
    kernel.drudgery = 0.75f;
    render(5);

    const auto ended = takes();
    ASSERT_EQ(ended.size(), 1U);
    const auto drudgery = addressOf(GlobalParameter::drudgery);
    const auto sync = addressOf(GlobalParameter::sync);
    EXPECT_EQ(ended[0].changes,
              (std::vector<TakeChange>{
                  {.time = {.amount = 0.0}, .value = 0.0, .target = takeTarget(sync)},
                  {.time = {.amount = 0.0}, .value = 1.0, .target = TakeTarget::play},
                  {.time = {.amount = 10.0 * cycle}, .value = 0.75, .target = takeTarget(drudgery)},
                  {.time = {.amount = 10.0 * cycle}, .value = 9.0, .target = TakeTarget::seed},
                  {.time = {.amount = 20.0 * cycle}, .value = 0.0, .target = TakeTarget::end},
              }));
}

TEST_F(Tap, WaitsForSilenceAndAClockThatStands)
{
    kernel.sync = false;
    kernel.internalPlaying = true;
    render(2000);
    instrument.tap.setRecording(true);
    render(2000);
    recorder.collect();
    EXPECT_FALSE(recorder.isRecording()) << "it plays";
    kernel.internalPlaying = false;
    render(1);
    recorder.collect();
    EXPECT_FALSE(recorder.isRecording()) << "it still sounds";
    renderUntilSilent();
    recorder.collect();
    EXPECT_TRUE(recorder.isRecording());
    EXPECT_NE(kernel.rngState, 12345U);

    instrument.samples.clear();
    kernel.internalPlaying = true;
    render(3000);
    const auto heard = instrument.samples;
    const auto ended = takes();
    ASSERT_EQ(ended.size(), 1U);
    EXPECT_TRUE(ended[0].start.generator) << "the dice have gone on";
    EXPECT_EQ(soundOf(ended[0], static_cast<std::int64_t>(heard.size())), heard);
}

TEST_F(Tap, EndsATakeWhenTheRateChangesAndBeginsAnother)
{
    instrument.tap.setRecording(true);
    render(1);
    kernel.sync = false;
    kernel.internalPlaying = true;
    render(10);
    kernel.setup(TakenInstrument::longestCycle, 44100.0);
    render(10);
    kernel.internalPlaying = false;
    renderUntilSilent();
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
    kernel.sync = false;
    instrument.tap.setRecording(true);
    render(1);
    kernel.internalPlaying = true;
    std::size_t cycles = 0;
    // A value that is another in each cycle fills the buffer.
    for (; cycles < 2 * RecordBuffer::capacity; ++cycles) {
        kernel.activity = cycles % 2 == 0 ? 0.25f : 0.75f;
        render(1);
    }
    recorder.collect();
    render(1);
    recorder.collect();
    const auto ended = recorder.finishedTakes();
    ASSERT_EQ(ended.size(), 1U);
    const auto length = ended[0].changes.back().time.amount;
    EXPECT_GT(length, cycle * (static_cast<double>(RecordBuffer::capacity) - 100.0));
    EXPECT_LE(length, cycle * static_cast<double>(RecordBuffer::capacity));
    EXPECT_FALSE(recorder.isRecording()) << "it plays on";

    const auto heard =
        std::vector<float>(instrument.samples.begin() + cycle,
                           instrument.samples.begin() + cycle + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(soundOf(ended[0], static_cast<std::int64_t>(length)), heard) << "up to there it is whole";
}

TEST_F(Tap, GivesATakeUpIntoWhichAnEarlierStartReaches)
{
    instrument.tap.setRecording(true);
    render(1);
    // With sync on, the play button is not heard; with sync off, its clock goes on without a start.
    kernel.internalPlaying = true;
    render(10);
    kernel.sync = false;
    render(10);
    recorder.collect();
    const auto ended = recorder.finishedTakes();
    ASSERT_EQ(ended.size(), 1U);
    EXPECT_EQ(ended[0].changes.back().time.amount, 10.0 * cycle);
    EXPECT_FALSE(recorder.isRecording());
}

TEST_F(Tap, EndsTheLongestTakeItself)
{
    instrument.tap.setRecording(true);
    render(1);
    recorder.collect();
    auto& records = instrument.tap.records();
    std::size_t pushed = 0;
    for (; pushed < Take::maxChanges + 1000; ++pushed) {
        if (records.room() == 0)
            recorder.collect();
        ASSERT_TRUE(records.push({.frame = static_cast<std::int64_t>(pushed),
                                  .bits = 0,
                                  .kind = TakeRecord::Kind::change,
                                  .target = TakeTarget::seed}));
    }
    recorder.collect();
    const auto ended = recorder.finishedTakes();
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
    recorder.collect();
    EXPECT_TRUE(recorder.isRecording());
}

} // namespace
} // namespace velotrine
