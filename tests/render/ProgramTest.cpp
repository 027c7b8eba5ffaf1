#include "tests/render/ProgramTest.h"

#include <algorithm>
#include <utility>

#include <gmock/gmock.h>

namespace velotrine {

std::vector<std::string> velotrineCommand(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), VELOTRINE_PROGRAM);
    return arguments;
}

ProcessResult runVelotrine(std::vector<std::string> arguments, const ProcessSurroundings& surroundings)
{
    return runProcess(velotrineCommand(std::move(arguments)), surroundings);
}

ProcessSurroundings ProgramTest::surroundings() const
{
    return {.folder = folder.path().string(),
            .environment = {{"TMPDIR", folder.path().string()}},
            .beforeStart = {}};
}

ProcessResult ProgramTest::run(std::vector<std::string> arguments) const
{
    return runVelotrine(std::move(arguments), surroundings());
}

void ProgramTest::render(std::vector<std::string> arguments) const
{
    arguments.insert(arguments.begin(), "render");
    const auto result = run(std::move(arguments));
    EXPECT_EQ(result.exitCode, 0) << "signal " << result.signal;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
}

AudioFile ProgramTest::sound(std::vector<std::string> arguments) const
{
    arguments.insert(arguments.end(), {"--out", "a.wav"});
    render(std::move(arguments));
    return readAudioFile(folder.file("a.wav"));
}

void expectOneComplaint(const ProcessResult& result, int exitCode)
{
    EXPECT_EQ(result.exitCode, exitCode) << "signal " << result.signal;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, testing::StartsWith("velotrine: "));
    EXPECT_TRUE(result.err.ends_with('\n')) << result.err;
    EXPECT_EQ(std::ranges::count(result.err, '\n'), 1) << result.err;
    const auto isControl = [](unsigned char c) { return (c < ' ' && c != '\n') || c == 127; };
    EXPECT_FALSE(std::ranges::any_of(result.err, isControl)) << result.err;
}

} // namespace velotrine
