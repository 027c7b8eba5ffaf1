// What the application does on the JACK server's thread while hands are at work, seen by a library that is
// loaded before all else (tests/render-thread-watch).

#include "tests/host/windows/ApplicationTest.h"
#include "tests/host/windows/KeptTakes.h"
#include "tests/support/JackServer.h"
#include "tests/support/RenderThreadLog.h"

#include <algorithm>
#include <cstdlib>

namespace velotrine {
namespace {

class WatchedApplication : public ApplicationTest
{
protected:
    /// @param plant  what the watch does itself in each call, as if the application did; empty for nothing
    void launchWatched(const std::string& plant)
    {
        environment = {{"HOME", folder.path().string()},
                       {"LD_PRELOAD", VELOTRINE_RENDER_THREAD_WATCH},
                       {"VELOTRINE_WATCH_LOG", folder.file("log")},
                       {"VELOTRINE_WATCH_PLANT", plant}};
        launchForUse();
    }

    RenderThreadLog endWatched()
    {
        pressKey("ctrl+q");
        EXPECT_EQ(end().exitCode, 0);
        return RenderThreadLog(folder.read("log"));
    }

    JackServer server;
};

TEST_F(WatchedApplication, DoesNothingForbiddenOnTheRenderThread)
{
    const auto* const wanted = std::getenv("VELOTRINE_WATCH_SECONDS");
    const int seconds = wanted != nullptr ? std::max(1, std::atoi(wanted)) : 6;
    launchWatched("");
    pressKey("ctrl+c");
    constexpr int turn = 3;
    for (int done = 0; done < seconds; done += turn) {
        pressKey("space"); // plays, and in the next turn does not
        turnThings(turn);
        pressKey("ctrl+v");
        pressKey("ctrl+z");
        pressKey("ctrl+k");
    }
    EXPECT_FALSE(keptTakes(folder.path(), ".wav").empty()) << "it has played";
    const auto log = endWatched();
    EXPECT_EQ(log.findings, 0) << log.text;
    constexpr int leastCallsASecond = 40; // of 1,024 frames
    EXPECT_GE(log.calls, seconds * leastCallsASecond);
}

TEST_F(WatchedApplication, IsSeenDoingWhatIsPlanted)
{
    launchWatched("malloc");
    runMessagesFor(1.0);
    const auto log = endWatched();
    EXPECT_GE(log.calls, 1);
    EXPECT_GE(log.findings, log.calls);
    EXPECT_NE(log.text.find("on the render thread: malloc\n"), std::string::npos) << log.text;
}

} // namespace
} // namespace velotrine
