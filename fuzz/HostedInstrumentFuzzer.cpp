// What a music host hands over, whatever the format: any transport, any values, any number of frames.

#include "audiounit/MidiNote.h"
#include "audiounit/NoteOutput.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "fuzz/Demand.h"
#include "fuzz/SilentHost.h"
#include "plugin/HostedInstrument.h"

#include <algorithm>
#include <bit>
#include <bitset>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

namespace velotrine {
namespace {

constexpr int maxFrames = 300;

/// Any of the numbers that a double can hold, and those that are none; half of the time one that makes sense,
/// or else hardly anything would ever be played.
double anyNumber(FuzzedDataProvider& input, double min, double max)
{
    return input.ConsumeBool() ? input.ConsumeFloatingPointInRange(min, max)
                               : std::bit_cast<double>(input.ConsumeIntegral<std::uint64_t>());
}

std::optional<HostTransport> anyTransport(FuzzedDataProvider& input)
{
    if (input.ConsumeIntegral<std::uint8_t>() == 0)
        return std::nullopt;
    return HostTransport{.tempo = anyNumber(input, 1.0, 10000.0),
                         .tempoPerFrame = input.ConsumeBool() ? 0.0 : anyNumber(input, -1.0, 1.0),
                         .beatsPerBar = anyNumber(input, 1.0, 256.0),
                         .beatUnit = anyNumber(input, 1.0, 128.0),
                         .isPlaying = input.ConsumeBool()};
}

/// Which keys are down, in a host that has no room now and then.
class Keys final : public NoteReceiver
{
public:
    [[nodiscard]] bool take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING override
    {
        demand(message.frame >= lastFrame && message.frame < frames, "frames ascend within the block");
        lastFrame = message.frame;
        if (room == 0)
            return false;
        --room;
        demand(message.channel < ringCount && message.key <= MidiNote::highestKey, "a note is one of MIDI's");
        const auto index =
            static_cast<std::size_t>(message.channel) * (MidiNote::highestKey + 1) + message.key;
        demand(down[index] != message.isOn, "a key that is down goes up, and no other");
        down[index] = message.isOn;
        return true;
    }

    void begin(int newFrames, int newRoom)
    {
        frames = newFrames;
        lastFrame = 0;
        room = newRoom;
    }

    [[nodiscard]] bool areUp() const { return down.none(); }

private:
    std::bitset<static_cast<std::size_t>(ringCount) * (MidiNote::highestKey + 1)> down;
    int frames = 0;
    int lastFrame = 0;
    int room = 0;
};

void render(FuzzedDataProvider& input, HostedInstrument& instrument, Keys& keys)
{
    const auto frames = input.ConsumeIntegralInRange(-1, maxFrames);
    std::vector<float> left(static_cast<std::size_t>(std::max(frames, 0)));
    auto right = left;
    keys.begin(frames, input.ConsumeIntegralInRange(0, 20));
    instrument.render(
        {input.ConsumeBool() ? left.data() : nullptr, input.ConsumeBool() ? right.data() : nullptr}, frames,
        {input.ConsumeBool() ? &keys : nullptr});
    for (const auto* const channel : {&left, &right})
        for (const auto sample : *channel)
            demand(std::abs(sample) <= 1.0f, "every sample is within [-1, 1]");
}

void play(FuzzedDataProvider& input)
{
    SilentHost host;
    HostedInstrument instrument(host);
    Keys keys;
    const auto rate = anyNumber(input, 8000.0, 768000.0);
    demand(instrument.prepare(rate) == HostedInstrument::takesSampleRate(rate), "a rate is taken or refused");
    for (int call = 0; call < 40 && input.remaining_bytes() > 0; ++call) {
        switch (input.ConsumeIntegralInRange(0, 7)) {
        case 0:
            instrument.setTransport(anyTransport(input));
            break;
        case 1:
        case 2:
            instrument.setValue(input.ConsumeIntegralInRange<ParameterAddress>(0, parameterCount),
                                anyNumber(input, -1.0, 310.0));
            break;
        case 3:
            instrument.audioUnit()->dspKernel->internalPlaying = input.ConsumeBool();
            break;
        case 4:
            instrument.choosePreset(input.ConsumeIntegralInRange<std::size_t>(0, presetCount));
            break;
        case 5:
            instrument.reset();
            break;
        default:
            render(input, instrument, keys);
        }
    }
    keys.begin(1, ringCount * (MidiNote::highestKey + 1));
    instrument.pause({&keys});
    demand(keys.areUp(), "every key goes up in the end");
    for (const auto& parameter : parameterTable()) {
        const auto value = instrument.value(parameter.address);
        demand(value >= parameter.minValue && value <= parameter.maxValue,
               "every value stays within its range");
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
