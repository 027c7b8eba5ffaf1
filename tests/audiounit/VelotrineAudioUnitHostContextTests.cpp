#include "audiounit/VelotrineAudioUnit.h"

#include "engine/Nonblocking.h"
#include "tests/support/TestInstrument.h"

#include <atomic>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// A host that counts what it is asked, and answers as it is told to.
struct FakeHost
{
    AUHostMusicalContextBlock musicalContext()
    {
        return [this](double* askedTempo, double* askedNumerator, std::int64_t* askedDenominator,
                      double* beatPosition, std::int64_t* framesToNextBeat, double* barStart) {
            VELOTRINE_MAY_BLOCK();
            calls.emplace_back("context");
            askedForAll = askedTempo && askedNumerator && askedDenominator && beatPosition &&
                          framesToNextBeat && barStart;
            if (!askedForAll)
                return false;
            *askedTempo = tempo;
            *askedNumerator = numerator;
            *askedDenominator = denominator;
            *beatPosition = 17.0;
            *framesToNextBeat = 99;
            *barStart = 16.0;
            if (whileAsked)
                whileAsked();
            return knowsContext;
        };
    }

    AUHostTransportStateBlock transportState()
    {
        return [this](AUHostTransportStateFlags* askedFlags, double* position, double* loopStart,
                      double* loopEnd) {
            VELOTRINE_MAY_BLOCK();
            calls.emplace_back("transport");
            const bool hasAll = askedFlags && position && loopStart && loopEnd;
            askedForAll = askedForAll && hasAll;
            if (!hasAll)
                return false;
            *askedFlags = flags;
            *position = 12345.0;
            return knowsTransport;
        };
    }

    double tempo = 90.0;
    double numerator = 3.0;
    std::int64_t denominator = 8;
    bool knowsContext = true;
    AUHostTransportStateFlags flags = AUHostTransportStateMoving;
    bool knowsTransport = true;
    std::function<void()> whileAsked;

    std::vector<std::string> calls;
    bool askedForAll = false;
};

class VelotrineAudioUnitHostContext : public testing::Test
{
protected:
    void allocate()
    {
        unit->setMusicalContextBlock(host.musicalContext());
        unit->setTransportStateBlock(host.transportState());
        unit->allocateRenderResources();
    }

    void render(const AURenderEvent* events = nullptr)
    {
        ASSERT_EQ(renderInto(output, unit->renderBlock(), 64, events), noErr);
    }

    FakeHost host;
    std::shared_ptr<VelotrineAudioUnit> unit = makeInstrument();
    VelotrineDSPKernel& kernel = *unit->dspKernel;
    OutputBuffers output{2, 64};
    const std::vector<std::string> once{"context", "transport"};
};

TEST_F(VelotrineAudioUnitHostContext, IsAskedOnceACycleForTheContextAndThenForTheTransport)
{
    allocate();
    EXPECT_TRUE(host.calls.empty());
    render();
    EXPECT_EQ(host.calls, once);
    EXPECT_TRUE(host.askedForAll);
    render();
    EXPECT_EQ(host.calls.size(), 4U);
}

TEST_F(VelotrineAudioUnitHostContext, GivesTempoMetreAndPlayState)
{
    allocate();
    render();
    EXPECT_EQ(kernel.hostTempo, 90.0);
    EXPECT_EQ(kernel.hostBeatsPerBar, 3.0);
    EXPECT_EQ(kernel.hostBeatUnit, 8.0);
    EXPECT_TRUE(kernel.hostPlaying);
}

TEST_F(VelotrineAudioUnitHostContext, RunsTheClockInTheCycleInWhichItIsRead)
{
    allocate();
    render();
    // 3/8 are 1.5 quarter notes a bar.
    const double barsPerFrame = 90.0 / (1.5 * 60.0 * 44100.0);
    EXPECT_NEAR(kernel.clockPhase, 64 * barsPerFrame, 1e-15);
}

TEST_F(VelotrineAudioUnitHostContext, IsNotAskedWithSyncOff)
{
    setValue(*unit, "sync", 0.0f);
    allocate();
    kernel.hostTempo = 77.0;
    render();
    EXPECT_TRUE(host.calls.empty());
    EXPECT_EQ(kernel.hostTempo, 77.0);
    EXPECT_FALSE(kernel.hostPlaying);
}

