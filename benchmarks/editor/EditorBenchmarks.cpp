#include "audiounit/VelotrineComponent.h"
#include "editor/VelotrineAUViewControllerMac.h"
#include "engine/HostClock.h"

#include <benchmark/benchmark.h>

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
    const auto pixelsPerPoint = static_cast<float>(state.range(0));
    const auto size = component.getLocalBounds() * static_cast<int>(state.range(0));
    juce::Image screen(juce::Image::RGB, size.getWidth(), size.getHeight(), true);
    for ([[maybe_unused]] auto frame : state) {
        editor.fireAllSpots();
        juce::Graphics graphics(screen);
        graphics.addTransform(juce::AffineTransform::scale(pixelsPerPoint));
        component.paintEntireComponent(graphics, true);
    }
    state.SetLabel(std::to_string(screen.getWidth()) + " x " + std::to_string(screen.getHeight()) +
                   " pixels");
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
