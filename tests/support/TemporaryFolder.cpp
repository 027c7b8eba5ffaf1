#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <stdlib.h>

namespace velotrine {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder()
{
    auto pattern = (fs::temp_directory_path() / "velotrine-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder could be made");
    folder = pattern;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

std::vector<std::string> TemporaryFolder::entries() const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

void TemporaryFolder::write(std::string_view name, std::string_view content) const
{
    std::ofstream stream(folder / name, std::ios::binary);
    stream << content;
    stream.close();
    if (!stream)
        throw std::runtime_error("a test's file could not be written: " + file(name));
}

std::string TemporaryFolder::read(std::string_view name) const
{
    std::ifstream stream(folder / name, std::ios::binary);
    if (!stream)
        throw std::runtime_error("there is no file " + file(name));
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace velotrine
