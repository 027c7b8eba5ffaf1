// What somebody types behind the application's name: each line of the input is an argument.

#include "fuzz/Demand.h"
#include "fuzz/TypedArguments.h"
#include "host/DesktopScale.h"
#include "host/HostOptions.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

namespace velotrine {
namespace {

void check(const HostOptions& options)
{
    const auto& device = options.device;
    demand(!device.sampleRate || (*device.sampleRate >= 8000.0 && *device.sampleRate <= 768000.0),
           "the sample rate is bounded");
    demand(!device.bufferFrames || (*device.bufferFrames >= 1 && *device.bufferFrames <= 8192),
           "the buffer is bounded");
    demand(!options.scale || (*options.scale >= smallestScale && *options.scale <= largestScale),
           "the scale is bounded");
}

void check(const ProgramEnd& end)
{
    demand(end.exitCode == 0 || end.exitCode == 2, "an exit code is one of two");
    demand((end.exitCode == 2) == end.out.empty(), "a mistake prints nothing on standard output");
    if (end.exitCode == 2)
        demand(std::ranges::count(end.err, '\n') == 1 && end.err.ends_with('\n'), "a complaint is one line");
}

void run(const std::string& input)
{
    const TypedArguments typed("velotrine-app", input);
    const auto arguments = typed.pointers();
    std::visit([](const auto& parsed) { check(parsed); }, parseHostOptions(arguments));
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velotrine::run({reinterpret_cast<const char*>(data), size});
    return 0;
}
