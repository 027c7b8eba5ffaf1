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
    const auto from = options.fromBar > 0.0 ? walk.frameOf(options.fromBar, "--from") : 0;
    if (options.seconds)
        return {from, from + std::max<std::int64_t>(1, std::llround(*options.seconds * sampleRate))};
    if (options.bars || options.takePath.empty()) {
        const auto end = walk.frameOf(options.fromBar + options.bars.value_or(defaultBars), "--bars");
        return {from, std::max(end, from + 1)};
    }
    const auto end = walk.end();
    if (from >= end && from > 0)
        throw UsageError("--from", "the take has ended by then");
    return {from, std::max(end, from + 1)};
}

} // namespace velotrine
