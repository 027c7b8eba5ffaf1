// The LV2 plug-in as a host loads it: atoms of any kind on the time port, any values on the others, and
// states of any kind.

#include "audiounit/Parameters.h"
#include "fuzz/Demand.h"
#include "plugin/lv2/Lv2Names.h"
#include "tests/plugin/Lv2Host.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <tuple>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

namespace velotrine {
namespace {

constexpr std::uint32_t maxFrames = 256;
constexpr std::size_t maxAtomBytes = 400;

const Lv2Library& library()
{
    static const Lv2Library loaded;
    return loaded;
}

/// A sequence in memory of exactly the size that it says, so that the sanitizer sees the next byte. Its
/// events say whatever they like of their sizes.
std::unique_ptr<std::byte[]> readSequence(FuzzedDataProvider& input, Lv2Host& host)
{
    const auto isSequence = input.ConsumeBool();
    const auto bytes =
        input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, maxAtomBytes));
    const LV2_Atom header{.size = static_cast<std::uint32_t>(bytes.size()),
                          .type = isSequence ? host.idOf(LV2_ATOM__Sequence)
                                             : input.ConsumeIntegral<std::uint32_t>()};
    std::unique_ptr<std::byte[]> memory(new std::byte[sizeof header + bytes.size()]);
    std::memcpy(memory.get(), &header, sizeof header);
    std::ranges::copy(std::as_bytes(std::span(bytes)), memory.get() + sizeof header);
    return memory;
}

void run(FuzzedDataProvider& input, Lv2Host& host)
{
    const auto frames = input.ConsumeIntegralInRange<std::uint32_t>(0, maxFrames);
    std::vector<float> left(frames);
    std::vector<float> right(frames);
    const auto sequence = readSequence(input, host);
    host.connect(lv2Port::left, input.ConsumeBool() ? left.data() : nullptr);
    host.connect(lv2Port::right, input.ConsumeBool() ? right.data() : nullptr);
    host.connect(lv2Port::time, input.ConsumeBool() ? sequence.get() : nullptr);
    // Memory of exactly the size that the host says, which may be too small for anything.
    std::vector<std::uint64_t> notes(input.ConsumeIntegralInRange<std::size_t>(2, 20));
    auto& noteAtom = *reinterpret_cast<LV2_Atom*>(notes.data());
    noteAtom.size = static_cast<std::uint32_t>(notes.size() * sizeof notes[0] - sizeof noteAtom);
    host.connect(lv2Port::notes, input.ConsumeBool() ? notes.data() : nullptr);
    host.run(frames);
    host.connect(lv2Port::time, nullptr);
    host.connect(lv2Port::notes, nullptr);
    demand(noteAtom.size + sizeof noteAtom <= notes.size() * sizeof notes[0], "notes stay in their memory");
    for (const auto* const channel : {&left, &right})
        for (const auto sample : *channel)
            demand(std::abs(sample) <= 1.0f, "every sample is within [-1, 1]");
}

void play(FuzzedDataProvider& input)
{
    Lv2Host host(library());
    host.start();
    for (int call = 0; call < 20 && input.remaining_bytes() > 0; ++call) {
        switch (input.ConsumeIntegralInRange(0, 3)) {
        case 0:
            host.controls[input.ConsumeIntegralInRange<std::size_t>(0, parameterCount - 1)] =
                std::bit_cast<float>(input.ConsumeIntegral<std::uint32_t>());
            break;
        case 1:
            host.restore(input.ConsumeRandomLengthString(2000),
                         input.ConsumeBool() ? LV2_ATOM__String : LV2_ATOM__Int);
            break;
        default:
            run(input, host);
        }
    }
    host.stop();
    demand(!host.save().empty(), "there is always a state to save");
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
