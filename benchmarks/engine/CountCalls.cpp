// Process calls for valgrind to count instructions in, one by one. Under
//   valgrind --tool=callgrind --toggle-collect='*VelotrineDSPKernel::process*'
//   --dump-after='*VelotrineDSPKernel::process*'
// each call gives one file. Two runs of calls of 64 frames: the workload as it comes, and the same with rings
// that stand still, so that five spots fire on the same frame, which is the most that a call can have to do.

#include "benchmarks/engine/Workload.h"
#include "engine/VelotrineDSPKernel.h"

#include <array>
#include <cstdlib>
#include <memory>

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
    for (int call = 0; call < calls; ++call)
        kernel->process(left.data(), right.data(), block);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const int calls = argumentCount > 1 ? std::atoi(arguments[1]) : 400;
    run(false, calls);
    run(true, calls);
    return 0;
}
