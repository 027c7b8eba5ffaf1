#include "audiounit/VelotrineComponent.h"
#include "editor/VelotrineAUViewControllerMac.h"
#include "engine/HostClock.h"
#include "tests/support/WindowInMemory.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <thread>
#include <vector>

namespace velotrine {
namespace {

/// The editor at its busiest: five rings of sixteen spots, all of which have fired just now.
class BusyEditor
{
public:
    BusyEditor()
    {
        controller.audioUnit = std::make_shared<VelotrineAudioUnit>(velotrineComponentDescription(),
                                                                    AudioComponentInstantiationOptions{});
        const auto tree = controller.audioUnit->parameterTree();
        for (int ring = 0; ring < ringCount; ++ring)
            tree->parameterWithAddress(addressOf(RingParameter::spots, ring))->setValue(maxSpotsPerRing);
        controller.audioUnit->dspKernel->clockPhaseBuf = 0.3;
        controller.view().setSize(480, 360);
    }

    void fireAllSpots()
    {
        for (auto& time : controller.audioUnit->dspKernel->spotFireTimes)
            time = hostClockNow();
        controller.circlesView->refreshTick();
    }

    VelotrineAUViewControllerMac controller;
};

/// What a frame costs, at a number of pixels a point.
void paint(benchmark::State& state, BusyEditor& editor, juce::Component& component)
{
    WindowInMemory window(component, static_cast<float>(state.range(0)));
    for ([[maybe_unused]] auto frame : state) {
        editor.fireAllSpots();
        window.askForAll();
        window.paint();
    }
    state.SetLabel(std::to_string(window.image().getWidth()) + " x " +
                   std::to_string(window.image().getHeight()) + " pixels");
}

void wholeEditor(benchmark::State& state)
{
    BusyEditor editor;
    paint(state, editor, editor.controller.view());
}

void ringsAlone(benchmark::State& state)
{
    BusyEditor editor;
    paint(state, editor, *editor.controller.circlesView);
}

/// A bare window, which is what no editor can be cheaper than.
void backgroundAlone(benchmark::State& state)
{
    BusyEditor editor;
    FlippedView background;
    background.setBackground(juce::Colours::grey);
    background.setSize(480, 360);
    paint(state, editor, background);
}

/// One refresh of the playing rings without the screen, and how many pixels it paints. Flashes fade by the
/// clock, so refreshes are as far apart as on a screen.
void playingRings(benchmark::State& state, bool isBusy)
{
    constexpr int framesARefresh = 800; // 60 refreshes a second at 48 kHz
    VelotrineAUViewControllerMac controller;
    controller.audioUnit = std::make_shared<VelotrineAudioUnit>(velotrineComponentDescription(),
                                                                AudioComponentInstantiationOptions{});
    auto& unit = *controller.audioUnit;
    auto& kernel = *unit.dspKernel;
    unit.setCurrentPreset(unit.factoryPresets()[0]);
    if (isBusy)
        for (int ring = 0; ring < ringCount; ++ring) {
            kernel.setParameter(addressOf(RingParameter::spots, ring), maxSpotsPerRing);
            kernel.setParameter(addressOf(RingParameter::probability, ring), 1.0f);
        }
    kernel.setup(framesARefresh, 48000.0);
    kernel.sync = false;
    kernel.internalPlaying = true;

    controller.view().setSize(480, 360);
    auto& rings = *controller.circlesView;
    WindowInMemory window(rings, static_cast<float>(state.range(0)));
    window.paint();

    double pixels = 0.0;
    std::vector<float> left(framesARefresh);
    std::vector<float> right(framesARefresh);
    for ([[maybe_unused]] auto frame : state) {
        state.PauseTiming();
        std::this_thread::sleep_for(std::chrono::microseconds(16667));
        kernel.process(left.data(), right.data(), framesARefresh);
        state.ResumeTiming();
        rings.refreshTick();
        for (const auto& rectangle : window.asked())
            pixels += rectangle.getWidth() * rectangle.getHeight();
        window.paint();
    }
    pixels /= static_cast<double>(state.iterations());
    state.counters["pixels"] = pixels;
    state.counters["share of the square"] = pixels / (window.image().getWidth() * window.image().getHeight());
}

BENCHMARK_CAPTURE(playingRings, default, false)
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->Iterations(200)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(playingRings, busy, true)
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->Iterations(200)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(wholeEditor)->Arg(1)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(ringsAlone)->Arg(1)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);
BENCHMARK(backgroundAlone)->Arg(1)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace velotrine

int main(int argc, char** argv)
{
    const juce::ScopedJuceInitialiser_GUI juce;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
