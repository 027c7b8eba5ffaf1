#include "tests/host/FakeDevices.h"
#include "tests/host/PlayingEngine.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/FakeAudioUnit.h"
#include "tests/support/MessageLoop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using testing::Each;

constexpr double timeoutSeconds = 10.0;
constexpr double barsPerSecond = 300.0 / 60.0 / 4.0; ///< of PlayingEngine's instrument

float peakOf(const std::vector<float>& samples)
{
    return std::abs(
        *std::ranges::max_element(samples, [](float a, float b) { return std::abs(a) < std::abs(b); }));
}

/// The device asks for sound while messages run, as in the application.
bool playUntil(FakeSound& sound, const std::function<bool()>& condition)
{
    return runMessagesUntil(
        [&] {
            if (sound.callback != nullptr)
                (void)sound.request(sound.bufferFrames);
            return condition();
        },
        timeoutSeconds);
}

TEST(AVAudioEngine, PlaysTheUnitAtTheDevicesRateInShortCycles)
{
    FakeSound sound;
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    EXPECT_FALSE(playing.engine.start());
    EXPECT_TRUE(playing.engine.hasDevice());
    EXPECT_EQ(playing.instrument->dspKernel->sampleRate, 48000.0);
    EXPECT_EQ(playing.instrument->dspKernel->maxFrames, CycleRenderer::defaultCycleFrames);
    const auto channels = sound.request(48000);
    EXPECT_GT(peakOf(channels[0]), 0.1f);
    EXPECT_EQ(channels[0], channels[1]);
    EXPECT_NEAR(playing.clock(), std::fmod(barsPerSecond, 1.0), 0.001);
}

TEST(AVAudioEngine, ADeviceOfAnyNumberOfChannelsIsServed)
{
    for (const int channelCount : {1, 2, 5}) {
        FakeSound sound;
        sound.channelCount = channelCount;
        PlayingEngine playing(fakeDeviceTypes({&sound}));
        EXPECT_FALSE(playing.engine.start());
        const auto channels = sound.request(48000);
        EXPECT_GT(peakOf(channels[0]), 0.1f);
        for (std::size_t channel = 2; channel < channels.size(); ++channel)
            EXPECT_THAT(channels[channel], Each(0.0f));
    }
}

TEST(AVAudioEngine, TheDevicesThreadNeitherAllocatesNorFrees)
{
    FakeSound sound;
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    EXPECT_FALSE(playing.engine.start());
    std::vector<float> left(512);
    std::vector<float> right(512);
    float* const channels[]{left.data(), right.data()};
    const AllocationCounter counter;
    for (int block = 0; block < 500; ++block)
        sound.callback->audioDeviceIOCallbackWithContext(nullptr, 0, channels, 2, 512, {});
    EXPECT_EQ(counter.count(), 0);
    EXPECT_GT(playing.clock(), 0.0);
}

TEST(AVAudioEngine, PrefersTheFirstKindOfDeviceThatOpens)
{
    FakeSound jack{.isPresent = false, .typeName = "JACK"};
    FakeSound broken{.typeName = "Broken", .openProblem = "busy"};
    FakeSound alsa{.typeName = "ALSA"};
    PlayingEngine playing(fakeDeviceTypes({&jack, &broken, &alsa}));
    EXPECT_FALSE(playing.engine.start());
    EXPECT_EQ(jack.openings, 0);
    EXPECT_EQ(broken.openings, 1);
    EXPECT_NE(alsa.callback, nullptr);
}

TEST(AVAudioEngine, TakesTheDefaultDeviceOfItsKind)
{
    FakeSound sound{.namesBefore = {"Headphones"}};
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    EXPECT_FALSE(playing.engine.start());
    EXPECT_EQ(sound.openedName, "Loudspeaker");
}

TEST(AVAudioEngine, TakesTheDeviceOfTheNameAskedFor)
{
    FakeSound first;
    FakeSound second{.deviceName = "Headphones"};
    PlayingEngine playing(fakeDeviceTypes({&first, &second}));
    playing.engine.setDeviceOptions({.deviceName = "Headphones", .sampleRate = {}, .bufferFrames = {}});
    EXPECT_FALSE(playing.engine.start());
    EXPECT_EQ(first.callback, nullptr);
    EXPECT_NE(second.callback, nullptr);
}

