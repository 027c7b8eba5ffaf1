#include "engine/VelotrineDSPKernel.h"
#include "takes/TakePlayer.h"
#include "takes/TakeText.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace velotrine {
namespace {

/// Ends the program, as the fuzzer wants it of a finding, with a word on what does not hold.
void demand(bool holds, const char* rule)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}

void checkRoundTrip(const Take& take)
{
    const auto text = textFromTake(take);
    const auto again = takeFromText(text);
    demand(again.take.has_value(), "what is written can be read");
    demand(*again.take == take, "what is read is what was written");
}

/// Nothing that a take says stops the program.
void play(const Take& take)
{
    constexpr std::int64_t longestCycle = 8192;
    constexpr int cycles = 30;
    constexpr double sampleRate = 8000.0;
    static std::vector<float> left(longestCycle);
    static std::vector<float> right(longestCycle);
    VelotrineDSPKernel kernel;
    kernel.setup(longestCycle, sampleRate);
    TakePlayer player(take, sampleRate);
    player.begin(kernel);
    for (int i = 0; i < cycles; ++i) {
        player.apply(kernel);
        kernel.process(left.data(), right.data(), player.cycleFrames());
        player.advance(player.cycleFrames());
    }
}

void checkTake(std::string_view text)
{
    const auto read = takeFromText(text);
    demand(read.take.has_value() == read.error.empty(), "there is a take, or a sentence that says why not");
    if (!read.take)
        return;
    checkRoundTrip(*read.take);
    play(*read.take);
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velotrine::checkTake({reinterpret_cast<const char*>(data), size});
    return 0;
}
