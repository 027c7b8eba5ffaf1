#include "render/Origin.h"

#include "audiounit/Identity.h"
#include "audiounit/OrderedJson.h"
#include "audiounit/StateText.h"
#include "commandline/Errors.h"
#include "render/AudioFileWriter.h"
#include "render/MidiFile.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <span>
#include <vector>

namespace velotrine {

namespace {

constexpr auto beginning = identity::name;

/// As much of a file as a comment can stand in the beginning of.
std::vector<std::uint8_t> beginningOf(const std::string& path)
{
    constexpr std::streamsize mostBytes = 1 << 20;
    std::ifstream file(path, std::ios::binary);
    std::vector<std::uint8_t> bytes(mostBytes);
    if (!file.is_open() || (!file.read(reinterpret_cast<char*>(bytes.data()), mostBytes) && file.bad()))
        throw UsageError(path, std::string("it could not be read: ") + std::strerror(errno));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

std::string commentIn(const std::string& path)
{
    const auto bytes = beginningOf(path);
    return MidiFile::isOne(bytes) ? MidiFile::commentIn(bytes) : AudioFileWriter::commentIn(path);
}

} // namespace

std::string originText(const std::string& stateText)
{
    return std::string(identity::nameAndVersion) + ": " + OrderedJson::parse(stateText).dump();
}

std::string stateTextIn(const std::string& path)
{
    const auto comment = commentIn(path);
    const auto brace = comment.find('{');
    if (!comment.starts_with(beginning) || brace == std::string::npos)
        throw UsageError(path, "it does not say what made it");
    const auto read = stateFromText(std::string_view(comment).substr(brace));
    if (!read.state)
        throw UsageError(path, "what it says about its settings is damaged: " + read.error);
    return textFromState(*read.state);
}

} // namespace velotrine
