// What the engine costs, at three levels: inner loops, voice pool, whole instrument; each on every
// instruction set that the machine can run, beside a plain scalar transcription of the same rules timed in
// the same run.
//
// Names: <what>/<instruction set>/<frames per call>. Times are per frame.

#include "benchmarks/engine/Workload.h"
#include "engine/ClockPhases.h"
#include "engine/SimdTarget.h"
#include "engine/SoftClip.h"
#include "engine/VelotrineDSPKernel.h"
#include "engine/VoiceBatch.h"
#include "tests/reference/ScalarTranscription.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <malloc.h>

namespace velotrine {
namespace {

constexpr int maxBlock = 512;

struct Output
{
    std::array<float, maxBlock> left{};
    std::array<float, maxBlock> right{};
};

void reportPerFrame(benchmark::State& state, int framesPerIteration)
{
    const auto frames = static_cast<double>(state.iterations()) * framesPerIteration;
    state.counters["s/frame"] =
        benchmark::Counter(frames, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

const auto& notesOf(const reference::ScalarTranscription& instrument)
{
    return instrument.firedNotes;
}

auto notesOf(const VelotrineDSPKernel& instrument)
{
    return instrument.noteEvents();
}

/// FNV-1a over the bits of what ten seconds of the workload sound like, and over its notes: a change that was
/// meant to be faster only must change neither (the sound's last bits differ between instruction sets, the
/// notes never).
template <typename Instrument>
std::string soundLabel()
{
    constexpr std::uint64_t offsetBasis = 0xcbf29ce484222325U;
    constexpr std::uint64_t prime = 0x100000001b3U;
    constexpr int blocks = 10 * 48000 / maxBlock;
    auto instrument = std::make_unique<Instrument>();
    startWorkload(*instrument, 1.0f, maxBlock);
    Output output;
    std::uint64_t sound = offsetBasis;
    std::uint64_t notes = offsetBasis;
    for (int block = 0; block < blocks; ++block) {
        instrument->process(output.left.data(), output.right.data(), maxBlock);
        for (const float sample : output.left)
            sound = (sound ^ std::bit_cast<std::uint32_t>(sample)) * prime;
        for (const auto& event : notesOf(*instrument))
            notes = (notes ^ static_cast<std::uint64_t>(event.note * 65536 + event.frame)) * prime;
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "sound %08x notes %08x", static_cast<unsigned>(sound >> 32),
                  static_cast<unsigned>(notes >> 32));
    return text.data();
}

template <typename Instrument>
void playWorkload(benchmark::State& state, float probability, int block)
{
    auto instrument = std::make_unique<Instrument>();
    startWorkload(*instrument, probability, maxBlock);
    Output output;
    constexpr int warmUpBlocks = 200; // until all voices sound
    for (int i = 0; i < warmUpBlocks; ++i)
        instrument->process(output.left.data(), output.right.data(), maxBlock);
    for (auto _ : state) {
        instrument->process(output.left.data(), output.right.data(), block);
        benchmark::DoNotOptimize(output);
    }
    reportPerFrame(state, block);
}

void stopped(benchmark::State& state)
{
    VelotrineDSPKernel kernel;
    setWorkload(kernel, 1.0f);
    kernel.setup(maxBlock, workloadSampleRate);
    Output output;
    for (auto _ : state) {
        kernel.process(output.left.data(), output.right.data(), maxBlock);
        benchmark::DoNotOptimize(output);
    }
    reportPerFrame(state, maxBlock);
}

void clearing(benchmark::State& state)
{
    Output output;
    for (auto _ : state) {
        std::fill(output.left.begin(), output.left.end(), 0.0f);
        std::fill(output.right.begin(), output.right.end(), 0.0f);
        benchmark::DoNotOptimize(output);
    }
    reportPerFrame(state, maxBlock);
}

void manyKernels(benchmark::State& state, int kernelCount)
{
    std::vector<std::unique_ptr<VelotrineDSPKernel>> kernels;
    Output output;
    for (int i = 0; i < kernelCount; ++i) {
        kernels.push_back(std::make_unique<VelotrineDSPKernel>());
        startWorkload(*kernels.back(), 1.0f, maxBlock);
        for (int block = 0; block < 100; ++block)
            kernels.back()->process(output.left.data(), output.right.data(), maxBlock);
    }
    for (auto _ : state) {
        for (auto& kernel : kernels)
            kernel->process(output.left.data(), output.right.data(), maxBlock);
        benchmark::DoNotOptimize(output);
    }
    reportPerFrame(state, maxBlock * kernelCount);
}

/// What a kernel ready to play takes from the heap, itself included.
void kernelMemory(benchmark::State& state)
{
    std::size_t bytes = 0;
    for (auto _ : state) {
        const auto before = mallinfo2().uordblks;
        const auto kernel = std::make_unique<VelotrineDSPKernel>();
        kernel->setup(maxBlock, workloadSampleRate);
        bytes = mallinfo2().uordblks - before;
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}

/// Sixteen voices of the workload, in the middle of their notes.
VoicePool soundingPool()
{
    VoicePool pool(workloadSampleRate);
    for (std::size_t i = 0; i < VoicePool::voiceCount; ++i)
        pool.allocate().start({.ring = 0,
                               .frequency = 110.0 * static_cast<double>(i + 1),
                               .modRatio = 1.0,
                               .modIndex = 0.5f,
                               .decaySeconds = 1.2f,
                               .gain = 0.49f,
                               .feedback = 0.375f});
    for (auto& voice : pool.voices) {
        voice.decayRate = 1.0f;
        voice.modDecayRate = 1.0f;
    }
    return pool;
}

void voicePool(benchmark::State& state, int block)
{
    auto pool = soundingPool();
    std::array<float, maxBlock> mix{};
    for (auto _ : state) {
        mix.fill(0.0f);
        pool.render(mix.data(), block);
        benchmark::DoNotOptimize(mix);
    }
    reportPerFrame(state, block);
}

void voiceBatch(benchmark::State& state, std::size_t voices)
{
    auto pool = soundingPool();
    std::vector<FMVoice*> batch;
    for (std::size_t i = 0; i < voices; ++i)
        batch.push_back(&pool.voices[i]);
    std::array<float, maxBlock> mix{};
    for (auto _ : state) {
        renderVoices(batch, mix.data(), maxBlock);
        benchmark::DoNotOptimize(mix);
    }
    reportPerFrame(state, maxBlock);
}

void clockPhases(benchmark::State& state)
{
    ClockPhases phases;
    phases.risingSteps.fill(2.6e-5);
    phases.turningSteps.fill(-1.6e-6);
    for (auto _ : state) {
        phases.advance(maxBlock);
        benchmark::DoNotOptimize(phases);
    }
    reportPerFrame(state, maxBlock);
}

void clip(benchmark::State& state)
{
    std::array<float, maxBlock> mix{};
    for (std::size_t i = 0; i < mix.size(); ++i)
        mix[i] = static_cast<float>(i % 64) / 16.0f - 2.0f;
    Output output;
    for (auto _ : state) {
        softClip(mix.data(), 0.8f, output.left.data(), output.right.data(), maxBlock);
        benchmark::DoNotOptimize(output);
    }
    reportPerFrame(state, maxBlock);
}

/// Registers a benchmark that runs on one instruction set.
template <typename Body>
void add(const SimdTarget& target, const std::string& name, Body body)
{
    benchmark::RegisterBenchmark(name.c_str(), [target, body](benchmark::State& state) {
        forceSimdTarget(target);
        body(state);
    });
}

void addTarget(const SimdTarget& target)
{
    const auto named = [&](const std::string& what, int frames) {
        return what + "/" + target.name + "/" + std::to_string(frames);
    };
    for (const std::size_t voices : {1U, 8U, 16U})
        add(target, "inner/voiceBatch" + std::to_string(voices) + "/" + target.name + "/512",
            [voices](benchmark::State& state) { voiceBatch(state, voices); });
    add(target, named("inner/clockPhases", maxBlock), clockPhases);
    add(target, named("inner/softClip", maxBlock), clip);
    for (const int block : {32, 64, 512})
        add(target, named("pool", block), [block](benchmark::State& state) { voicePool(state, block); });
    for (const int block : {32, 64, 512}) {
        add(target, named("playing", block), [block](benchmark::State& state) {
            playWorkload<VelotrineDSPKernel>(state, 1.0f, block);
            state.SetLabel(soundLabel<VelotrineDSPKernel>());
        });
        add(target, named("silent", block),
            [block](benchmark::State& state) { playWorkload<VelotrineDSPKernel>(state, 0.0f, block); });
    }
    for (const int kernels : {1, 64})
        add(target, named("kernels" + std::to_string(kernels), maxBlock),
            [kernels](benchmark::State& state) { manyKernels(state, kernels); });
}

void addAll()
{
    benchmark::RegisterBenchmark("plain/playing", [](benchmark::State& state) {
        playWorkload<reference::ScalarTranscription>(state, 1.0f, maxBlock);
        state.SetLabel(soundLabel<reference::ScalarTranscription>());
    });
    benchmark::RegisterBenchmark("plain/silent", [](benchmark::State& state) {
        playWorkload<reference::ScalarTranscription>(state, 0.0f, maxBlock);
    });
    benchmark::RegisterBenchmark("clearing", clearing);
    benchmark::RegisterBenchmark("stopped", stopped);
    benchmark::RegisterBenchmark("memory", kernelMemory);
    for (const auto& target : availableSimdTargets())
        addTarget(target);
}

} // namespace
} // namespace velotrine

int main(int argumentCount, char** arguments)
{
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments))
        return 1;
    velotrine::addAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
