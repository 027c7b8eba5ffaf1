// All threads at once, as roughly as hosts can be. What this checks beyond the values, a thread sanitizer's
// build sees: that no two threads meet unguarded.

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "plugin/HostedInstrument.h"
#include "plugin/InstrumentHost.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// VELOTRINE_STRESS_SECONDS in the environment says how long; five seconds unless told otherwise.
std::chrono::seconds stressDuration()
{
    const auto* const wanted = std::getenv("VELOTRINE_STRESS_SECONDS");
    return std::chrono::seconds(wanted != nullptr ? std::max(1, std::atoi(wanted)) : 5);
}

class CountingHost final : public InstrumentHost
{
public:
    void beginGesture(ParameterAddress) override { ++edits; }

    void valueChanged(ParameterAddress, float) override { ++edits; }

    void endGesture(ParameterAddress) override { ++edits; }

    std::atomic<long> edits{0};
};

float anyValueOf(const ParameterInfo& parameter, std::mt19937& random)
{
    return std::uniform_real_distribution(parameter.minValue, parameter.maxValue)(random);
}

/// One instrument, and what each kind of thread does to it, over and over until the time is up.
class Stress
{
public:
    Stress()
    {
        if (!instrument.prepare(48000.0))
            throw std::runtime_error("a rate that every device has");
    }

    void run()
    {
        const auto end = std::chrono::steady_clock::now() + stressDuration();
        const auto start = [this](void (Stress::*act)(std::mt19937&), unsigned seed) {
            threads.emplace_back([this, act, random = std::mt19937(seed)]() mutable {
                while (!isOver)
                    (this->*act)(random);
            });
        };
        start(&Stress::render, 1);
        start(&Stress::automate, 2);
        start(&Stress::automate, 3);
        start(&Stress::saveAndRestore, 4);
        start(&Stress::look, 5);
        std::mt19937 random(6);
        while (std::chrono::steady_clock::now() < end)
            edit(random);
        isOver = true;
        for (auto& thread : threads)
            thread.join();
    }

    CountingHost host;
    HostedInstrument instrument{host};
    std::atomic<long> blocks{0};
    std::atomic<long> states{0};
    std::atomic<long> looks{0};
    std::atomic<bool> allSamplesAreSound{true};
    std::atomic<bool> allStatesAreTaken{true};

private:
    void render(std::mt19937& random)
    {
        std::array<float, 512> left{};
        std::array<float, 512> right{};
        instrument.setTransport(HostTransport{.tempo = 40.0 + static_cast<double>(random() % 260),
                                              .tempoPerFrame = random() % 5 == 0 ? 1.0e-5 : 0.0,
                                              .beatsPerBar = 1.0 + static_cast<double>(random() % 7),
                                              .beatUnit = 4.0,
                                              .isPlaying = random() % 50 != 0});
        const auto frames = static_cast<int>(1 + random() % left.size());
        instrument.render({left.data(), right.data()}, frames);
        if (random() % 1000 == 0)
            instrument.reset();
        const auto isSound = [](float sample) { return std::abs(sample) <= 1.0f; };
        if (!std::ranges::all_of(left, isSound) || !std::ranges::all_of(right, isSound))
            allSamplesAreSound = false;
        ++blocks;
    }

    void automate(std::mt19937& random)
    {
        for (const auto& parameter : parameterTable()) {
            instrument.setValue(parameter.address, static_cast<double>(anyValueOf(parameter, random)));
            std::ignore = instrument.value(parameter.address);
        }
    }

    void saveAndRestore(std::mt19937& random)
    {
        if (instrument.restoreState(instrument.saveState()))
            allStatesAreTaken = false;
        instrument.setEditorSize({static_cast<int>(random() % 2000), static_cast<int>(random() % 2000)});
        std::ignore = instrument.editorSize();
        ++states;
    }

    /// As an editor's picture reads what is shown.
    void look(std::mt19937&)
    {
        const auto& kernel = *instrument.audioUnit()->dspKernel;
        auto sum = kernel.clockPhaseBuf.load();
        for (std::size_t ring = 0; ring < ringCount; ++ring)
            sum += kernel.activityPhases[ring].load() + kernel.lfoOffsets[ring].load();
        for (const auto& time : kernel.spotFireTimes)
            std::ignore = time.load();
        std::ignore = instrument.hostHasTransport();
        std::ignore = instrument.transportNotice();
        looks += std::isfinite(sum) ? 1 : 0;
    }

    /// The main thread: controls, presets, and following what the host has set.
    void edit(std::mt19937& random)
    {
        const auto tree = instrument.audioUnit()->parameterTree();
        const auto heard = tree->tokenByAddingParameterObserver([](AUParameterAddress, AUValue) {});
        for (const auto& parameter : parameterTable())
            tree->parameterWithAddress(parameter.address)->setValue(anyValueOf(parameter, random), heard);
        tree->removeParameterObserver(heard);
        instrument.audioUnit()->dspKernel->internalPlaying = random() % 10 != 0;
        instrument.choosePreset(random() % presetCount);
        std::ignore = instrument.presetNumber();
        instrument.followValues();
    }

    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
};

TEST(HostedInstrumentUnderStress, SoundsAndRemembersWhileAllThreadsWriteReadSaveAndLook)
{
    Stress stress;
    stress.run();
    EXPECT_TRUE(stress.allSamplesAreSound);
    EXPECT_TRUE(stress.allStatesAreTaken);
    EXPECT_GT(stress.blocks, 100);
    EXPECT_GT(stress.states, 10);
    EXPECT_GT(stress.looks, 100);
    EXPECT_GT(stress.host.edits, 100);
    for (const auto& parameter : parameterTable()) {
        const auto value = stress.instrument.value(parameter.address);
        EXPECT_GE(value, parameter.minValue) << parameter.identifier;
        EXPECT_LE(value, parameter.maxValue) << parameter.identifier;
    }
}

} // namespace
} // namespace velotrine
