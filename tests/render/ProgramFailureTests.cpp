#include "tests/render/ProgramTest.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace velotrine {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

void pauseShortly()
{
    ::poll(nullptr, 0, 10);
}

class Failure : public ProgramTest
{
protected:
    /// A short rendering with these arguments and no more.
    [[nodiscard]] ProcessResult attempt(std::vector<std::string> more, void (*beforeStart)() = nullptr) const
    {
        more.insert(more.begin(), {"render", "--preset", "1", "--seconds", "0.5"});
        auto where = surroundings();
        if (beforeStart != nullptr)
            where.beforeStart = beforeStart;
        return runVelotrine(std::move(more), where);
    }

    static void expectFailure(const ProcessResult& result, const std::string& message)
    {
        expectOneComplaint(result, 1);
        EXPECT_EQ(result.err, "velotrine: " + message + "\n");
    }
};

TEST_F(Failure, OfAMissingFolderNamesTheFile)
{
    for (const auto& [option, file] : {std::pair{"--out", "missing/a.wav"},
                                       {"--midi", "missing/a.mid"},
                                       {"--save-state", "missing/a.json"}}) {
        std::vector<std::string> arguments{option, file};
        if (arguments[0] != "--out")
            arguments.insert(arguments.end(), {"--out", "a.wav"});
        expectFailure(attempt(arguments), arguments[1] + ": could not be written: No such file or directory");
        EXPECT_THAT(folder.entries(), IsEmpty());
    }
}

TEST_F(Failure, OfAFolderInTheFilesPlaceNamesIt)
{
    fs::create_directory(folder.file("music.wav"));
    expectFailure(attempt({"--out", "music.wav"}), "music.wav: could not be written: it is a folder");
    EXPECT_THAT(folder.entries(), ElementsAre("music.wav"));
}

TEST_F(Failure, OfAWriteProtectedFileLeavesItAsItIs)
{
    folder.write("a.wav", "precious");
    ASSERT_EQ(::chmod(folder.file("a.wav").c_str(), 0444), 0);
    // The administrator may write everything, unless this right is given up.
    const auto result =
        attempt({"--out", "a.wav"}, [] { ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0); });
    expectFailure(result, "a.wav: could not be written: Permission denied");
    EXPECT_EQ(folder.read("a.wav"), "precious");
    EXPECT_THAT(folder.entries(), ElementsAre("a.wav"));
}

TEST_F(Failure, OfAFullDeviceLeavesNoFileOfAnyOutput)
{
    constexpr auto problem = "/dev/full: could not be written: No space left on device";
    expectFailure(attempt({"--out", "/dev/full"}), problem);
    expectFailure(attempt({"--out", "/dev/full", "--midi", "a.mid", "--save-state", "a.json"}), problem);
    expectFailure(attempt({"--out", "a.wav", "--midi", "/dev/full"}), problem);
    expectFailure(attempt({"--out", "a.wav", "--midi", "a.mid", "--save-state", "/dev/full"}), problem);
    EXPECT_THAT(folder.entries(), IsEmpty());
}

