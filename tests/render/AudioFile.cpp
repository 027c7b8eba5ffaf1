#include "tests/render/AudioFile.h"

#include <stdexcept>

#include <sndfile.hh>

namespace velotrine {

std::vector<float> AudioFile::channel(int index) const
{
    std::vector<float> result;
    for (auto i = static_cast<std::size_t>(index); i < samples.size();
         i += static_cast<std::size_t>(channels))
        result.push_back(samples[i]);
    return result;
}

AudioFile readAudioFile(const std::string& path)
{
    SndfileHandle handle(path);
    if (handle.error() != 0)
        throw std::runtime_error(path + ": " + handle.strError());
    AudioFile file{.sampleRate = handle.samplerate(),
                   .channels = handle.channels(),
                   .format = handle.format(),
                   .samples = {},
                   .whole = {}};
    const auto count = handle.frames() * handle.channels();
    file.samples.resize(static_cast<std::size_t>(count));
    file.whole.resize(static_cast<std::size_t>(count));
    const bool complete = handle.read(file.samples.data(), count) == count && handle.seek(0, SEEK_SET) == 0 &&
                          handle.read(file.whole.data(), count) == count;
    if (!complete)
        throw std::runtime_error(path + ": ends too early");
    return file;
}

} // namespace velotrine
