#include "tests/render/ProgramTest.h"
#include "tests/render/Terminal.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace velotrine {
namespace {

using testing::HasSubstr;

class OnATerminal : public ProgramTest
{
protected:
    /// @param stream  the program's standard output or standard error, which is the terminal then
    [[nodiscard]] ProcessResult runWith(int stream, std::vector<std::string> arguments) const
    {
        auto where = surroundings();
        where.beforeStart = [stream, descriptor = terminal.descriptor()] { ::dup2(descriptor, stream); };
        return runVelotrine(std::move(arguments), where);
    }

    const Terminal terminal;
};

TEST_F(OnATerminal, TheProgramSaysWhatCameOfARendering)
{
    const auto result = runWith(
        STDERR_FILENO, {"render", "--preset", "1", "--seconds", "1.5", "--tail", "none", "--out", "a.wav"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(terminal.read(), HasSubstr("a.wav: 1.5 s of sound, rendered in "));
}

TEST_F(OnATerminal, TheProgramSaysNothingWhenItShallBeQuiet)
{
    const auto result =
        runWith(STDERR_FILENO, {"render", "--preset", "1", "--seconds", "1.5", "--quiet", "--out", "a.wav"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(terminal.read(), "");
}

TEST_F(OnATerminal, TheProgramDoesNotPrintSound)
{
    const auto result =
        runWith(STDOUT_FILENO, {"render", "--preset", "1", "--seconds", "0.01", "--out", "-"});
    expectOneComplaint(result, 2);
    EXPECT_EQ(result.err,
              "velotrine: --out: standard output is a terminal; send it on with | or >, or give a "
              "file name\n");
    EXPECT_EQ(terminal.read(), "");
}

} // namespace
} // namespace velotrine
