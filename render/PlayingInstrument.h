#pragma once

#include "audiounit/CycleRenderer.h"
#include "audiounit/VelotrineAudioUnit.h"
#include "render/Piece.h"
#include "takes/TakePlayer.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace velotrine {

/// An instrument that plays a piece, cycle by cycle.
class PlayingInstrument
{
public:
    /// @param piece     must outlive it
    /// @param onlyRing  0 to 4: the others play the same notes silently, so that this one's are the same, too
    PlayingInstrument(const Piece& piece, std::optional<int> onlyRing);

    /// How long the next cycle is, in frames.
    [[nodiscard]] int cycleFrames() const noexcept { return player.cycleFrames(); }

    /// What the piece says for the cycle that comes now.
    void follow();

    /// Stops whatever clock runs. The piece says no more from here on.
    void stop();

    /// Renders the cycle that comes now, or as many of its frames as are wanted. Throws WorkError.
    void render(int frames);

    [[nodiscard]] std::span<const float> left() const noexcept { return {leftCycle.data(), framesOfCycle}; }

    [[nodiscard]] std::span<const float> right() const noexcept { return {rightCycle.data(), framesOfCycle}; }

    [[nodiscard]] const VelotrineDSPKernel& kernel() const noexcept { return *unit->dspKernel; }

    [[nodiscard]] bool isSilent() const noexcept { return kernel().voicePool->triggerOrder.empty(); }

private:
    std::shared_ptr<VelotrineAudioUnit> unit = makeAudioUnit();
    TakePlayer player;
    CycleRenderer renderer;
    std::optional<int> onlyRing;
    bool isStopped = false;
    std::vector<float> leftCycle;
    std::vector<float> rightCycle;
    std::size_t framesOfCycle = 0;
};

} // namespace velotrine
