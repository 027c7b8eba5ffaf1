// The CLAP file as a host loads it: lists of events of any kind and size, texts, and states in pieces.

#include "audiounit/Parameters.h"
#include "fuzz/Demand.h"
#include "tests/plugin/ClapHost.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

namespace velotrine {
namespace {

constexpr std::uint32_t maxFrames = 256;
constexpr std::size_t maxEvents = 30;

const ClapLibrary& library()
{
    static const ClapLibrary loaded;
    return loaded;
}

/// An event in memory of exactly the size that it says, so that the sanitizer sees the next byte.
using EventMemory = std::unique_ptr<std::byte[]>;
using Events = std::vector<EventMemory>;

EventMemory readEvent(FuzzedDataProvider& input)
{
    const auto isWhole = input.ConsumeBool();
    const auto size =
        isWhole ? sizeof(clap_event_transport_t)
                : input.ConsumeIntegralInRange(sizeof(clap_event_header_t), sizeof(clap_event_transport_t));
    const auto body = input.ConsumeBytes<std::uint8_t>(size - sizeof(clap_event_header_t));
    clap_event_header_t header{};
    header.size = static_cast<std::uint32_t>(size);
    header.time = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::uint32_t>(0, maxFrames)
                                      : input.ConsumeIntegral<std::uint32_t>();
    header.space_id = input.ConsumeIntegralInRange<std::uint16_t>(0, 1);
    header.type = input.ConsumeIntegralInRange<std::uint16_t>(0, 13);
    EventMemory event(new std::byte[size]());
    std::memcpy(event.get(), &header, sizeof header);
    std::copy_n(reinterpret_cast<const std::byte*>(body.data()), body.size(), event.get() + sizeof header);
    return event;
}

Events readEvents(FuzzedDataProvider& input)
{
    Events events(input.ConsumeIntegralInRange<std::size_t>(0, maxEvents));
    for (auto& event : events)
        if (input.ConsumeIntegral<std::uint8_t>() != 0) // else a host that has none at an index
            event = readEvent(input);
    return events;
}

clap_input_events_t listOf(Events& events)
{
    return {.ctx = &events,
            .size =
                [](const clap_input_events_t* list) {
                    return static_cast<std::uint32_t>(static_cast<const Events*>(list->ctx)->size());
                },
            .get =
                [](const clap_input_events_t* list, std::uint32_t index) {
                    const auto& event = (*static_cast<const Events*>(list->ctx))[index];
                    return reinterpret_cast<const clap_event_header_t*>(event.get());
                }};
}

constexpr clap_output_events_t refusesEverything{
    .ctx = nullptr,
    .try_push = [](const clap_output_events_t*, const clap_event_header_t*) { return false; }};

constexpr clap_output_events_t takesEverything{
    .ctx = nullptr, .try_push = [](const clap_output_events_t*, const clap_event_header_t* event) {
        demand(event->size >= sizeof *event && event->time < maxFrames, "an event lies in its block");
        return true;
    }};

void process(FuzzedDataProvider& input, const clap_plugin_t& plugin)
{
    const auto frames = input.ConsumeIntegralInRange<std::uint32_t>(0, maxFrames);
    const auto channelCount = input.ConsumeIntegralInRange<std::uint32_t>(0, 3);
    std::vector<std::vector<float>> samples(channelCount, std::vector<float>(frames));
    std::vector<float*> channels;
    channels.reserve(channelCount);
    for (auto& channel : samples)
        channels.push_back(channel.data());
    clap_audio_buffer_t output{};
    output.data32 = channels.data();
    output.channel_count = channelCount;

    auto events = readEvents(input);
    const auto in = listOf(events);
    const auto transport = readEvent(input);
    clap_process_t block{};
    block.steady_time = -1;
    block.frames_count = frames;
    block.transport =
        reinterpret_cast<const clap_event_header_t*>(transport.get())->size == sizeof(clap_event_transport_t)
            ? reinterpret_cast<const clap_event_transport_t*>(transport.get())
            : nullptr;
    block.audio_outputs = input.ConsumeBool() ? &output : nullptr;
    block.audio_outputs_count = input.ConsumeIntegralInRange<std::uint32_t>(0, 1);
    block.in_events = input.ConsumeBool() ? &in : nullptr;
    block.out_events =
        input.PickValueInArray<const clap_output_events_t*>({&takesEverything, &refusesEverything, nullptr});
    plugin.process(&plugin, &block);
    for (const auto& channel : samples)
        for (const auto sample : channel)
            demand(std::abs(sample) <= 1.0f, "every sample is within [-1, 1]");
}

void askForTexts(FuzzedDataProvider& input, const ClapHost& host)
{
    const auto id = input.ConsumeIntegralInRange<clap_id>(0, parameterCount);
    const auto typed = input.ConsumeRandomLengthString(40);
    double value = 0.0;
    if (!host.params().text_to_value(&host.plugin(), id, typed.c_str(), &value))
        return;
    const auto& parameter = parameterTable()[id];
    demand(value >= static_cast<double>(parameter.minValue) &&
               value <= static_cast<double>(parameter.maxValue),
           "a typed value is within its range");
    std::array<char, 64> text{};
    const auto room = input.ConsumeIntegralInRange<std::uint32_t>(0, text.size());
    if (host.params().value_to_text(&host.plugin(), id, value, text.data(), room))
        demand(std::memchr(text.data(), '\0', room) != nullptr, "a text ends within its room");
}

void play(FuzzedDataProvider& input)
{
    ClapHost host(library());
    const auto rate = input.ConsumeFloatingPoint<double>();
    host.start(input.ConsumeBool() ? 48000.0 : rate, maxFrames);
    for (int call = 0; call < 20 && input.remaining_bytes() > 0; ++call) {
        switch (input.ConsumeIntegralInRange(0, 4)) {
        case 0:
            askForTexts(input, host);
            break;
        case 1:
            host.load(input.ConsumeRandomLengthString(2000),
                      input.ConsumeIntegralInRange<std::size_t>(1, 5000));
            break;
        case 2: {
            auto events = readEvents(input);
            const auto in = listOf(events);
            host.params().flush(&host.plugin(), &in, &refusesEverything);
            break;
        }
        default:
            process(input, host.plugin());
        }
    }
    for (const auto& parameter : parameterTable()) {
        const auto value = host.value(static_cast<clap_id>(parameter.address));
        demand(value >= static_cast<double>(parameter.minValue) &&
                   value <= static_cast<double>(parameter.maxValue),
               "every value stays within its range");
    }
}

} // namespace
} // namespace velotrine

/// Loads the file before the fuzzer counts what there is to cover.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    std::ignore = velotrine::library();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    velotrine::play(input);
    return 0;
}