TEST_F(Failure, OfAFileSizeLimitLeavesNoFile)
{
    const auto limitFileSize = [] {
        const rlimit limit{20000, 20000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    };
    for (const auto* const out : {"a.wav", "a.flac"})
        expectFailure(attempt({"--out", out}, limitFileSize),
                      std::string(out) + ": could not be written: File too large");
    expectFailure(attempt({"--out", "-"}, limitFileSize),
                  "standard output: could not be written: File too large");
    EXPECT_THAT(folder.entries(), IsEmpty());
}

TEST_F(Failure, OfAClosedPipeIsSaidInOneLine)
{
    for (const auto& arguments : {std::vector<std::string>{"render", "--preset", "1", "--seconds", "0.5",
                                                           "--out", "-", "--midi", "a.mid"},
                                  {"list", "parameters", "--json"},
                                  {"--help"}}) {
        ChildProcess program(velotrineCommand(arguments),
                             {.folder = folder.path().string(),
                              .environment = {{"TMPDIR", folder.path().string()}},
                              .beforeStart = [] { ::raise(SIGSTOP); }});
        // It goes on only when nobody listens any more.
        program.stopListening();
        program.waitUntilStopped();
        program.send(SIGCONT);
        const auto result = program.finish();
        expectOneComplaint(result, 1);
        EXPECT_THAT(result.err, StartsWith("velotrine: standard output: could not be written"));
    }
    EXPECT_THAT(folder.entries(), IsEmpty());
}

TEST_F(Failure, OfAStandardOutputThatIsNotThereIsNoSuccess)
{
    const auto result = attempt({"--out", "-"}, [] { ::close(STDOUT_FILENO); });
    expectFailure(result, "standard output: could not be written: Bad file descriptor");
}

TEST_F(Failure, IsNotCausedByClosedStandardStreams)
{
    // Files that are opened now could get their numbers.
    const auto result = attempt({"--out", "a.wav", "--midi", "a.mid"}, [] {
        ::close(STDIN_FILENO);
        ::close(STDOUT_FILENO);
        ::close(STDERR_FILENO);
    });
    EXPECT_EQ(result.exitCode, 0);
    render({"--preset", "1", "--seconds", "0.5", "--out", "b.wav", "--midi", "b.mid"});
    EXPECT_TRUE(folder.read("a.wav") == folder.read("b.wav"));
    EXPECT_TRUE(folder.read("a.mid") == folder.read("b.mid"));
}

TEST_F(Failure, OfTheFolderForTemporaryFilesNamesTheOutput)
{
    const auto result = attempt({"--out", "-"}, [] { ::setenv("TMPDIR", "/nowhere/at/all", 1); });
    expectFailure(result, "standard output: could not be written: there is no folder for temporary files");
}

/// The system call that gives a file a second name fails, as on a disk whose files have only one.
void forbidSecondNames()
{
    constexpr auto systemCall = static_cast<std::uint32_t>(offsetof(seccomp_data, nr));
    std::array<sock_filter, 5> filter{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, systemCall),
#ifdef SYS_link
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_link, 1, 0),
#else
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_linkat, 1, 0),
#endif
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_linkat, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog program{filter.size(), filter.data()};
    const bool forbidden = ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0 &&
                           ::link("/nowhere", "/nowhere/else") != 0 && errno == EPERM;
    if (!forbidden)
        ::_exit(99);
}

/// A run with three outputs, one of which is a named pipe: all has been written when the program comes to it,
/// and nothing has appeared.
class Outputs : public Failure
{
protected:
    Outputs() { EXPECT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0); }

    /// Does something in the folder before anything appears. The sound, the notes or the state goes into the
    /// pipe.
    template <typename Meanwhile>
    [[nodiscard]] ProcessResult runMeanwhile(std::vector<std::string> more, Meanwhile&& meanwhile,
                                             void (*beforeStart)() = nullptr) const
    {
        more.insert(more.begin(), {"render", "--preset", "1", "--seconds", "0.5"});
        auto where = surroundings();
        if (beforeStart != nullptr)
            where.beforeStart = beforeStart;
        ChildProcess program(velotrineCommand(more), where);
        const auto isTemporary = [](const std::string& name) { return name.starts_with(".velotrine-"); };
        const auto started = [&] {
            const auto entries = folder.entries();
            return std::count_if(entries.begin(), entries.end(), isTemporary) >= 2;
        };
        while (!started() && !program.hasEnded())
            pauseShortly();
        meanwhile();
        // Opening the pipe lets the program go on; it is read to its end.
        if (!program.hasEnded())
            static_cast<void>(folder.read("pipe"));
        return program.finish();
    }
};

TEST_F(Outputs, OfWhichOneCannotAppearAreNotThereWhereNothingWas)
{
    const auto result = runMeanwhile({"--out", "a.wav", "--midi", "pipe", "--save-state", "a.json"},
                                     [this] { fs::create_directory(folder.file("a.json")); });
    expectFailure(result, "a.json: could not be written: Is a directory");
    EXPECT_THAT(folder.entries(), ElementsAre("a.json", "pipe"));
}

/// On a disk whose files can have a second name, and on one whose files cannot.
class OutputsOnEveryDisk : public Outputs, public testing::WithParamInterface<bool>
{
protected:
    void (*const onThisDisk)() = GetParam() ? nullptr : forbidSecondNames;
};

TEST_P(OutputsOnEveryDisk, OfWhichOneCannotAppearAreAllAsTheyWere)
{
    folder.write("a.mid", "older notes");
    const auto result = runMeanwhile(
        {"--out", "pipe", "--midi", "a.mid", "--save-state", "a.json"},
        [this] { fs::create_directory(folder.file("a.json")); }, onThisDisk);
    expectFailure(result, "a.json: could not be written: Is a directory");
    EXPECT_EQ(folder.read("a.mid"), "older notes");
    EXPECT_THAT(folder.entries(), ElementsAre("a.json", "a.mid", "pipe"));
}

