// Process calls of 64 frames for valgrind's callgrind to count instructions in, one by one: each call gives
// one dump. Two runs: the workload as it comes, and the same with rings that stand still, so that five spots
// fire on the same frame, which is the most that a call can have to do.

#include "benchmarks/engine/Workload.h"
#include "engine/VelotrineDSPKernel.h"

#include <array>
#include <cstdlib>
#include <memory>

#include <valgrind/callgrind.h>

namespace {

constexpr int block = 64;

void run(bool ringsStandStill, int calls)
{
    const auto kernel = std::make_unique<velotrine::VelotrineDSPKernel>();
    velotrine::startWorkload(*kernel, 1.0f, block);
    if (ringsStandStill) {
        kernel->activity = 0.0f;
        kernel->calories = 0.0f;
    }
    std::array<float, block> left{};
    std::array<float, block> right{};
    for (int call = 0; call < calls; ++call) {
        CALLGRIND_ZERO_STATS;
        kernel->process(left.data(), right.data(), block);
        CALLGRIND_DUMP_STATS;
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const int calls = argumentCount > 1 ? std::atoi(arguments[1]) : 500;
    run(false, calls);
    run(true, calls);
    return 0;
}
