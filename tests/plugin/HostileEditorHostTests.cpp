#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/HostileHost.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace velotrine {
namespace {

using namespace std::chrono_literals;

/// VELOTRINE_LIVES in the environment says how many; fewer than a night has time for, unless told otherwise.
int lives()
{
    const auto* const wanted = std::getenv("VELOTRINE_LIVES");
    return wanted != nullptr ? std::max(50, std::atoi(wanted)) : 50;
}

long openDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

/// What the process has in memory, in KiB.
long residentKibibytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (long size = 0; word == "VmRSS:" && status >> size)
            return size;
    return 0;
}

/// Sanitizers hold back what was freed, to see it used after that. Where they run, one for leaks does, too.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitizerKeepsMemory = true;
#else
constexpr bool sanitizerKeepsMemory = false;
#endif

template <typename Plugin>
class HostileEditorHost : public testing::Test
{};

TYPED_TEST_SUITE(HostileEditorHost, EveryFormat, FormatNames);

TYPED_TEST(HostileEditorHost, LeavesNothingBehindAfterManyLives)
{
    const auto& display = VirtualDisplay::shared();
    const auto live = [&display] {
        const auto window = display.makeWindow(editorWidth, editorHeight);
        {
            TypeParam plugin;
            ASSERT_TRUE(plugin.openEditor(window));
            ASSERT_TRUE(plugin.start(sampleRate, 512));
            plugin.runLoop(10ms);
            EXPECT_TRUE(playedBy(plugin, 512, rolling).isInBounds());
            plugin.closeEditor();
        }
        display.destroyWindow(window);
    };
    // Until whatever is made once is there.
    for (int i = 0; i < 20; ++i)
        live();
    const auto descriptors = openDescriptors();
    const auto memory = residentKibibytes();
    for (int i = 0; i < lives(); ++i)
        live();
    EXPECT_EQ(openDescriptors(), descriptors);
    if (!sanitizerKeepsMemory) {
        // An editor that stays in memory is far more than this each time.
        EXPECT_LT(residentKibibytes() - memory, 2048 + lives() * 2);
    }
}

} // namespace
} // namespace velotrine
