#pragma once

#include "engine/Nonblocking.h"
#include "engine/VelotrineDSPKernel.h"
#include "takes/Take.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace velotrine {

/// Plays a take: makes an instrument as it was when the take began, and changes it before each render cycle
/// as it was changed then. Cycle by cycle: apply(), render cycleFrames() frames, advance(). Where rate and
/// cycles are the take's own, the samples are the same to the last bit.
///
/// Allocates nothing after it is made. The take must outlive it.
class TakePlayer
{
public:
    /// @param sampleRate  at which it is rendered, Hz; a time in frames stays the same time at any rate
    TakePlayer(const Take& newTake, double sampleRate) noexcept;

    /// Makes the kernel as the take begins. It has been set up and has not rendered since; nothing renders.
    void begin(VelotrineDSPKernel& kernel) noexcept;

    /// Changes what is due at the cycle that comes now. Render thread.
    void apply(VelotrineDSPKernel& kernel) noexcept VELOTRINE_NONBLOCKING;

    /// A cycle of so many frames has been rendered.
    void advance(int frames) noexcept VELOTRINE_NONBLOCKING { frame_ += frames; }

    /// As the take says, in frames; valid after begin().
    [[nodiscard]] int cycleFrames() const noexcept VELOTRINE_NONBLOCKING { return cycleFrames_; }

    /// Frames since the beginning.
    [[nodiscard]] std::int64_t frame() const noexcept VELOTRINE_NONBLOCKING { return frame_; }

    /// Bars since the beginning, as of the last apply().
    [[nodiscard]] double bar() const noexcept VELOTRINE_NONBLOCKING { return barAt(frame_); }

    /// The frame at which a bar comes, in the tempo in force as of the last apply(); none while there is no
    /// tempo.
    [[nodiscard]] std::optional<std::int64_t> frameOf(double bar) const noexcept VELOTRINE_NONBLOCKING;

    /// The frame for which the last of what has been done was meant, or 0; it may lie within the cycle
    /// before.
    [[nodiscard]] std::int64_t lastDueFrame() const noexcept VELOTRINE_NONBLOCKING { return lastDueFrame_; }

    /// Whether everything that the take says has been done.
    [[nodiscard]] bool isOver() const noexcept VELOTRINE_NONBLOCKING
    {
        return next == take.changes.size() && rampCount == 0;
    }

private:
    /// A parameter on its way.
    struct Ramp
    {
        ParameterAddress address;
        double startBar;
        double bars;
        double from;
        double to;
    };

    void applyChange(VelotrineDSPKernel& kernel, const TakeChange& change) noexcept VELOTRINE_NONBLOCKING;
    void setOther(VelotrineDSPKernel& kernel, TakeTarget target, double value) noexcept VELOTRINE_NONBLOCKING;
    void startRamp(const VelotrineDSPKernel& kernel, ParameterAddress address,
                   const TakeChange& change) noexcept VELOTRINE_NONBLOCKING;
    void endRamp(ParameterAddress address) noexcept VELOTRINE_NONBLOCKING;
    void moveRamps(VelotrineDSPKernel& kernel) noexcept VELOTRINE_NONBLOCKING;
    void followTempo(const VelotrineDSPKernel& kernel) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool isDue(const TakeTime& time) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] double barAt(std::int64_t frame) const noexcept VELOTRINE_NONBLOCKING;

    const Take& take;
    std::array<bool, parameterCount> isWhole{}; ///< only whole numbers make sense, on ramps, too
    double rate;                                ///< Hz
    double framesPerTake;                       ///< frames at this rate for one of the take's
    int cycleFrames_;
    std::int64_t frame_ = 0;
    std::int64_t lastDueFrame_ = 0;
    std::size_t next = 0; ///< of the take's changes

    // Bars are counted from where the tempo last changed.

    double barThere = 0.0;
    std::int64_t frameThere = 0;
    std::optional<double> framesPerBar; ///< none while there is no tempo, and bars stand still

    std::array<Ramp, parameterCount> ramps{}; ///< the first rampCount of them
    std::size_t rampCount = 0;
};

} // namespace velotrine
