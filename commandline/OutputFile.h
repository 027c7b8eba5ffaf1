#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace velotrine {

/// The file that a name leads to: links are followed, even one to a file that does not exist.
[[nodiscard]] std::filesystem::path destinationOf(const std::string& name);

/// A file that appears under its name only when it is whole. Until it is committed it is a temporary one in
/// the same folder, and goes away with this object. Standard output ("-"), pipes and devices get all bytes at
/// the commit. All failures are WorkErrors that name the file.
class OutputFile
{
public:
    /// What becomes of a file that has the name already.
    enum class Existing
    {
        replaced,
        kept, ///< and there is a WorkError instead
    };

    explicit OutputFile(std::string path, Existing existing = Existing::replaced);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// What a person calls the file.
    [[nodiscard]] const std::string& name() const noexcept { return name_; }

    /// Open for reading and writing, at the start, until the commit.
    [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

    void write(std::span<const std::uint8_t> bytes);

    void commit();

    /// Commits all of them or, as far as the system lets it, none: where one cannot appear, those that have
    /// appeared go away again, and what they replaced is back. Only what went into a stream cannot come back;
    /// so that is written first, when everything else is.
    static void commitTogether(const std::vector<OutputFile*>& outputs);

private:
    void finishWriting();
    void appear();
    void appearInAnEmptyPlace();
    void keepOlderFile();
    void disappear() noexcept;
    void forgetOlderFile() noexcept;
    [[nodiscard]] std::filesystem::path folderForTemporary() const;
    void openTemporary(const std::filesystem::path& folder);
    void inheritPermissions() const;
    void copyToStream();
    void removeTemporary() noexcept;

    std::string name_;
    std::filesystem::path target; ///< empty for standard output
    Existing existing;
    bool isStream_ = false; ///< cannot be replaced by renaming
    std::filesystem::path temporary;
    std::filesystem::path olderFile; ///< what is replaced, until all have appeared; empty for none
    int descriptor_ = -1;
};

} // namespace velotrine
