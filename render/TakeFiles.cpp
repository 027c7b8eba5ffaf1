#include "render/TakeFiles.h"

#include "commandline/OutputFile.h"
#include "render/RenderJob.h"
#include "takes/TakeText.h"

#include <cstdint>

namespace velotrine {

namespace {

void writeTake(const Take& take, const std::string& path)
{
    const auto text = textFromTake(take);
    OutputFile file(path);
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file.commit();
}

} // namespace

void writeTakeFiles(const Take& take, const std::string& path, const std::function<void(double)>& progress)
{
    RenderOptions options;
    options.takePath = path + std::string(takeFileEnding);
    options.outPath = path + ".wav";
    options.midiPath = path + ".mid";
    options.format = SampleFormat::f32;
    options.quiet = true;
    options.onProgress = progress;
    writeTake(take, options.takePath);
    runRenderJob(options);
}

} // namespace velotrine
