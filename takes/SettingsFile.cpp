#include "takes/SettingsFile.h"

#include "audiounit/StateText.h"
#include "commandline/InputText.h"
#include "commandline/OutputFile.h"
#include "takes/TakeText.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace velotrine {

namespace {

namespace fs = std::filesystem;

/// What is in a file, or why that cannot be read.
struct FileReading
{
    std::optional<std::string> text;
    std::string error;
};

FileReading readUpTo(std::size_t mostBytes, const fs::path& path)
{
    std::error_code error;
    const auto status = fs::status(path, error);
    if (fs::is_directory(status))
        return {std::nullopt, "it is a folder"};
    if (fs::exists(status) && !fs::is_regular_file(status))
        return {std::nullopt, "it is no file"};
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    auto text = textUpTo(mostBytes, stream);
    if (!text)
        return {std::nullopt, std::string("it could not be read: ") + std::strerror(errno)};
    return {std::move(text), {}};
}

SettingsReading beginningOfTake(std::string_view text)
{
    const auto read = takeFromText(text);
    if (!read.take)
        return {std::nullopt, true, read.error};
    const auto& start = read.take->start;
    return {Settings{.values = start.values,
                     .preset = std::nullopt,
                     .seed = start.seed,
                     .sameMusicAtEveryStart = start.sameMusicAtEveryStart},
            true,
            {}};
}

} // namespace

SettingsReading settingsFromText(std::string_view text, const Settings& base)
{
    const auto read = stateFromText(text);
    if (!read.state)
        return {std::nullopt, false, read.error};
    return {settingsFromState(*read.state, base), false, {}};
}

void writeSettings(const Settings& settings, const std::string& path)
{
    const auto text = textFromState(stateFromSettings(settings));
    OutputFile file(path);
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    file.commit();
}

SettingsReading settingsFromFile(const fs::path& path, const Settings& base)
{
    const bool isTake = path.extension() == takeFileEnding;
    const auto file = readUpTo(isTake ? maxTakeMebibytes << 20 : maxStateBytes, path);
    if (!file.text)
        return {std::nullopt, isTake, file.error};
    return isTake ? beginningOfTake(*file.text) : settingsFromText(*file.text, base);
}

} // namespace velotrine