TEST_P(OutputsOnEveryDisk, ThatAllAppearReplaceTheOlderFilesAndLeaveNothingElse)
{
    folder.write("a.mid", "older notes");
    folder.write("a.json", "older state");
    const auto result = runMeanwhile(
        {"--out", "pipe", "--midi", "a.mid", "--save-state", "a.json"},
        [this] {
            EXPECT_EQ(folder.read("a.mid"), "older notes");
            EXPECT_EQ(folder.read("a.json"), "older state");
        },
        onThisDisk);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(folder.read("a.mid"), StartsWith("MThd"));
    EXPECT_THAT(folder.read("a.json"), StartsWith("{"));
    EXPECT_THAT(folder.entries(), ElementsAre("a.json", "a.mid", "pipe"));
}

INSTANTIATE_TEST_SUITE_P(, OutputsOnEveryDisk, testing::Bool(), [](const auto& of) {
    return std::string(of.param ? "WithSecondNames" : "WithoutSecondNames");
});

class Interruption : public ProgramTest
{
protected:
    /// Sends the signal until the program ends, for at most ten seconds.
    static ProcessResult interrupt(ChildProcess& program, int signal)
    {
        constexpr int tries = 1000;
        for (int i = 0; i < tries && !program.hasEnded(); ++i) {
            program.send(signal);
            pauseShortly();
        }
        if (!program.hasEnded())
            program.send(SIGKILL);
        return program.finish();
    }

    static void expectInterruption(const ProcessResult& result, int exitCode)
    {
        EXPECT_EQ(result.exitCode, exitCode) << "signal " << result.signal;
        EXPECT_EQ(result.err, "velotrine: interrupted; nothing was written\n");
    }
};

TEST_F(Interruption, OfALongRenderingLeavesNoFile)
{
    for (const auto& [signal, exitCode] : {std::pair{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}}) {
        ChildProcess program(velotrineCommand({"render", "--preset", "1", "--seconds", "86400", "--out",
                                               "a.wav", "--midi", "a.mid", "--save-state", "a.json"}),
                             surroundings());
        while (folder.entries().size() < 3 && !program.hasEnded())
            pauseShortly();
        expectInterruption(interrupt(program, signal), exitCode);
        EXPECT_THAT(folder.entries(), IsEmpty());
    }
}

TEST_F(Interruption, LeavesAnOlderFileAlone)
{
    folder.write("a.wav", "older");
    ChildProcess program(
        velotrineCommand({"render", "--preset", "1", "--seconds", "86400", "--out", "a.wav"}),
        surroundings());
    while (folder.entries().size() < 2 && !program.hasEnded())
        pauseShortly();
    expectInterruption(interrupt(program, SIGINT), 130);
    EXPECT_THAT(folder.entries(), ElementsAre("a.wav"));
    EXPECT_EQ(folder.read("a.wav"), "older");
}

TEST_F(Interruption, ByAKillLeavesOlderFilesAsTheyWere)
{
    folder.write("a.wav", "older sound");
    folder.write("a.mid", "older notes");
    ChildProcess program(velotrineCommand({"render", "--preset", "1", "--seconds", "86400", "--out", "a.wav",
                                           "--midi", "a.mid", "--save-state", "a.json"}),
                         surroundings());
    while (folder.entries().size() < 4 && !program.hasEnded())
        pauseShortly();
    program.send(SIGKILL);
    EXPECT_EQ(program.finish().signal, SIGKILL);
    EXPECT_EQ(folder.read("a.wav"), "older sound");
    EXPECT_EQ(folder.read("a.mid"), "older notes");
    EXPECT_THAT(folder.entries(), testing::Not(testing::Contains("a.json")));
}

TEST_F(Interruption, EndsWaitingForAPipeThatNobodyReads)
{
    ChildProcess program(velotrineCommand({"render", "--preset", "1", "--seconds", "1", "--out", "-"}),
                         surroundings());
    constexpr int pipeSize = 65536;
    while (program.bytesWaiting() < pipeSize && !program.hasEnded())
        pauseShortly();
    expectInterruption(interrupt(program, SIGINT), 130);
}

TEST_F(Interruption, EndsWaitingForANamedPipeThatNobodyOpens)
{
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    ChildProcess program(velotrineCommand({"render", "--preset", "1", "--seconds", "0.01", "--out", "pipe"}),
                         surroundings());
    // Long enough to have come to the pipe; should it take longer, the signal comes before, which is as good.
    for (int i = 0; i < 20; ++i)
        pauseShortly();
    expectInterruption(interrupt(program, SIGINT), 130);
    EXPECT_THAT(folder.entries(), ElementsAre("pipe"));
}

} // namespace
} // namespace velotrine
