#include "audiounit/CycleRenderer.h"
#include "audiounit/StateText.h"
#include "tests/support/TestInstrument.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

// What these check beyond the values, a thread sanitizer's build sees: that no two threads meet unguarded.

namespace velotrine {
namespace {

constexpr int framesPerPull = 64;

/// Renders `pulls` buffers of a small device. Returns whether all of it was fit to be heard.
bool rendersWell(const AURenderBlock& block, int pulls)
{
    CycleRenderer renderer;
    renderer.setup(block);
    std::vector<float> left(framesPerPull);
    std::vector<float> right(framesPerPull);
    bool well = true;
    for (int pull = 0; pull < pulls; ++pull) {
        well = renderer.render({left.data(), right.data()}, framesPerPull) == noErr && well;
        well = well && std::ranges::all_of(left, [](float sample) { return std::abs(sample) <= 1.0f; });
    }
    return well;
}

/// As the rings' picture reads them.
bool displayIsFinite(const VelotrineDSPKernel& kernel)
{
    bool finite = std::isfinite(kernel.clockPhaseBuf.load());
    for (std::size_t ring = 0; ring < ringCount; ++ring)
        finite = finite && std::isfinite(kernel.activityPhases[ring].load()) &&
                 std::isfinite(kernel.lfoOffsets[ring].load());
    std::uint64_t latest = 0;
    for (const auto& time : kernel.spotFireTimes)
        latest = std::max(latest, time.load());
    return finite && latest < UINT64_MAX;
}

void installHost(VelotrineAudioUnit& unit)
{
    unit.setMusicalContextBlock([](double* tempo, double* numerator, std::int64_t* denominator, auto...) {
        *tempo = 240.0;
        *numerator = 3.0;
        *denominator = 4;
        return true;
    });
    unit.setTransportStateBlock([](AUHostTransportStateFlags* flags, auto...) {
        *flags = AUHostTransportStateMoving;
        return true;
    });
}

TEST(Threads, RenderWhileOthersWriteParametersChoosePresetsSetStatesAndLook)
{
    constexpr int pulls = 3000;
    constexpr int changes = 400;
    const auto unit = makePlayingInstrument();
    installHost(*unit);
    unit->allocateRenderResources();
    const auto tree = unit->parameterTree();
    const auto state = unit->fullState();

    std::atomic<bool> renderedWell{false};
    std::thread rendering([&] { renderedWell = rendersWell(unit->renderBlock(), pulls); });

    std::atomic<int> heard{0};
    std::thread automating([&] {
        for (int i = 0; i < changes; ++i) {
            const auto token =
                tree->tokenByAddingParameterObserver([&heard](AUParameterAddress, AUValue) { ++heard; });
            for (const auto& parameter : tree->allParameters()) {
                const float range = parameter->maxValue() - parameter->minValue();
                parameter->setValue(parameter->minValue() + range * static_cast<float>(i % 11) / 10.0f,
                                    token);
            }
            tree->removeParameterObserver(token);
        }
    });

    bool looksFinite = true;
    for (int i = 0; i < changes; ++i) {
        selectPreset(*unit, static_cast<std::size_t>(i) % unit->factoryPresets().size());
        unit->dspKernel->internalPlaying = i % 7 != 0;
        unit->setFullState(i % 2 == 0 ? state : *stateFromText(textFromState(unit->fullState())).state);
        looksFinite = displayIsFinite(*unit->dspKernel) && looksFinite;
    }

    automating.join();
    rendering.join();
    EXPECT_TRUE(renderedWell);
    EXPECT_TRUE(looksFinite);
    for (const auto& parameter : tree->allParameters()) {
        parameter->setValue(parameter->maxValue());
        EXPECT_EQ(parameter->value(), parameter->maxValue()) << parameter->identifier();
    }
}

TEST(Threads, AUnitMayGoWhileOthersStillRenderItAndHoldItsTree)
{
    for (int round = 0; round < 20; ++round) {
        auto unit = makePlayingInstrument();
        const auto tree = unit->parameterTree();
        std::atomic<bool> renderedWell{false};
        std::thread rendering(
            [&renderedWell, block = unit->renderBlock()] { renderedWell = rendersWell(block, 50); });
        std::thread automating([&tree] {
            for (int i = 0; i < 20; ++i)
                for (const auto& parameter : tree->allParameters())
                    parameter->setValue(std::max(parameter->value(), parameter->minValue()));
        });
        unit.reset();
        automating.join();
        rendering.join();
        EXPECT_TRUE(renderedWell);
        EXPECT_EQ(tree->parameterWithAddress(6)->value(), 0.0f);
    }
}

TEST(Threads, MayMakeUnitsAtTheSameTime)
{
    registerVelotrineComponent();
    std::atomic<int> made{0};
    const auto makeSome = [&made] {
        for (int i = 0; i < 20; ++i)
            AUAudioUnit::instantiate(velotrineComponentDescription(),
                                     AudioComponentInstantiationOptions::none,
                                     [&made](const std::shared_ptr<AUAudioUnit>& unit, const auto&) {
                                         if (unit)
                                             ++made;
                                     });
    };
    std::thread other(makeSome);
    makeSome();
    other.join();
    EXPECT_EQ(made, 40);
}

} // namespace
} // namespace velotrine
