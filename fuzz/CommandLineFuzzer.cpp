// What somebody types behind "velotrine": each line of the input is an argument. Nothing is rendered, so that
// a thousand mistakes a second can be made; what would be rendered is checked instead.

#include "audiounit/Parameters.h"
#include "fuzz/Demand.h"
#include "fuzz/TypedArguments.h"
#include "render/CommandLine.h"
#include "render/RenderJob.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace velotrine {

/// In place of the program's own.
void runRenderJob(const RenderOptions& options)
{
    for (const auto& [address, value] : options.settings) {
        const auto& parameter = parameterTable().at(address);
        demand(value >= parameter.minValue && value <= parameter.maxValue, "a setting is within its range");
    }
    const auto isBounded = [](const auto& value, auto least, auto most) {
        return !value || (*value >= least && *value <= most);
    };
    demand(options.presetNumber || !options.statePath.empty() || !options.takePath.empty(),
           "there is something to play");
    demand(!options.bars || (*options.bars > 0.0 && *options.bars <= 43200.0),
           "the length in bars is bounded");
    demand(!options.seconds || (*options.seconds > 0.0 && *options.seconds <= maxRenderSeconds),
           "the length in seconds is bounded");
    demand(!options.bars || !options.seconds, "there is one length");
    demand(isBounded(options.tempo, minTempo, maxTempo), "the tempo is bounded");
    demand(isBounded(options.sampleRate, 8000, 768000), "the sample rate is bounded");
    demand(isBounded(options.blockFrames, 1, 8192), "the block is bounded");
    demand(options.tailSeconds >= 0.0 && options.tailSeconds <= 3600.0, "the tail is bounded");
    demand(!options.outPath.empty() || !options.midiPath.empty(), "there is a place for sound or notes");
}

namespace {

void run(const std::string& input)
{
    const TypedArguments typed("velotrine", input);
    const auto arguments = typed.pointers();
    const auto exitCode = runCommandLine(static_cast<int>(arguments.size()), arguments.data());
    demand(exitCode == 0 || exitCode == 1 || exitCode == 2, "an exit code is one of three");
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    velotrine::run({reinterpret_cast<const char*>(data), size});
    return 0;
}
