#include "plugin/lv2/Lv2Names.h"
#include "tests/plugin/ClapHost.h"
#include "tests/plugin/Lv2Host.h"
#include "tests/plugin/Sound.h"
#include "tests/plugin/VirtualDisplay.h"
#include "tests/plugin/Vst3Host.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <stdexcept>

namespace velotrine {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double sampleRate = 48000.0;
constexpr int blockFrames = 512;
constexpr int width = 480;
constexpr int height = 360;
constexpr HostTransport stopped{.tempo = 120.0, .beatsPerBar = 4, .beatUnit = 4, .isPlaying = false};

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void succeed(bool hasSucceeded, const char* what)
{
    if (!hasSucceeded)
        throw std::runtime_error(std::string("the plug-in cannot be ") + what);
}

/// One instance in a host, the same for all formats.
struct Clap
{
    Clap()
    {
        output.data32 = channels.data();
        output.channel_count = 2;
        transport.flags = CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_TIME_SIGNATURE;
        transport.tempo = stopped.tempo;
        transport.tsig_num = transport.tsig_denom = 4;
        noEvents.size = [](const clap_input_events_t*) { return 0U; };
        noEdits.try_push = [](const clap_output_events_t*, const clap_event_header_t*) { return true; };
        call.frames_count = blockFrames;
        call.transport = &transport;
        call.audio_outputs = &output;
        call.audio_outputs_count = 1;
        call.in_events = &noEvents;
        call.out_events = &noEdits;
    }

    void start() { succeed(host.start(sampleRate, blockFrames), "started"); }

    void process(Sound& sound)
    {
        channels = {sound.left.data(), sound.right.data()};
        host.plugin().process(&host.plugin(), &call);
    }

    void open(XWindow parent) const
    {
        const auto& gui = host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
        clap_window_t window{};
        window.api = CLAP_WINDOW_API_X11;
        window.x11 = parent;
        succeed(gui.create(&host.plugin(), CLAP_WINDOW_API_X11, false), "shown");
        succeed(gui.set_parent(&host.plugin(), &window) && gui.show(&host.plugin()), "shown");
    }

    void close() const { host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI).destroy(&host.plugin()); }

    void idle() { host.runLoop(std::chrono::milliseconds(1)); }

    static const ClapLibrary& library()
    {
        static const ClapLibrary loaded;
        return loaded;
    }

    ClapHost host{library()};

    // The call as a host has it ready.
    std::array<float*, 2> channels{};
    clap_audio_buffer_t output{};
    clap_event_transport_t transport{};
    clap_input_events_t noEvents{};
    clap_output_events_t noEdits{};
    clap_process_t call{};
};

struct Lv2
{
    void start()
    {
        host.start();
        Sound sound(blockFrames);
        host.run(sound.left.data(), sound.right.data(), blockFrames, {positionOf(0, stopped)});
    }

    // Without word of the transport, as hosts do while nothing changes; the ports stay connected.
    void process(Sound& sound)
    {
        if (connected != &sound) {
            host.connect(lv2Port::left, sound.left.data());
            host.connect(lv2Port::right, sound.right.data());
            connected = &sound;
        }
        host.run(blockFrames);
    }

    void open(XWindow parent) { succeed(host.openUi(parent), "shown"); }

    void close() { host.closeUi(); }

    void idle() { host.idle(std::chrono::milliseconds(1)); }

    static const Lv2Library& library()
    {
        static const Lv2Library loaded;
        return loaded;
    }

    Lv2Host host{library(), sampleRate};
    const Sound* connected = nullptr;
};

struct Vst3
{
    void start() { succeed(host.start(sampleRate, blockFrames), "started"); }

    void process(Sound& sound) { host.process(sound.left.data(), sound.right.data(), blockFrames, stopped); }

    void open(XWindow parent) { succeed(host.open(parent), "shown"); }

    void close() { host.close(); }

    void idle() { host.runLoop(std::chrono::milliseconds(1)); }

    Vst3Host host;
};

void clearing(benchmark::State& state)
{
    Sound sound(blockFrames);
    for ([[maybe_unused]] auto block : state) {
        std::ranges::fill(sound.left, 0.0f);
        std::ranges::fill(sound.right, 0.0f);
        benchmark::ClobberMemory();
    }
}

/// The host has stopped and the last note has ended.
template <typename Plugin>
void idling(benchmark::State& state)
{
    Plugin plugin;
    plugin.start();
    Sound sound(blockFrames);
    for (int block = 0; block < 100; ++block)
        plugin.process(sound);
    for ([[maybe_unused]] auto block : state) {
        plugin.process(sound);
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

/// From the host's wish to text and rings on the screen, when one editor has been open before.
template <typename Plugin>
void openingTheEditor(benchmark::State& state)
{
    constexpr int colourCountOfAnEditor = 30; ///< an empty window has one
    const auto& display = VirtualDisplay::shared();
    const auto parent = display.makeWindow(width, height);
    Plugin plugin;
    const auto openedWithin = [&] {
        const auto start = Clock::now();
        plugin.open(parent);
        while (display.coloursIn(parent) < colourCountOfAnEditor)
            plugin.idle();
        const auto seconds = secondsSince(start);
        plugin.close();
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
    velotrine::inFormat<velotrine::Clap>("CLAP");
    velotrine::inFormat<velotrine::Lv2>("LV2");
    velotrine::inFormat<velotrine::Vst3>("VST3");
    benchmark::RunSpecifiedBenchmarks();
}
