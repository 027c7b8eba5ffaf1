#include "tests/takes/TakenInstrument.h"

#include "audiounit/Parameters.h"
#include "takes/TakeAssembler.h"
#include "takes/TakeText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using test::soundOf;
using test::TakenInstrument;

/// Hands that turn anything, at any moment, as long as it is a value that the instrument knows.
class Hands
{
public:
    explicit Hands(std::uint32_t seed) : random(seed) {}

    void change(VelotrineDSPKernel& kernel)
    {
        if (oneIn(40))
            playOrStop(kernel);
        if (oneIn(20))
            turnParameters(kernel, draw(1, 39));
        if (oneIn(3))
            turnParameters(kernel, 1);
        if (oneIn(100))
            kernel.seed = static_cast<std::uint32_t>(random());
        if (oneIn(100))
            kernel.sameMusicAtEveryStart = oneIn(2);
        if (oneIn(50))
            turnHost(kernel);
    }

    int cycle()
    {
        if (oneIn(30))
            cycleFrames = oneIn(2) ? 32 : draw(1, TakenInstrument::longestCycle);
        return cycleFrames;
    }

private:
    void playOrStop(VelotrineDSPKernel& kernel)
    {
        kernel.internalPlaying = !oneIn(3);
        kernel.hostPlaying = !oneIn(3);
    }

    void turnParameters(VelotrineDSPKernel& kernel, int count)
    {
        for (int i = 0; i < count; ++i) {
            const auto& info = parameterTable()[static_cast<std::size_t>(draw(0, 38))];
            const auto value = std::uniform_real_distribution<float>(info.minValue, info.maxValue)(random);
            kernel.setParameter(info.address, info.isDiscrete() ? std::round(value) : value);
        }
    }

    void turnHost(VelotrineDSPKernel& kernel)
    {
        kernel.hostTempo = std::uniform_real_distribution<double>(20.0, 400.0)(random);
        kernel.hostBeatsPerBar = draw(1, 13);
        kernel.hostBeatUnit = oneIn(2) ? 4.0 : 8.0;
    }

    bool oneIn(int chances) { return draw(1, chances) == 1; }

    int draw(int lowest, int highest) { return std::uniform_int_distribution<int>(lowest, highest)(random); }

    std::mt19937 random;
    int cycleFrames = 32;
};

/// Lets an instrument live before its take begins: then stops it, and waits until all is silent.
void liveAndFallSilent(TakenInstrument& instrument, Hands& hands)
{
    auto& kernel = instrument.kernel();
    for (int i = 0; i < 500; ++i) {
        hands.change(kernel);
        instrument.render(hands.cycle());
    }
    kernel.internalPlaying = false;
    kernel.hostPlaying = false;
    for (int i = 0; i < 5000 && !kernel.isAtRest(); ++i)
        instrument.render(32);
    // What was frozen while the clock of the other transport counted is put back by a start and a stop.
    for (const bool playing : {true, false}) {
        kernel.internalPlaying = playing;
        kernel.hostPlaying = playing;
        instrument.render(32);
    }
    for (int i = 0; i < 5000 && !kernel.isAtRest(); ++i)
        instrument.render(32);
}

/// What an instrument sounded like while it lived, and the takes of it.
struct Life
{
    std::vector<float> heard;
    std::vector<std::size_t> takesBegan; ///< where in the sound
    std::vector<Take> takes;
};

Life recorded(TakenInstrument& instrument, Hands& hands)
{
    Life life;
    TakeAssembler assembler;
    const auto render = [&](int frames) {
        const auto start = instrument.samples.size();
        instrument.render(frames);
        instrument.tap.records().takeAll([&](const TakeRecord& record) {
            if (record.kind == TakeRecord::Kind::begin)
                life.takesBegan.push_back(start);
            assembler.add(record);
        });
    };
    instrument.samples.clear();
    instrument.tap.setRecording(true);
    render(32);
    instrument.kernel().sync = false;
    instrument.kernel().internalPlaying = true;
    for (int cycle = 0; cycle < 4000; ++cycle) {
        render(hands.cycle());
        hands.change(instrument.kernel());
    }
    instrument.tap.setRecording(false);
    render(32);
    life.heard = instrument.samples;
    life.takes = assembler.finishedTakes();
    return life;
}

TEST(ATake, ThatWasRecordedWrittenAndReadGivesTheSameSamplesToTheBit)
{
    std::size_t loud = 0;
    std::size_t changes = 0;
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Hands hands(seed);
        TakenInstrument instrument(seed % 2 == 0 ? 48000.0 : 44100.0);
        liveAndFallSilent(instrument, hands);
        const auto life = recorded(instrument, hands);
        ASSERT_GE(life.takes.size(), 1U);
        ASSERT_EQ(life.takes.size(), life.takesBegan.size());

        for (std::size_t i = 0; i < life.takes.size(); ++i) {
            const auto& take = life.takes[i];
            changes += take.changes.size();
            ASSERT_EQ(take.changes.back().target, TakeTarget::end);
            const auto frames = static_cast<std::ptrdiff_t>(take.changes.back().time.amount);
            const auto from = life.heard.begin() + static_cast<std::ptrdiff_t>(life.takesBegan[i]);
            const std::vector<float> heard(from, from + frames);

            const auto text = textFromTake(take);
            const auto read = takeFromText(text);
            ASSERT_TRUE(read.take) << read.error;
            // Not by EXPECT_EQ, which would print megabytes.
            EXPECT_TRUE(*read.take == take);
            EXPECT_TRUE(textFromTake(*read.take) == text);

            const auto again = soundOf(*read.take, frames);
            const auto [first, second] = std::ranges::mismatch(heard, again);
            EXPECT_TRUE(first == heard.end())
                << "take " << i << " from frame " << first - heard.begin() << " on";
            loud += static_cast<std::size_t>(
                std::ranges::count_if(heard, [](float sample) { return std::abs(sample) > 0.01f; }));
        }
    }
    EXPECT_GT(loud, 1000000U);
    EXPECT_GT(changes, 20000U);
}

} // namespace
} // namespace velotrine
