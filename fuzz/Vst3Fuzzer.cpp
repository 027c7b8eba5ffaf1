// The VST3 file as a host loads it, JUCE's wrapper included: blocks of any form, values, texts, and states of
// any kind.

#include "fuzz/Demand.h"
#include "tests/plugin/Vst3Host.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

namespace velotrine {
namespace {

constexpr int maxFrames = 256;

/// One for all inputs: to make one takes longer than to play it.
Vst3Host& pluginHost()
{
    static Vst3Host host;
    return host;
}

double anyDouble(FuzzedDataProvider& input)
{
    return std::bit_cast<double>(input.ConsumeIntegral<std::uint64_t>());
}

std::vector<Vst3Automation> readAutomation(FuzzedDataProvider& input,
                                           const std::vector<Vst3Parameter>& parameters)
{
    std::vector<Vst3Automation> automation(input.ConsumeIntegralInRange<std::size_t>(0, 8));
    for (auto& change : automation) {
        change.id = input.ConsumeBool()
                        ? parameters[input.ConsumeIntegralInRange<std::size_t>(0, parameters.size() - 1)].id
                        : input.ConsumeIntegral<std::uint32_t>();
        change.value = input.ConsumeBool() ? input.ConsumeFloatingPointInRange(-0.1, 1.1) : anyDouble(input);
    }
    return automation;
}

void process(FuzzedDataProvider& input, Vst3Host& host, const std::vector<Vst3Parameter>& parameters)
{
    Vst3Block block;
    block.frames = input.ConsumeIntegralInRange(-1, maxFrames);
    const auto count = input.ConsumeIntegralInRange<std::size_t>(0, 3);
    // Room for samples of either size.
    std::vector<std::vector<float>> samples(count, std::vector<float>(std::size_t{2} * maxFrames));
    for (auto& channel : samples)
        block.channels.push_back(input.ConsumeIntegral<std::uint8_t>() != 0 ? channel.data() : nullptr);
    block.channelCount = static_cast<int>(count);
    block.busCount = input.ConsumeIntegralInRange(0, 2);
    block.hasBusses = input.ConsumeBool();
    block.hasChannels = input.ConsumeBool();
    block.isDouble = input.ConsumeBool();
    const HostTransport transport{.tempo = anyDouble(input),
                                  .tempoPerFrame = 0.0,
                                  .beatsPerBar = input.ConsumeFloatingPointInRange(-5.0, 300.0),
                                  .beatUnit = input.ConsumeFloatingPointInRange(-5.0, 300.0),
                                  .isPlaying = input.ConsumeBool()};
    host.process(block, transport, readAutomation(input, parameters));
    for (const auto& channel : samples)
        for (const auto sample : channel)
            demand(std::abs(sample) <= 1.0f, "every sample is within [-1, 1]");
}

void play(FuzzedDataProvider& input)
{
    auto& host = pluginHost();
    static const auto parameters = host.parameters();

    if (input.ConsumeBool())
        host.start(48000.0, maxFrames);
    else
        host.start(anyDouble(input), maxFrames);
    for (int call = 0; call < 20 && input.remaining_bytes() > 0; ++call) {
        const auto id = parameters[input.ConsumeIntegralInRange<std::size_t>(0, parameters.size() - 1)].id;
        switch (input.ConsumeIntegralInRange(0, 5)) {
        case 0:
            host.load(input.ConsumeRandomLengthString(2000));
            break;
        case 1:
            if (const auto value = host.valueOf(id, input.ConsumeRandomLengthString(40)))
                demand(*value >= 0.0 && *value <= 1.0, "a typed value is within its range");
            break;
        case 2:
            host.setValue(id, anyDouble(input));
            break;
        default:
            process(input, host, parameters);
        }
    }
    host.stop();
    for (const auto& parameter : parameters) {
        const auto value = host.value(parameter.id);
        demand(value >= 0.0 && value <= 1.0, "every value stays within its range");
    }
    demand(host.load(host.save()), "what is saved can be loaded");
}

} // namespace
} // namespace velotrine

/// Loads the file before the fuzzer counts what there is to cover.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    std::ignore = velotrine::pluginHost();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    velotrine::play(input);
    return 0;
}
