#include "render/ProgressBar.h"

#include "tests/render/Terminal.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdio>
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

/// Sends standard error elsewhere until it goes out of scope.
class Redirection
{
public:
    explicit Redirection(int descriptor) : before(::dup(STDERR_FILENO))
    {
        std::fflush(stderr);
        ::dup2(descriptor, STDERR_FILENO);
    }

    ~Redirection()
    {
        std::fflush(stderr);
        ::dup2(before, STDERR_FILENO);
        ::close(before);
    }

    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    int before;
};

/// Updates the bar until it is drawn, for at most ten seconds.
std::string drawnBar(ProgressBar& bar, const Terminal& terminal, double fraction)
{
    constexpr int tries = 1000;
    for (int i = 0; i < tries; ++i) {
        bar.update(fraction, 12.0);
        if (auto text = terminal.read(); !text.empty())
            return text;
        ::poll(nullptr, 0, 10);
    }
    return "";
}

TEST(ProgressBar, ShowsOnATerminalHowFarAndHowFastTheWorkIs)
{
    const Terminal terminal;
    const Redirection redirection(terminal.descriptor());
    ProgressBar bar(true);
    EXPECT_THAT(drawnBar(bar, terminal, 0.5),
                AllOf(StartsWith("\r[###############...............]  50 %"), HasSubstr(" x real time")));
}

TEST(ProgressBar, StaysWithinItsFrame)
{
    const Terminal terminal;
    const Redirection redirection(terminal.descriptor());
    ProgressBar bar(true);
    EXPECT_THAT(drawnBar(bar, terminal, 1.5), HasSubstr("[" + std::string(30, '#') + "] 100 %"));
}

TEST(ProgressBar, IsReplacedByALineAtTheEnd)
{
    const Terminal terminal;
    const Redirection redirection(terminal.descriptor());
    {
        ProgressBar bar(true);
        EXPECT_NE(drawnBar(bar, terminal, 0.5), "");
        bar.finish("drums.wav", 32.5);
        EXPECT_THAT(terminal.read(), StartsWith("\r\x1b[Kdrums.wav: 32.5 s of sound, rendered in "));
    }
    EXPECT_EQ(terminal.read(), "");
}

TEST(ProgressBar, WipesItselfAwayWhenTheWorkIsGivenUp)
{
    const Terminal terminal;
    const Redirection redirection(terminal.descriptor());
    {
        ProgressBar bar(true);
        EXPECT_NE(drawnBar(bar, terminal, 0.5), "");
    }
    EXPECT_EQ(terminal.read(), "\r\x1b[K");
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
    const TemporaryFolder folder;
    const int file = ::open(folder.file("errors").c_str(), O_WRONLY | O_CREAT, 0600);
    {
        const Redirection redirection(file);
        ProgressBar bar(true);
        useForAWhile(bar);
    }
    ::close(file);
    EXPECT_EQ(folder.read("errors"), "");
}

TEST(ProgressBar, IsSilentOnATerminalWhenItIsNotWanted)
{
    const Terminal terminal;
    const Redirection redirection(terminal.descriptor());
    {
        ProgressBar bar(false);
        useForAWhile(bar);
    }
    EXPECT_EQ(terminal.read(), "");
}

} // namespace
} // namespace velotrine
