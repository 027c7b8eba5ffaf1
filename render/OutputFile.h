#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace velotrine {

/// The file that a name leads to: links are followed, even one to a file that is yet to be made.
[[nodiscard]] std::filesystem::path destinationOf(const std::string& name);

/// A file that appears under its name only when it is whole. Until commit() it is a temporary one in the same
/// folder, and goes away with this object. Standard output ("-"), pipes and devices get all bytes at
/// commit(). All failures are WorkErrors that name the file.
class OutputFile
{
public:
    explicit OutputFile(std::string path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// What a person calls the file.
    [[nodiscard]] const std::string& name() const noexcept { return name_; }

    /// Open for reading and writing, at the start, until commit().
    [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

    /// It is a pipe or a device, or standard output: commit() writes to it, and that can fail.
    [[nodiscard]] bool isStream() const noexcept { return isStream_; }

    void write(std::span<const std::uint8_t> bytes);

    void commit();

private:
    [[nodiscard]] std::filesystem::path folderForTemporary() const;
    void openTemporary(const std::filesystem::path& folder);
    void inheritPermissions() const;
    void copyToStream();
    void removeTemporary() noexcept;

    std::string name_;
    std::filesystem::path target; ///< empty for standard output
    bool isStream_ = false;       ///< cannot be replaced by renaming
    std::filesystem::path temporary;
    int descriptor_ = -1;
};

} // namespace velotrine