TEST(AVAudioEngine, DoesNotFallBackToAnotherDeviceThanTheOneAskedFor)
{
    FakeSound sound;
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    playing.engine.setDeviceOptions({.deviceName = "Headphones", .sampleRate = {}, .bufferFrames = {}});
    const auto error = playing.engine.start();
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "There is no audio device called \"Headphones\" (Fake: none found).");
    EXPECT_EQ(sound.openings, 0);
}

TEST(AVAudioEngine, TakesTheNearestRateAndBufferThatTheDeviceHas)
{
    FakeSound sound;
    sound.sampleRates = {44100.0, 48000.0, 96000.0};
    sound.bufferSizes = {64, 128, 256, 512};
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    playing.engine.setDeviceOptions({.deviceName = {}, .sampleRate = 88200.0, .bufferFrames = 200});
    EXPECT_FALSE(playing.engine.start());
    EXPECT_EQ(sound.sampleRate, 96000.0);
    EXPECT_EQ(sound.bufferFrames, 256);
    EXPECT_EQ(playing.instrument->dspKernel->sampleRate, 96000.0);
}

TEST(AVAudioEngine, TheRateOfAConnectionsFormatIsRequestedFromTheDevice)
{
    FakeSound sound;
    sound.sampleRates = {44100.0, 48000.0, 96000.0};
    AVAudioEngine engine(fakeDeviceTypes({&sound}));
    const auto node = std::make_shared<AVAudioUnit>(makeInstrument());
    engine.attach(node);
    engine.connect(node, engine.mainMixerNode(), AVAudioFormat::standardFormat(44100.0, 2));
    EXPECT_FALSE(engine.start());
    EXPECT_EQ(sound.sampleRate, 44100.0);
}

TEST(AVAudioEngine, ReturnsAnErrorWithNothingConnected)
{
    FakeSound sound;
    AVAudioEngine engine(fakeDeviceTypes({&sound}));
    const auto error = engine.start();
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "No audio unit is connected to the engine.");
}

TEST(AVAudioEngine, AUnitThatCannotBePreparedIsAnErrorAndStaysSilent)
{
    FakeSound sound;
    AVAudioEngine engine(fakeDeviceTypes({&sound}));
    const auto node = std::make_shared<AVAudioUnit>(std::make_shared<FakeAudioUnit>(
        AudioComponentDescription{}, AudioComponentInstantiationOptions::none));
    engine.attach(node);
    engine.connect(node, engine.mainMixerNode(), std::nullopt);
    EXPECT_TRUE(engine.start());
    EXPECT_FALSE(engine.hasDevice());
    runMessagesFor(0.05);
}

TEST(AVAudioEngine, WithoutADeviceTheErrorSaysSo)
{
    FakeSound jack{.isPresent = false, .typeName = "JACK"};
    FakeSound alsa{.typeName = "ALSA", .openProblem = "The device is busy"};
    PlayingEngine playing(fakeDeviceTypes({&jack, &alsa}));
    const auto error = playing.engine.start();
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), "There is no audio device (JACK: none found; ALSA: The device is busy).");
    EXPECT_FALSE(playing.engine.hasDevice());
}

TEST(AVAudioEngine, ADeviceAtARateThatTheInstrumentCannotPlayIsRefusedWithAMessage)
{
    const std::vector<std::pair<double, std::string>> rates{{4000.0, "4000"},
                                                            {7999.0, "7999"},
                                                            {768001.0, "768001"},
                                                            {-48000.0, "-48000"},
                                                            {0.0, "0"},
                                                            {std::numeric_limits<double>::quiet_NaN(), "nan"},
                                                            {std::numeric_limits<double>::infinity(), "inf"}};
    for (const auto& [rate, text] : rates) {
        FakeSound sound{.sampleRates = {rate}};
        PlayingEngine playing(fakeDeviceTypes({&sound}));
        const auto error = playing.engine.start();
        ASSERT_TRUE(error) << rate;
        EXPECT_EQ(error->what(),
                  "There is no audio device (Fake: it runs at " + text + " Hz; 8000 to 768000 Hz will do).");
        EXPECT_FALSE(playing.engine.hasDevice());
        EXPECT_EQ(sound.callback, nullptr);
    }
}

