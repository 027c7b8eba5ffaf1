#include "render/ProgressBar.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

namespace velotrine {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

/// Stands in for standard error until it goes out of scope: a terminal, or a pipe.
class StandardError
{
public:
    enum class Kind
    {
        terminal,
        pipe,
    };

    explicit StandardError(Kind kind)
    {
        std::fflush(stderr);
        int writeEnd = -1;
        if (kind == Kind::terminal) {
            readEnd = ::posix_openpt(O_RDWR | O_NOCTTY);
            if (::grantpt(readEnd) != 0 || ::unlockpt(readEnd) != 0)
                throw std::runtime_error("no terminal could be made");
            writeEnd = ::open(::ptsname(readEnd), O_RDWR | O_NOCTTY);
        } else {
            std::array<int, 2> ends{};
            if (::pipe(ends.data()) != 0)
                throw std::runtime_error("no pipe could be made");
            readEnd = ends[0];
            writeEnd = ends[1];
        }
        ::dup2(writeEnd, STDERR_FILENO);
        ::close(writeEnd);
    }

    ~StandardError()
    {
        std::fflush(stderr);
        ::dup2(before, STDERR_FILENO);
        ::close(before);
        ::close(readEnd);
    }

    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    /// What has arrived there; empty when nothing has.
    std::string read() const
    {
        std::fflush(stderr);
        std::array<char, 4096> text{};
        pollfd waiting{readEnd, POLLIN, 0};
        if (::poll(&waiting, 1, 0) < 1)
            return "";
        const auto count = ::read(readEnd, text.data(), text.size());
        return {text.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
    }

private:
    int before = ::dup(STDERR_FILENO);
    int readEnd = -1;
};

/// Updates the bar until it is drawn, for at most ten seconds.
std::string drawnBar(ProgressBar& bar, const StandardError& standardError, double fraction)
{
    constexpr int tries = 1000;
    for (int i = 0; i < tries; ++i) {
        bar.update(fraction, 12.0);
        if (auto text = standardError.read(); !text.empty())
            return text;
        ::poll(nullptr, 0, 10);
    }
    return "";
}

TEST(ProgressBar, ShowsOnATerminalHowFarAndHowFastTheWorkIs)
{
    const StandardError standardError(StandardError::Kind::terminal);
    ProgressBar bar(true);
    EXPECT_THAT(drawnBar(bar, standardError, 0.5),
                AllOf(StartsWith("\r[###############...............]  50 %"), HasSubstr(" x real time")));
}

TEST(ProgressBar, StaysWithinItsFrame)
{
    const StandardError standardError(StandardError::Kind::terminal);
    ProgressBar bar(true);
    EXPECT_THAT(drawnBar(bar, standardError, 1.5), HasSubstr("[" + std::string(30, '#') + "] 100 %"));
}

TEST(ProgressBar, IsReplacedByALineAtTheEnd)
{
    const StandardError standardError(StandardError::Kind::terminal);
    {
        ProgressBar bar(true);
        EXPECT_NE(drawnBar(bar, standardError, 0.5), "");
        bar.finish("drums.wav", 32.5);
        EXPECT_THAT(standardError.read(), StartsWith("\r\x1b[Kdrums.wav: 32.5 s of sound, rendered in "));
    }
    EXPECT_EQ(standardError.read(), "");
}

TEST(ProgressBar, WipesItselfAwayWhenTheWorkIsGivenUp)
{
    const StandardError standardError(StandardError::Kind::terminal);
    {
        ProgressBar bar(true);
        EXPECT_NE(drawnBar(bar, standardError, 0.5), "");
    }
    EXPECT_EQ(standardError.read(), "\r\x1b[K");
}

void useForAWhile(ProgressBar& bar)
{
    // Longer than the interval at which a bar would be drawn.
    for (int i = 0; i < 30; ++i) {
        bar.update(0.5, 12.0);
        ::poll(nullptr, 0, 10);
    }
    bar.finish("drums.wav", 32.5);
}

TEST(ProgressBar, IsSilentWhereStandardErrorIsNoTerminal)
{
    const StandardError standardError(StandardError::Kind::pipe);
    {
        ProgressBar bar(true);
        useForAWhile(bar);
    }
    EXPECT_EQ(standardError.read(), "");
}

TEST(ProgressBar, IsSilentOnATerminalWhenItIsNotWanted)
{
    const StandardError standardError(StandardError::Kind::terminal);
    {
        ProgressBar bar(false);
        useForAWhile(bar);
    }
    EXPECT_EQ(standardError.read(), "");
}

} // namespace
} // namespace velotrine