TEST_F(VelotrineAudioUnitHostContext, KeepsItsLastValuesWhileSyncIsOff)
{
    allocate();
    render();
    setValue(*unit, "sync", 0.0f);
    host.tempo = 150.0;
    host.flags = 0;
    render();
    EXPECT_EQ(host.calls, once);
    EXPECT_EQ(kernel.hostTempo, 90.0);
    EXPECT_TRUE(kernel.hostPlaying);
    setValue(*unit, "sync", 1.0f);
    render();
    EXPECT_EQ(kernel.hostTempo, 150.0);
    EXPECT_FALSE(kernel.hostPlaying);
}

TEST_F(VelotrineAudioUnitHostContext, IsNotAskedForTheTransportWhenSyncGoesOffWhileItAnswers)
{
    allocate();
    host.whileAsked = [this] { setValue(*unit, "sync", 0.0f); };
    render();
    EXPECT_EQ(host.calls, std::vector<std::string>{"context"});
    EXPECT_EQ(kernel.hostTempo, 90.0);
    EXPECT_FALSE(kernel.hostPlaying);
}

/// Somebody else switches sync while cycles are rendered. Switched on between the two questions, it must not
/// let the second through alone.
TEST_F(VelotrineAudioUnitHostContext, IsNeverAskedForTheTransportAlone)
{
    int contexts = 0;
    int transports = 0;
    unit->setMusicalContextBlock([&contexts](auto...) {
        ++contexts;
        return false;
    });
    unit->setTransportStateBlock([&transports](auto...) {
        ++transports;
        return false;
    });
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();

    std::atomic<bool> isDone{false};
    std::thread switching([this, &isDone] {
        while (!isDone)
            kernel.sync = !kernel.sync;
    });
    int alone = 0;
    for (int cycle = 0; cycle < 1000000; ++cycle) {
        contexts = transports = 0;
        block(nullptr, nullptr, 0, 0, &output.list, nullptr, nullptr);
        alone += transports > contexts ? 1 : 0;
    }
    isDone = true;
    switching.join();
    EXPECT_EQ(alone, 0);
}

TEST_F(VelotrineAudioUnitHostContext, IsReadBeforeTheEventsOfTheCycle)
{
    allocate();
    AURenderEvent syncOff;
    syncOff.parameterAddress = 8;
    syncOff.value = 0.0f;
    render(&syncOff);
    EXPECT_EQ(host.calls, once);
    AURenderEvent syncOn = syncOff;
    syncOn.value = 1.0f;
    render(&syncOn);
    EXPECT_EQ(host.calls, once);
    render();
    EXPECT_EQ(host.calls.size(), 4U);
}

TEST_F(VelotrineAudioUnitHostContext, ATempoThatIsNotPositiveKeepsTheOneBefore)
{
    allocate();
    render();
    for (const double tempo : {0.0, -120.0, std::numeric_limits<double>::quiet_NaN()}) {
        host.tempo = tempo;
        render();
        EXPECT_EQ(kernel.hostTempo, 90.0) << tempo;
    }
}

TEST_F(VelotrineAudioUnitHostContext, ANumeratorThatIsNotPositiveKeepsTheOneBefore)
{
    allocate();
    render();
    for (const double numerator : {0.0, -4.0, std::numeric_limits<double>::quiet_NaN()}) {
        host.numerator = numerator;
        render();
        EXPECT_EQ(kernel.hostBeatsPerBar, 3.0) << numerator;
    }
}

TEST_F(VelotrineAudioUnitHostContext, ADenominatorBelowOneKeepsTheOneBefore)
{
    allocate();
    render();
    for (const std::int64_t denominator : {0, -4}) {
        host.denominator = denominator;
        render();
        EXPECT_EQ(kernel.hostBeatUnit, 8.0) << denominator;
    }
    host.denominator = 1;
    render();
    EXPECT_EQ(kernel.hostBeatUnit, 1.0);
}

