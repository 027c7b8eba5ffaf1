// That the preset rtsan sees what must never happen on the render thread: each test does it there, by a
// host's closure, and has to die of it. No other preset builds this.

#include "audiounit/CycleRenderer.h"
#include "tests/support/TestInstrument.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <unistd.h>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// Renders a cycle under a host that does something of its own when it is asked for its transport.
void renderUnderAHostThat(const std::function<void()>& does)
{
    const auto unit = makePlayingInstrument();
    setValue(*unit, "sync", 1.0f);
    unit->setTransportStateBlock([&does](auto...) {
        does();
        return true;
    });
    unit->allocateRenderResources();
    CycleRenderer renderer;
    renderer.setup(unit->renderBlock());
    std::array<float, 64> left{};
    std::array<float, 64> right{};
    renderer.render({left.data(), right.data()}, static_cast<int>(left.size()));
}

TEST(RealtimeSanitizerDeathTest, AnAllocationOnTheRenderThreadEndsTheProgram)
{
    // Through a pointer that may change: the compiler would leave out what it sees to be of no use.
    static void* (*volatile take)(std::size_t) = std::malloc;
    EXPECT_DEATH(renderUnderAHostThat([] { std::free(take(16)); }),
                 "unsafe function `malloc` in real-time context");
}

TEST(RealtimeSanitizerDeathTest, ALockOnTheRenderThreadEndsTheProgram)
{
    std::mutex mutex;
    EXPECT_DEATH(renderUnderAHostThat([&mutex] { const std::scoped_lock lock(mutex); }),
                 "unsafe function `pthread_mutex_lock` in real-time context");
}

TEST(RealtimeSanitizerDeathTest, ASystemCallOnTheRenderThreadEndsTheProgram)
{
    EXPECT_DEATH(renderUnderAHostThat([] { usleep(1); }), "unsafe function `usleep` in real-time context");
}

TEST(RealtimeSanitizer, AHostThatDoesNothingOfTheKindIsLetBe)
{
    int asked = 0;
    renderUnderAHostThat([&asked] { ++asked; });
    EXPECT_GT(asked, 0);
}

} // namespace
} // namespace velotrine
