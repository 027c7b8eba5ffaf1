#pragma once

#include <string>

namespace velotrine {

/// A terminal that nobody sees: what is written to it can be read back.
class Terminal
{
public:
    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// The side that a program takes for its terminal.
    [[nodiscard]] int descriptor() const noexcept { return programSide; }

    /// What has been written since the last time; empty when nothing has. Lines end in "\r\n".
    [[nodiscard]] std::string read() const;

private:
    int screenSide = -1;
    int programSide = -1;
};

} // namespace velotrine
