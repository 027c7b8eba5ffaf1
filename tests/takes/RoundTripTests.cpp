#include "tests/takes/TakenInstrument.h"

#include "audiounit/Parameters.h"
#include "takes/TakeRecorder.h"
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

TEST(ATake, ThatWasRecordedWrittenAndReadGivesTheSameSamplesToTheBit)
{
    std::size_t loud = 0;
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Hands hands(seed);
        TakenInstrument instrument(seed % 2 == 0 ? 48000.0 : 44100.0);
        liveAndFallSilent(instrument, hands);

        TakeRecorder recorder(instrument.tap.records());
        instrument.tap.setRecording(true);
        instrument.render(32);
        instrument.samples.clear();
        instrument.kernel().sync = false;
        instrument.kernel().internalPlaying = true;
        instrument.render(32);
        for (int cycle = 0; cycle < 4000; ++cycle) {
            hands.change(instrument.kernel());
            instrument.render(hands.cycle());
            if (cycle % 100 == 0)
                recorder.collect();
        }
        const auto heard = instrument.samples;
        instrument.tap.setRecording(false);
        instrument.render(32);
        recorder.collect();

        const auto takes = recorder.finishedTakes();
        ASSERT_EQ(takes.size(), 1U);
        EXPECT_GT(takes[0].changes.size(), 2000U);
        EXPECT_EQ(takes[0].changes.back().target, TakeTarget::end);
        EXPECT_EQ(takes[0].changes.back().time.amount, static_cast<double>(heard.size()));
        const auto text = textFromTake(takes[0]);
        const auto read = takeFromText(text);
        ASSERT_TRUE(read.take) << read.error;
        // Not by EXPECT_EQ, which would print megabytes.
        EXPECT_TRUE(*read.take == takes[0]);
        EXPECT_TRUE(textFromTake(*read.take) == text);

        const auto again = soundOf(*read.take, static_cast<std::int64_t>(heard.size()));
        const auto [first, second] = std::ranges::mismatch(heard, again);
        EXPECT_TRUE(first == heard.end()) << "from frame " << first - heard.begin() << " on";
        loud += static_cast<std::size_t>(
            std::ranges::count_if(heard, [](float sample) { return std::abs(sample) > 0.01f; }));
    }
    EXPECT_GT(loud, 1000000U);
}

} // namespace
} // namespace velotrine