TEST(AVAudioEngine, TheNextKindOfDeviceIsTakenInsteadOfOneAtAnImpossibleRate)
{
    FakeSound odd{.sampleRates = {4000.0}};
    FakeSound alsa{.typeName = "ALSA"};
    PlayingEngine playing(fakeDeviceTypes({&odd, &alsa}));
    EXPECT_FALSE(playing.engine.start());
    EXPECT_NE(alsa.callback, nullptr);
}

TEST(AVAudioEngine, TheLowestAndTheHighestRateArePlayed)
{
    for (const auto rate : {8000.0, 768000.0}) {
        FakeSound sound{.sampleRates = {rate}};
        PlayingEngine playing(fakeDeviceTypes({&sound}));
        EXPECT_FALSE(playing.engine.start()) << rate;
        EXPECT_EQ(playing.instrument->dspKernel->sampleRate, rate);
    }
}

/// How far the clock turns in some seconds of messages, in bars; less than one.
double barsWithin(const PlayingEngine& playing, double seconds)
{
    const auto before = playing.clock();
    const auto begin = std::chrono::steady_clock::now();
    runMessagesFor(seconds);
    const auto elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    const auto turned = playing.clock() - before;
    return (turned < 0.0 ? turned + 1.0 : turned) * seconds / elapsed;
}

TEST(AVAudioEngine, WithoutADeviceTheClockRunsInRealTime)
{
    FakeSound sound{.isPresent = false};
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    EXPECT_TRUE(playing.engine.start());
    EXPECT_EQ(playing.instrument->dspKernel->sampleRate, 44100.0);
    runMessagesFor(0.05);
    EXPECT_NEAR(barsWithin(playing, 0.6), 0.6 * barsPerSecond, 0.05 * barsPerSecond);
}

TEST(AVAudioEngine, WithoutADeviceTheClockRunsInRealTimeAtTheRateAskedFor)
{
    FakeSound sound{.isPresent = false};
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    playing.engine.setDeviceOptions({.deviceName = {}, .sampleRate = 96000.0, .bufferFrames = {}});
    EXPECT_TRUE(playing.engine.start());
    EXPECT_EQ(playing.instrument->dspKernel->sampleRate, 96000.0);
    runMessagesFor(0.05);
    EXPECT_NEAR(barsWithin(playing, 0.6), 0.6 * barsPerSecond, 0.05 * barsPerSecond);
}

TEST(AVAudioEngine, WithoutADeviceTheClockStartsSoonAfterPlayAndStops)
{
    FakeSound sound{.isPresent = false};
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    playing.instrument->dspKernel->internalPlaying = false;
    EXPECT_TRUE(playing.engine.start());
    runMessagesFor(0.2);
    EXPECT_EQ(playing.clock(), 0.0);
    playing.instrument->dspKernel->internalPlaying = true;
    runMessagesFor(0.1);
    EXPECT_GT(playing.clock(), 0.0);
    EXPECT_NEAR(barsWithin(playing, 0.6), 0.6 * barsPerSecond, 0.05 * barsPerSecond);
    playing.instrument->dspKernel->internalPlaying = false;
    runMessagesFor(0.1);
    EXPECT_EQ(playing.clock(), 0.0);
}

