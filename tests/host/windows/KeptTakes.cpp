#include "tests/host/windows/KeptTakes.h"

#include <cstddef>
#include <system_error>

#include <sndfile.h>

namespace velotrine {

std::vector<std::filesystem::path> keptTakes(const std::filesystem::path& home, const std::string& ending)
{
    std::vector<std::filesystem::path> files;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(home / "Music/Velotrine", none))
        if (entry.path().extension() == ending)
            files.push_back(entry.path());
    return files;
}

std::vector<float> leftOf(const std::filesystem::path& path, int* sampleRate)
{
    SF_INFO info{};
    auto* const file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        return {};
    *sampleRate = info.samplerate;
    std::vector<float> both(static_cast<std::size_t>(info.frames * info.channels));
    sf_readf_float(file, both.data(), info.frames);
    sf_close(file);
    std::vector<float> left(static_cast<std::size_t>(info.frames));
    for (std::size_t i = 0; i < left.size(); ++i)
        left[i] = both[i * static_cast<std::size_t>(info.channels)];
    return left;
}

} // namespace velotrine
