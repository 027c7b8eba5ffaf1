#pragma once

#include "tests/render/AudioFile.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {

/// The program under test with these arguments.
[[nodiscard]] std::vector<std::string> velotrineCommand(std::vector<std::string> arguments);

[[nodiscard]] ProcessResult runVelotrine(std::vector<std::string> arguments,
                                         const ProcessSurroundings& surroundings = {});

/// Tests of the program as somebody runs it, in a folder of the test's own.
class ProgramTest : public testing::Test
{
protected:
    /// In the test's folder, where temporary files go too.
    [[nodiscard]] ProcessSurroundings surroundings() const;

    [[nodiscard]] ProcessResult run(std::vector<std::string> arguments) const;

    /// Renders and expects it to succeed without a word.
    /// @param arguments  what follows "velotrine render"
    void render(std::vector<std::string> arguments) const;

    /// Renders to a.wav and reads it.
    [[nodiscard]] AudioFile sound(std::vector<std::string> arguments) const;

    const TemporaryFolder folder;
};

/// Expects one line on standard error that the program speaks, nothing on standard output, and this exit
/// code.
void expectOneComplaint(const ProcessResult& result, int exitCode);

} // namespace velotrine