TEST(AVAudioEngine, ADeviceThatAppearsLaterTakesOverWithoutTheClockJumpingBack)
{
    FakeSound sound{.isPresent = false};
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    EXPECT_TRUE(playing.engine.start());
    int changes = 0;
    playing.engine.onDeviceChanged = [&] { ++changes; };
    setValue(*playing.instrument, "bpm", 40.0f); // a bar takes six seconds, longer than the test
    runMessagesFor(0.3);
    const auto clockBefore = playing.clock();
    const auto turnBefore = static_cast<double>(playing.instrument->dspKernel->activityPhases[0]);
    EXPECT_GT(clockBefore, 0.0);

    sound.isPresent = true;
    ASSERT_TRUE(runMessagesUntil([&] { return playing.engine.hasDevice(); }, timeoutSeconds));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(playing.instrument->dspKernel->sampleRate, 48000.0);
    EXPECT_GE(playing.clock(), clockBefore);
    const auto clockAtTakeOver = playing.clock();
    (void)sound.request(4800);
    EXPECT_NEAR(playing.clock() - clockAtTakeOver, 0.1 * 40.0 / 60.0 / 4.0, 0.0002);
    EXPECT_GT(playing.instrument->dspKernel->activityPhases[0], turnBefore);
    EXPECT_GT(peakOf(sound.request(48000 * 6)[0]), 0.1f);
}

TEST(AVAudioEngine, ADeviceThatNoLongerAsksForSoundIsLostAndTheClockGoesOn)
{
    FakeSound sound;
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    EXPECT_FALSE(playing.engine.start());
    int changes = 0;
    playing.engine.onDeviceChanged = [&] { ++changes; };
    (void)playUntil(sound, [&, calls = 0]() mutable { return ++calls > 20; });
    sound.isPresent = false;
    ASSERT_TRUE(runMessagesUntil([&] { return !playing.engine.hasDevice(); }, timeoutSeconds));
    EXPECT_EQ(sound.callback, nullptr);
    EXPECT_EQ(changes, 1);
    EXPECT_NEAR(barsWithin(playing, 0.6), 0.6 * barsPerSecond, 0.05 * barsPerSecond);

    sound.isPresent = true;
    ASSERT_TRUE(runMessagesUntil([&] { return playing.engine.hasDevice(); }, timeoutSeconds));
    EXPECT_EQ(changes, 2);
    EXPECT_GT(peakOf(sound.request(48000)[0]), 0.1f);
}

TEST(AVAudioEngine, ADeviceWithLongBuffersIsGivenTime)
{
    FakeSound sound;
    sound.sampleRates = {8000.0};
    sound.bufferSizes = {8192};
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    EXPECT_FALSE(playing.engine.start());
    runMessagesFor(1.1);
    EXPECT_TRUE(playing.engine.hasDevice());
    EXPECT_EQ(sound.openings, 1);
}

TEST(AVAudioEngine, AnIdleJackClientStaysOpenAndDrivesTheClockAgainWhenItAsksForSound)
{
    FakeSound sound{.typeName = "JACK"};
    PlayingEngine playing(fakeDeviceTypes({&sound}));
    EXPECT_FALSE(playing.engine.start());
    runMessagesFor(0.6);
    EXPECT_TRUE(playing.engine.hasDevice());
    EXPECT_EQ(sound.openings, 1);
    EXPECT_NEAR(barsWithin(playing, 0.6), 0.6 * barsPerSecond, 0.05 * barsPerSecond);

    (void)sound.request(1);
    runMessagesFor(0.05);
    const auto before = playing.clock();
    runMessagesFor(0.05);
    EXPECT_EQ(playing.clock(), before);
}

TEST(AVAudioEngine, DroppingItStopsTheDevice)
{
    FakeSound sound;
    {
        PlayingEngine playing(fakeDeviceTypes({&sound}));
        EXPECT_FALSE(playing.engine.start());
    }
    EXPECT_EQ(sound.callback, nullptr);
}

TEST(AVAudioEngineDeathTest, OnlyTheAttachedNodeCanBeConnected)
{
    FakeSound sound;
    AVAudioEngine engine(fakeDeviceTypes({&sound}));
    const auto node = std::make_shared<AVAudioUnit>(makeInstrument());
    EXPECT_DEATH(engine.connect(node, engine.mainMixerNode(), std::nullopt), "only the attached node");
    EXPECT_DEATH(engine.attach(nullptr), "no node to attach");
}

} // namespace
} // namespace velotrine
