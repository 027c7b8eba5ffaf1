// What the plug-in does on the render thread of a host that others wrote, seen by a library that is loaded
// before all else (tests/render-thread-watch).

#include "audiounit/Parameters.h"
#include "tests/real-hosts/JackConductor.h"
#include "tests/real-hosts/JalvProcess.h"
#include "tests/support/RenderThreadLog.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <random>
#include <stop_token>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr int cyclesPerSecond = cyclesIn(1.0);

/// VELOTRINE_WATCH_SECONDS in the environment says how long; four seconds unless told otherwise.
int watchSeconds()
{
    const auto* const wanted = std::getenv("VELOTRINE_WATCH_SECONDS");
    return wanted != nullptr ? std::max(1, std::atoi(wanted)) : 4;
}

struct Watch
{
    RenderThreadLog log;
    bool sounded = false;
};

/// Gives one parameter after the other another value, and now and then loads a state.
void moveEverything(const std::stop_token& stop, const JalvProcess& jalv)
{
    using Distribution = std::uniform_real_distribution<float>;
    std::mt19937 random(1);
    for (unsigned i = 0; !stop.stop_requested(); ++i) {
        const auto& parameter = parameterTable()[i % parameterCount];
        const float value = Distribution(parameter.minValue, parameter.maxValue)(random);
        jalv.type(i % 20 != 0 ? parameter.identifier + " = " + std::to_string(value)
                              : "preset urn:velotrine:state" + std::to_string(i / 20 % 2));
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

/// Plays in jalv for so long, while all parameters move and states are loaded.
/// @param plant  what the watch does itself in each call, as if the plug-in did; empty for nothing
Watch watchJalv(int seconds, const std::string& plant)
{
    const TemporaryFolder folder;
    bool sounded = false;
    {
        const JalvProcess jalv({{"activity", 1}, {"calories", 1}, {"probR1", 1}, {"probR2", 1}, {"bpm", 300}},
                               {{"LD_PRELOAD", VELOTRINE_RENDER_THREAD_WATCH},
                                {"VELOTRINE_WATCH_LOG", folder.file("log")},
                                {"VELOTRINE_WATCH_PLANT", plant}},
                               {stateWithVolume(0.5), stateWithVolume(1.0)});
        JackConductor conductor;
        if (!conductor.listenTo("velotrine"))
            throw std::runtime_error("jalv does not come");
        const std::jthread hand(moveEverything, std::cref(jalv));
        // The transport starts and stops every few seconds, which is as long as a take may last.
        constexpr int longestTake = 4;
        for (int done = 0; done < seconds; done += longestTake) {
            const auto end = std::min(longestTake, seconds - done) * cyclesPerSecond;
            const JackScore score{.start = 10,
                                  .tempoChange = end / 2,
                                  .stop = end - 10,
                                  .end = end,
                                  .tempo = 240.0,
                                  .laterTempo = 97.0};
            const auto take = conductor.perform(score, false);
            const auto isSound = [](float sample) { return sample != 0.0f; };
            sounded = sounded || std::ranges::any_of(take.left, isSound);
        }
    }
    return {.log = RenderThreadLog(folder.read("log")), .sounded = sounded};
}

TEST(RenderThreadWatch, SeesNothingInThePlugin)
{
    const auto seconds = watchSeconds();
    const auto watch = watchJalv(seconds, "");
    EXPECT_EQ(watch.log.findings, 0) << watch.log.text;
    EXPECT_GE(watch.log.calls, (seconds - 1) * cyclesPerSecond);
    EXPECT_TRUE(watch.sounded);
}

TEST(RenderThreadWatch, SeesWhatIsPlanted)
{
    for (const auto& [plant, call] : {std::pair{"malloc", "on the render thread: malloc\n"},
                                      {"lock", "on the render thread: pthread_mutex_lock\n"},
                                      {"sleep", "on the render thread: nanosleep\n"}}) {
        const auto log = watchJalv(1, plant).log;
        EXPECT_GE(log.findings, log.calls) << plant;
        EXPECT_NE(log.text.find(call), std::string::npos) << log.text;
    }
}

} // namespace
} // namespace velotrine
