#include "audiounit/NoteStream.h"
#include "benchmarks/engine/Workload.h"
#include "plugin/HostedInstrument.h"
#include "tests/plugin/ClapUnderTest.h"
#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/Lv2UnderTest.h"
#include "tests/plugin/Vst3UnderTest.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/Sound.h"
#include "tests/support/VirtualDisplay.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace velotrine {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double sampleRate = 48000.0;
constexpr int blockFrames = 512;
constexpr HostTransport stopped{.tempo = 120.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = false};

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void startStopped(PluginUnderTest& plugin)
{
    if (!plugin.start(sampleRate, blockFrames))
        throw std::runtime_error("the plug-in cannot be started");
    plugin.setTransport(stopped);
}

void process(PluginUnderTest& plugin, Sound& sound)
{
    plugin.render(sound.left.data(), sound.right.data(), blockFrames);
}

void clearing(benchmark::State& state)
{
    Sound sound(blockFrames);
    for ([[maybe_unused]] auto block : state) {
        std::ranges::fill(sound.left, 0.0f);
        std::ranges::fill(sound.right, 0.0f);
        benchmark::ClobberMemory();
    }
}

/// Takes all notes, as an event list with room.
class CountingReceiver final : public NoteReceiver
{
public:
    [[nodiscard]] bool take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING override
    {
        benchmark::DoNotOptimize(message);
        return true;
    }
};

/// The worst workload, in a host.
void playing(benchmark::State& state)
{
    RecordingHost host;
    HostedInstrument instrument(host);
    auto& kernel = *instrument.audioUnit()->dspKernel;
    setWorkload(kernel, 1.0f);
    if (!instrument.prepare(sampleRate))
        throw std::runtime_error("the instrument cannot be prepared");
    kernel.internalPlaying = true;
    CountingReceiver receiver;
    Sound sound(blockFrames);
    for ([[maybe_unused]] auto block : state)
        instrument.render({sound.left.data(), sound.right.data()}, blockFrames, {&receiver});
}

/// What playing it costs for its notes: the same cycles, of which there is nothing but the events.
void notesOfPlaying(benchmark::State& state)
{
    constexpr int cycleFrames = CycleRenderer::defaultCycleFrames;
    constexpr int cyclesOfABlock = blockFrames / cycleFrames;
    constexpr std::size_t cycleCount = 20000; // 13 seconds
    VelotrineDSPKernel kernel;
    startWorkload(kernel, 1.0f, cycleFrames);
    std::vector<std::vector<NoteEvent>> cycles;
    std::array<float, cycleFrames> left{};
    std::array<float, cycleFrames> right{};
    while (cycles.size() < cycleCount) {
        kernel.process(left.data(), right.data(), cycleFrames);
        cycles.emplace_back(kernel.noteEvents().begin(), kernel.noteEvents().end());
    }
    NoteStream stream;
    stream.setup(sampleRate);
    CountingReceiver receiver;
    std::size_t next = 0;
    for ([[maybe_unused]] auto block : state)
        for (int i = 0; i < cyclesOfABlock; ++i, next = (next + 1) % cycleCount)
            stream.play(cycles[next], 0, cycleFrames, NoteOutput{&receiver}.from(i * cycleFrames));
}

/// The host has stopped and the last note has ended.
template <typename Plugin>
void idling(benchmark::State& state)
{
    Plugin plugin;
    startStopped(plugin);
    Sound sound(blockFrames);
    for (int block = 0; block < 100; ++block)
        process(plugin, sound);
    for ([[maybe_unused]] auto block : state) {
        process(plugin, sound);
        benchmark::ClobberMemory();
    }
}

template <typename Plugin>
void creating(benchmark::State& state)
{
    // What comes with a library's first instance stays while one lives.
    const Plugin first;
    for ([[maybe_unused]] auto instance : state) {
        const auto start = Clock::now();
        const Plugin plugin;
        state.SetIterationTime(secondsSince(start));
    }
}

/// From the host's call to text and rings on the screen, when one editor has been open before.
template <typename Plugin>
void openingTheEditor(benchmark::State& state)
{
    const auto& display = VirtualDisplay::shared();
    const auto parent = display.makeWindow(editorWidth, editorHeight);
    Plugin plugin;
    const auto openedWithin = [&] {
        const auto start = Clock::now();
        if (!plugin.openEditor(parent))
            throw std::runtime_error("the editor cannot be shown");
        while (display.coloursIn(parent) <= manyColours)
            plugin.runLoop(std::chrono::milliseconds(1));
        const auto seconds = secondsSince(start);
        plugin.closeEditor();
        return seconds;
    };
    openedWithin();
    for ([[maybe_unused]] auto opening : state)
        state.SetIterationTime(openedWithin());
    display.destroyWindow(parent);
}

template <typename Plugin>
void inFormat(const std::string& name)
{
    benchmark::RegisterBenchmark(("creating/" + name).c_str(), creating<Plugin>)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(10);
    benchmark::RegisterBenchmark(("idling/" + name).c_str(), idling<Plugin>);
    benchmark::RegisterBenchmark(("openingTheEditor/" + name).c_str(), openingTheEditor<Plugin>)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(5);
}

} // namespace
} // namespace velotrine

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    // VST3's wrapper looks for a display as it is loaded.
    std::ignore = velotrine::VirtualDisplay::shared();
    benchmark::RegisterBenchmark("clearing", velotrine::clearing);
    benchmark::RegisterBenchmark("playing", velotrine::playing);
    benchmark::RegisterBenchmark("notesOfPlaying", velotrine::notesOfPlaying);
    velotrine::inFormat<velotrine::ClapUnderTest>("CLAP");
    velotrine::inFormat<velotrine::Lv2UnderTest>("LV2");
    velotrine::inFormat<velotrine::Vst3UnderTest>("VST3");
    benchmark::RunSpecifiedBenchmarks();
}
