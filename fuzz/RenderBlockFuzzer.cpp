// What a host hands over for a render cycle: how many frames, which events, and what it says of its session.

#include "audiounit/VelotrineAudioUnit.h"
#include "audiounit/VelotrineComponent.h"
#include "fuzz/Demand.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

namespace velotrine {
namespace {

constexpr AUAudioFrameCount maxFrames = 256;
constexpr std::size_t maxEvents = 50;

/// What a host may answer: a value up to a bound, or what is no answer. What makes no sense beyond that is a
/// mistake of the unit's host, which ends the program; HostedInstrument takes it from music hosts, and has a
/// fuzzer of its own.
double answer(FuzzedDataProvider& input, double min, double max)
{
    constexpr std::array none{0.0, -1.0, -std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()};
    return input.ConsumeBool() ? input.ConsumeFloatingPointInRange(min, max) : input.PickValueInArray(none);
}

/// What the host answers during the cycles of one input.
struct Context
{
    bool knowsMusic = false;
    bool knowsTransport = false;
    double tempo = 0.0;
    double numerator = 0.0;
    std::int64_t denominator = 0;
    AUHostTransportStateFlags flags = 0;
};

void readContext(FuzzedDataProvider& input, Context& context)
{
    context.knowsMusic = input.ConsumeBool();
    context.knowsTransport = input.ConsumeBool();
    context.tempo = answer(input, 1.0, 10000.0);
    context.numerator = answer(input, 1.0, 256.0);
    context.denominator = input.ConsumeIntegralInRange<std::int64_t>(-1, 1000);
    context.flags = input.ConsumeIntegral<AUHostTransportStateFlags>();
}

void connect(VelotrineAudioUnit& unit, const Context& context)
{
    unit.setMusicalContextBlock(
        [&context](double* tempo, double* numerator, std::int64_t* denominator, auto...) {
            *tempo = context.tempo;
            *numerator = context.numerator;
            *denominator = context.denominator;
            return context.knowsMusic;
        });
    unit.setTransportStateBlock([&context](AUHostTransportStateFlags* flags, auto...) {
        *flags = context.flags;
        return context.knowsTransport;
    });
}

std::vector<AURenderEvent> readEvents(FuzzedDataProvider& input)
{
    std::vector<AURenderEvent> events(input.ConsumeIntegralInRange<std::size_t>(0, maxEvents));
    for (std::size_t i = 0; i < events.size(); ++i) {
        auto& event = events[i];
        event.next = i + 1 < events.size() ? &events[i + 1] : nullptr;
        event.eventSampleTime = input.ConsumeIntegral<AUEventSampleTime>();
        event.eventType = static_cast<AURenderEventType>(input.ConsumeIntegral<std::uint8_t>());
        event.parameterAddress = input.ConsumeBool() ? input.ConsumeIntegralInRange<AUParameterAddress>(0, 40)
                                                     : input.ConsumeIntegral<AUParameterAddress>();
        event.value = input.ConsumeBool() ? input.ConsumeFloatingPointInRange(-2.0f, 310.0f)
                                          : input.ConsumeFloatingPointInRange(-1.0e6f, 1.0e6f);
    }
    return events;
}

void renderCycle(FuzzedDataProvider& input, const AURenderBlock& block)
{
    constexpr float untouched = 7.0f;
    const auto frames = input.ConsumeIntegralInRange<AUAudioFrameCount>(0, maxFrames + 1);
    const auto channelCount = input.ConsumeIntegralInRange<std::size_t>(0, 3);
    const auto events = readEvents(input);
    // As long as the host says, to the sample, so that the sanitizer sees the next one.
    std::vector<std::vector<float>> channels(channelCount, std::vector<float>(frames, untouched));
    std::vector<AudioBuffer> buffers;
    buffers.reserve(channelCount);
    for (auto& channel : channels)
        buffers.push_back({1, static_cast<std::uint32_t>(frames * sizeof(float)), channel.data()});
    AudioBufferList output{buffers};
    // No memory for no frames is a mistake of the program's own.
    if (frames == 0)
        output.mBuffers = {};

    const auto status =
        block(nullptr, nullptr, frames, 0, &output, events.empty() ? nullptr : events.data(), nullptr);
    const auto expected = frames > maxFrames ? kAudioUnitErr_TooManyFramesToProcess : noErr;
    demand(status == expected, "a cycle is refused for being too long, and for nothing else");
    for (const auto& channel : channels)
        for (const auto sample : channel)
            demand(std::abs(sample) <= 1.0f || sample == untouched, "every sample is within [-1, 1]");
    if (status == noErr && channelCount > 0)
        demand(std::ranges::none_of(channels[0], [](float sample) { return sample == untouched; }),
               "every frame is written");
}

void play(FuzzedDataProvider& input)
{
    Context context;
    VelotrineAudioUnit unit(velotrineComponentDescription(), AudioComponentInstantiationOptions::none);
    connect(unit, context);
    (*unit.outputBusses())[0].setFormat({input.ConsumeFloatingPointInRange(8000.0, 768000.0), 2});
    unit.setMaximumFramesToRender(maxFrames);
    unit.allocateRenderResources();
    unit.dspKernel->internalPlaying = input.ConsumeBool();
    const auto block = unit.renderBlock();
    for (int cycle = 0; cycle < 20 && input.remaining_bytes() > 0; ++cycle) {
        readContext(input, context);
        renderCycle(input, block);
    }
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    velotrine::play(input);
    return 0;
}