TEST_F(VelotrineAudioUnitHostContext, EachValueIsJudgedByItself)
{
    allocate();
    host.tempo = 0.0;
    host.numerator = 5.0;
    host.denominator = 0;
    render();
    EXPECT_EQ(kernel.hostTempo, 0.0);
    EXPECT_EQ(kernel.hostBeatsPerBar, 5.0);
    EXPECT_EQ(kernel.hostBeatUnit, 0.0);
}

TEST_F(VelotrineAudioUnitHostContext, AFalseAnswerKeepsWhatWasBefore)
{
    allocate();
    render();
    host.knowsContext = false;
    host.knowsTransport = false;
    host.tempo = 150.0;
    host.numerator = 7.0;
    host.denominator = 16;
    host.flags = 0;
    render();
    EXPECT_EQ(host.calls.size(), 4U);
    EXPECT_EQ(kernel.hostTempo, 90.0);
    EXPECT_EQ(kernel.hostBeatsPerBar, 3.0);
    EXPECT_EQ(kernel.hostBeatUnit, 8.0);
    EXPECT_TRUE(kernel.hostPlaying);
}

TEST_F(VelotrineAudioUnitHostContext, PlaysExactlyWhileTheMovingFlagIsSet)
{
    allocate();
    const auto playsWith = [this](AUHostTransportStateFlags flags) {
        host.flags = flags;
        render();
        return kernel.hostPlaying;
    };
    EXPECT_TRUE(playsWith(2));
    EXPECT_FALSE(playsWith(1));
    EXPECT_TRUE(playsWith(3));
    EXPECT_FALSE(playsWith(0));
    EXPECT_TRUE(playsWith(6));
    EXPECT_FALSE(playsWith(4));
}

TEST_F(VelotrineAudioUnitHostContext, MayLackEitherBlock)
{
    unit->setTransportStateBlock(host.transportState());
    unit->allocateRenderResources();
    render();
    EXPECT_EQ(host.calls, std::vector<std::string>{"transport"});
    EXPECT_TRUE(kernel.hostPlaying);
    unit->setTransportStateBlock(nullptr);
    unit->setMusicalContextBlock(host.musicalContext());
    unit->allocateRenderResources();
    render();
    EXPECT_EQ(host.calls, (std::vector<std::string>{"transport", "context"}));
    EXPECT_TRUE(kernel.hostPlaying);
}

TEST_F(VelotrineAudioUnitHostContext, IsTakenUpAtTheNextAllocation)
{
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();
    unit->setMusicalContextBlock(host.musicalContext());
    unit->setTransportStateBlock(host.transportState());
    ASSERT_EQ(renderInto(output, block, 64), noErr);
    EXPECT_TRUE(host.calls.empty());
    unit->allocateRenderResources();
    ASSERT_EQ(renderInto(output, block, 64), noErr);
    EXPECT_EQ(host.calls, once);
}

TEST_F(VelotrineAudioUnitHostContext, IsHeldFromAllocationToDeallocation)
{
    const auto held = std::make_shared<int>(0);
    unit->setMusicalContextBlock([held](auto...) { return false; });
    unit->setTransportStateBlock([held](auto...) { return false; });
    unit->allocateRenderResources();
    const auto block = unit->renderBlock();
    unit->setMusicalContextBlock(nullptr);
    unit->setTransportStateBlock(nullptr);
    EXPECT_EQ(held.use_count(), 3);
    unit->deallocateRenderResources();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(VelotrineAudioUnitHostContext, OfAnEarlierAllocationIsDroppedAtTheNext)
{
    const auto held = std::make_shared<int>(0);
    unit->setMusicalContextBlock([held](auto...) { return false; });
    unit->allocateRenderResources();
    unit->setMusicalContextBlock(nullptr);
    unit->allocateRenderResources();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(VelotrineAudioUnitHostContext, IsReadEvenWhenThereIsNowhereToRenderTo)
{
    allocate();
    OutputBuffers none(0, 64);
    ASSERT_EQ(renderInto(none, unit->renderBlock(), 64), noErr);
    EXPECT_EQ(host.calls, once);
    EXPECT_EQ(kernel.hostTempo, 90.0);
}

} // namespace
} // namespace velotrine
