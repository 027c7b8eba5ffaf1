#include "commandline/OutputFile.h"

#include "commandline/Errors.h"
#include "commandline/Interruption.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velotrine {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& name, int error)
{
    throw WorkError(name + ": could not be written: " + std::strerror(error));
}

void writeAll(int descriptor, std::span<const std::uint8_t> bytes, const std::string& name)
{
    while (!bytes.empty()) {
        const auto written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            stopIfInterrupted();
            continue;
        }
        if (written < 0)
            fail(name, errno);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

/// A named pipe opens when somebody reads it, which can take for ever. Below 0 on failure.
int openForWriting(const fs::path& path)
{
    for (;;) {
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor >= 0 || errno != EINTR)
            return descriptor;
        stopIfInterrupted();
    }
}

} // namespace

fs::path destinationOf(const std::string& name)
{
    std::error_code error;
    auto path = fs::absolute(name, error);
    if (error)
        return name;
    // As many links as the system itself follows.
    constexpr int maxLinks = 40;
    for (int i = 0; i < maxLinks && !fs::exists(path, error) && fs::is_symlink(path, error); ++i)
        path = path.parent_path() / fs::read_symlink(path, error);
    const auto canonical = fs::weakly_canonical(path, error);
    // A link such as /dev/stdout can lead to what has no name.
    return error ? path : canonical;
}

OutputFile::OutputFile(std::string path, Existing newExisting) : name_(std::move(path)), existing(newExisting)
{
    if (name_ == "-") {
        name_ = "standard output";
        isStream_ = true;
    } else {
        // What a link leads to is replaced, and not the link.
        std::error_code error;
        target = destinationOf(name_);
        const auto there = fs::status(target, error);
        // A name that cannot be is found out here, and not when all the work is done.
        if (!fs::status_known(there))
            fail(name_, error.value());
        if (fs::is_directory(there))
            throw WorkError(name_ + ": could not be written: it is a folder");
        isStream_ = fs::exists(there) && !fs::is_regular_file(there);
        if (fs::is_regular_file(there) && existing == Existing::kept)
            fail(name_, EEXIST);
        if (fs::exists(there) && ::access(target.c_str(), W_OK) != 0)
            fail(name_, errno);
    }
    openTemporary(folderForTemporary());
    if (isStream_)
        removeTemporary();
    else
        inheritPermissions();
}

OutputFile::~OutputFile()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
    removeTemporary();
}

fs::path OutputFile::folderForTemporary() const
{
    if (!isStream_)
        return target.parent_path();
    std::error_code error;
    auto folder = fs::temp_directory_path(error);
    if (error)
        throw WorkError(name_ + ": could not be written: there is no folder for temporary files");
    return folder;
}

void OutputFile::openTemporary(const fs::path& folder)
{
    auto pattern = (folder / ".velotrine-XXXXXX").string();
    descriptor_ = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        fail(name_, errno);
    temporary = pattern;
}

/// The temporary file is private by default; the finished one has the rights of the file that it replaces, or
/// those of any new file.
void OutputFile::inheritPermissions() const
{
    struct stat replaced = {};
    if (::stat(target.c_str(), &replaced) == 0) {
        ::fchmod(descriptor_, replaced.st_mode & 0777U);
        return;
    }
    const auto mask = ::umask(0);
    ::umask(mask);
    ::fchmod(descriptor_, 0666U & ~mask);
}

void OutputFile::write(std::span<const std::uint8_t> bytes)
{
    writeAll(descriptor_, bytes, name_);
}

void OutputFile::commit()
{
    commitTogether({this});
}

void OutputFile::commitTogether(const std::vector<OutputFile*>& outputs)
{
    const auto isStream = std::mem_fn(&OutputFile::isStream_);
    auto files = outputs;
    const auto firstFile = std::stable_partition(files.begin(), files.end(), isStream);
    const std::vector<OutputFile*> streams(files.begin(), firstFile);
    files.erase(files.begin(), firstFile);

    std::ranges::for_each(files, &OutputFile::finishWriting);
    std::ranges::for_each(streams, &OutputFile::copyToStream);
    std::size_t appeared = 0;
    try {
        for (; appeared < files.size(); ++appeared)
            files[appeared]->appear();
    } catch (...) {
        for (; appeared > 0; --appeared)
            files[appeared - 1]->disappear();
        throw;
    }
    std::ranges::for_each(files, &OutputFile::forgetOlderFile);
}

void OutputFile::finishWriting()
{
    if (::close(std::exchange(descriptor_, -1)) != 0)
        fail(name_, errno);
}

void OutputFile::appear()
{
    if (existing == Existing::kept)
        return appearInAnEmptyPlace();
    keepOlderFile();
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
        const int error = errno;
        // Between two names of one file a renaming does nothing, and leaves both. Where it fails, the second
        // may be the only one.
        if (!olderFile.empty() && ::rename(olderFile.c_str(), target.c_str()) == 0)
            forgetOlderFile();
        fail(name_, error);
    }
    temporary.clear();
}

/// A second name is given only where there is none, even when another program comes at the same moment.
void OutputFile::appearInAnEmptyPlace()
{
    if (::link(temporary.c_str(), target.c_str()) == 0)
        return removeTemporary();
    const int error = errno;
    std::error_code ignored;
    // Where files cannot have two names, looking first must do.
    if (error == EEXIST || fs::exists(target, ignored) || ::rename(temporary.c_str(), target.c_str()) != 0)
        fail(name_, error);
    temporary.clear();
}

/// Gives what is to be replaced a second name, so that at every moment something is under the first.
void OutputFile::keepOlderFile()
{
    std::error_code error;
    const auto there = fs::status(target, error);
    // Somebody may have made it in the meantime.
    if (fs::is_directory(there))
        fail(name_, EISDIR);
    if (!fs::exists(there))
        return;
    auto keptAs = temporary;
    keptAs += ".old";
    // Where files cannot have two names, the older one steps aside.
    if (::link(target.c_str(), keptAs.c_str()) != 0 && ::rename(target.c_str(), keptAs.c_str()) != 0)
        fail(name_, errno);
    olderFile = std::move(keptAs);
}

void OutputFile::disappear() noexcept
{
    if (olderFile.empty())
        ::unlink(target.c_str());
    else
        ::rename(olderFile.c_str(), target.c_str());
    olderFile.clear();
}

void OutputFile::forgetOlderFile() noexcept
{
    if (!olderFile.empty())
        ::unlink(olderFile.c_str());
    olderFile.clear();
}

void OutputFile::copyToStream()
{
    const int stream = target.empty() ? ::dup(STDOUT_FILENO) : openForWriting(target);
    if (stream < 0)
        fail(name_, errno);

    const struct Closer
    {
        int descriptor;

        ~Closer() { ::close(descriptor); }
    } closer{stream};

    std::array<std::uint8_t, 65536> chunk{};
    ::lseek(descriptor_, 0, SEEK_SET);
    for (;;) {
        stopIfInterrupted();
        const auto count = ::read(descriptor_, chunk.data(), chunk.size());
        if (count < 0)
            fail(name_, errno);
        if (count == 0)
            return;
        writeAll(stream, std::span(chunk).first(static_cast<std::size_t>(count)), name_);
    }
}

void OutputFile::removeTemporary() noexcept
{
    if (!temporary.empty())
        ::unlink(temporary.c_str());
    temporary.clear();
}

} // namespace velotrine
