#include "render/PieceLength.h"

#include "commandline/Errors.h"
#include "takes/TakePlayer.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

/// Goes through a take without a sound, to see what comes when.
class Walk
{
public:
    Walk(const Take& take, int sampleRate)
        : player(take, sampleRate), longest(std::llround(maxRenderSeconds * sampleRate))
    {
        player.begin(kernel);
        player.apply(kernel);
    }

    /// The first frame of the cycle that comes now or later and holds this frame.
    [[nodiscard]] std::int64_t cycleWith(std::int64_t frame) const
    {
        const auto ahead = frame - player.frame();
        return ahead < 0 ? player.frame() : frame - ahead % player.cycleFrames();
    }

    /// The frame at which a bar comes. Bars are asked for in their order.
    std::int64_t frameOf(double bar, const char* option)
    {
        for (;;) {
            // The tempo holds for the cycle that comes now, and for ever where nothing more happens.
            const auto frame = player.frameOf(bar);
            if (frame && (player.isOver() || *frame <= player.frame() + player.cycleFrames()))
                return withinADay(*frame, option);
            if (!frame && player.isOver())
                throw UsageError(option, "this bar never comes, since the host in the take has no tempo");
            step(option);
        }
    }

    /// The frame at which the last thing happens.
    std::int64_t end()
    {
        while (!player.isOver())
            step("--take");
        return player.lastDueFrame();
    }

private:
    void step(const char* option)
    {
        (void)withinADay(player.frame(), option);
        player.advance(player.cycleFrames());
        player.apply(kernel);
    }

    [[nodiscard]] std::int64_t withinADay(std::int64_t frame, const char* option) const
    {
        if (frame > longest)
            throw UsageError(option, "the piece would last longer than a day");
        return frame;
    }

    VelotrineDSPKernel kernel;
    TakePlayer player;
    std::int64_t longest; ///< frames
};

} // namespace

PieceFrames framesOf(const Take& take, const RenderOptions& options, int sampleRate)
{
    Walk walk(take, sampleRate);
    PieceFrames frames{.from = 0, .barLine = 0, .end = 0};
    std::int64_t start = 0;
    if (options.fromBar > 0.0) {
        start = walk.frameOf(options.fromBar, "--from");
        // A frame's phase is that at its end: the bar's first is one behind the bar line.
        frames.barLine = start - 1;
        frames.from = walk.cycleWith(frames.barLine);
    }
    std::int64_t end = 0;
    if (options.seconds) {
        end = start + std::llround(*options.seconds * sampleRate);
    } else if (options.bars || options.takePath.empty()) {
        end = walk.frameOf(options.fromBar + options.bars.value_or(defaultBars), "--bars");
    } else {
        end = walk.end();
        if (start > 0 && start >= end)
            throw UsageError("--from", "the take has ended by then");
    }
    frames.end = frames.from + std::max<std::int64_t>(1, end - start);
    return frames;
}

} // namespace velotrine
