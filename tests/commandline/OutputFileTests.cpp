#include "commandline/OutputFile.h"

#include "commandline/Errors.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace velotrine {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

void write(OutputFile& file, std::string_view text)
{
    file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void writeWhole(const std::string& path, std::string_view text)
{
    OutputFile file(path);
    write(file, text);
    file.commit();
}

/// What goes wrong when a file of this name is written; empty when nothing does.
std::string failureOf(const std::string& path)
{
    try {
        writeWhole(path, "new");
    } catch (const WorkError& error) {
        return error.what();
    }
    return "";
}

unsigned permissionsOf(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 0777U;
}

/// The process's rule for new files, put back at the end.
class FileCreationMask
{
public:
    explicit FileCreationMask(mode_t mask) : before(::umask(mask)) {}

    ~FileCreationMask() { ::umask(before); }

    FileCreationMask(const FileCreationMask&) = delete;
    FileCreationMask& operator=(const FileCreationMask&) = delete;

private:
    mode_t before;
};

TEST(OutputFile, AppearsUnderItsNameOnlyWhenItIsCommitted)
{
    const TemporaryFolder folder;
    OutputFile file(folder.file("a.txt"));
    write(file, "hello");
    EXPECT_FALSE(fs::exists(folder.file("a.txt")));
    file.commit();
    EXPECT_EQ(folder.read("a.txt"), "hello");
    EXPECT_THAT(folder.entries(), ElementsAre("a.txt"));
}

TEST(OutputFile, IsTemporaryInTheSameFolderAndHiddenUntilThen)
{
    const TemporaryFolder folder;
    const OutputFile file(folder.file("a.txt"));
    EXPECT_THAT(folder.entries(), ElementsAre(StartsWith(".velotrine-")));
}

TEST(OutputFile, LeavesNothingBehindWhenItIsNotCommitted)
{
    const TemporaryFolder folder;
    {
        OutputFile file(folder.file("a.txt"));
        write(file, "hello");
    }
    EXPECT_THAT(folder.entries(), IsEmpty());
}

TEST(OutputFile, LeavesAnExistingFileAloneUntilItIsCommitted)
{
    const TemporaryFolder folder;
    folder.write("a.txt", "old");
    {
        OutputFile file(folder.file("a.txt"));
        write(file, "new");
    }
    EXPECT_EQ(folder.read("a.txt"), "old");
    writeWhole(folder.file("a.txt"), "new");
    EXPECT_EQ(folder.read("a.txt"), "new");
}

TEST(OutputFile, KeepsThePermissionsOfTheFileThatItReplaces)
{
    const TemporaryFolder folder;
    for (const mode_t permissions : {0600U, 0640U, 0666U, 0755U}) {
        folder.write("a.txt", "old");
        ASSERT_EQ(::chmod(folder.file("a.txt").c_str(), permissions), 0);
        writeWhole(folder.file("a.txt"), "new");
        EXPECT_EQ(permissionsOf(folder.file("a.txt")), permissions);
    }
}

TEST(OutputFile, HasThePermissionsOfAnyNewFileWhenItReplacesNone)
{
    const TemporaryFolder folder;
    for (const mode_t mask : {0022U, 0077U}) {
        const FileCreationMask set(mask);
        const auto path = folder.file("mask" + std::to_string(mask));
        writeWhole(path, "new");
        EXPECT_EQ(permissionsOf(path), 0666U & ~mask);
    }
}

TEST(OutputFile, FollowsALinkAndReplacesWhatItPointsTo)
{
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    elsewhere.write("target.txt", "old");
    fs::create_symlink(elsewhere.file("target.txt"), folder.file("link.txt"));
    writeWhole(folder.file("link.txt"), "new");
    EXPECT_TRUE(fs::is_symlink(folder.file("link.txt")));
    EXPECT_EQ(elsewhere.read("target.txt"), "new");
}

TEST(OutputFile, MakesWhatALinkPointsToWhenItIsNotThere)
{
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    fs::create_symlink(elsewhere.file("target.txt"), folder.file("link.txt"));
    writeWhole(folder.file("link.txt"), "new");
    EXPECT_TRUE(fs::is_symlink(folder.file("link.txt")));
    EXPECT_EQ(elsewhere.read("target.txt"), "new");
}

TEST(OutputFile, RefusesALinkToItself)
{
    const TemporaryFolder folder;
    fs::create_symlink("link.txt", folder.file("link.txt"));
    EXPECT_EQ(failureOf(folder.file("link.txt")),
              folder.file("link.txt") + ": could not be written: Too many levels of symbolic links");
}

TEST(OutputFile, GoesByTheNameThatWasTyped)
{
    const TemporaryFolder folder;
    EXPECT_EQ(OutputFile(folder.file("./a.txt")).name(), folder.file("./a.txt"));
    EXPECT_EQ(OutputFile("-").name(), "standard output");
}

TEST(OutputFile, RefusesAFolder)
{
    const TemporaryFolder folder;
    fs::create_directory(folder.file("music"));
    EXPECT_EQ(failureOf(folder.file("music")),
              folder.file("music") + ": could not be written: it is a folder");
}

TEST(OutputFile, SaysThatItsFolderIsMissing)
{
    const TemporaryFolder folder;
    EXPECT_EQ(failureOf(folder.file("missing/a.txt")),
              folder.file("missing/a.txt") + ": could not be written: No such file or directory");
}

TEST(OutputFile, SaysThatAFileIsWhereItsFolderShouldBe)
{
    const TemporaryFolder folder;
    folder.write("a.txt", "not a folder");
    EXPECT_EQ(failureOf(folder.file("a.txt/b.txt")),
              folder.file("a.txt/b.txt") + ": could not be written: Not a directory");
}

TEST(OutputFile, SaysAtOnceThatItsNameIsTooLong)
{
    const TemporaryFolder folder;
    for (const std::size_t length : {300U, 100000U}) {
        const auto path = folder.file(std::string(length, 'a'));
        try {
            const OutputFile file(path);
            FAIL() << "no file can have that name";
        } catch (const WorkError& error) {
            EXPECT_EQ(error.what(), path + ": could not be written: File name too long");
        }
    }
}

TEST(OutputFile, StreamsIntoANamedPipe)
{
    const TemporaryFolder folder;
    const auto path = folder.file("pipe.wav");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    auto received = std::async(std::launch::async, [&path] {
        std::ifstream pipe(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(pipe), {});
    });
    // More than a pipe holds at once.
    const std::string text(300000, 'x');
    writeWhole(path, text);
    EXPECT_EQ(received.get(), text);
    EXPECT_TRUE(fs::is_fifo(path));
    EXPECT_THAT(folder.entries(), SizeIs(1));
}

TEST(OutputFile, WritesToADeviceWithoutReplacingIt)
{
    EXPECT_EQ(failureOf("/dev/null"), "");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(OutputFile, SaysThatADeviceIsFull)
{
    EXPECT_EQ(failureOf("/dev/full"), "/dev/full: could not be written: No space left on device");
}

TEST(OutputFile, GivesADescriptorForReadingAndWriting)
{
    const TemporaryFolder folder;
    OutputFile file(folder.file("a.txt"));
    write(file, "hello");
    std::string text(5, ' ');
    ASSERT_EQ(::pread(file.descriptor(), text.data(), text.size(), 0), 5);
    EXPECT_EQ(text, "hello");
}

} // namespace
} // namespace velotrine
