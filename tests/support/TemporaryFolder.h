#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velotrine {

/// A folder of a test's own, gone with everything in it when the test ends.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return folder; }

    [[nodiscard]] std::string file(std::string_view name) const { return (folder / name).string(); }

    /// What is in it, hidden files too, in alphabetical order.
    [[nodiscard]] std::vector<std::string> entries() const;

    void write(std::string_view name, std::string_view content) const;
    [[nodiscard]] std::string read(std::string_view name) const;

private:
    std::filesystem::path folder;
};

} // namespace velotrine
