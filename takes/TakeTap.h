#pragma once

#include "engine/Nonblocking.h"
#include "engine/Shared.h"
#include "engine/VelotrineDSPKernel.h"
#include "takes/RecordBuffer.h"
#include "takes/Take.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace velotrine {

/// Listens to an instrument on its render thread and notes what changes, for a TakeAssembler on another.
///
/// A take begins with the cycle in which a silent instrument, whose clock stands at the start, begins to
/// play, so that it holds everything that was heard. It ends when the instrument is silent and stands at the
/// start again, when it is no longer wanted, when the sample rate changes, and when its notes find no room
/// because nobody has fetched them for too long.
class TakeTap
{
public:
    /// Takes are wanted, or no longer wanted. Any thread; seen in the next cycle.
    void setRecording(bool isWanted) noexcept { recordingWanted = isWanted; }

    /// Notes what the process call that has just ended saw. Call it behind each one. Render thread.
    /// @param frames  of that call
    void note(const VelotrineDSPKernel& kernel, int frames) noexcept VELOTRINE_NONBLOCKING;

    /// How long the take is so far that is being recorded, in frames. Any thread.
    [[nodiscard]] std::int64_t frames() const noexcept { return frameReached; }

    /// Where the notes are; for the recorder.
    [[nodiscard]] RecordBuffer& records() noexcept { return buffer; }

private:
    static constexpr auto targetCount = static_cast<std::size_t>(TakeTarget::end);

    /// What a call saw, by target.
    using Values = std::array<double, targetCount>;

    enum class State
    {
        waiting, ///< for a start
        recording,
        ending,
    };

    [[nodiscard]] static Values valuesSeen(const VelotrineDSPKernel& kernel,
                                           int frames) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] static bool runs(const Values& values) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool beginTake() noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool noteChanges(const Values& now) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool push(TakeRecord::Kind kind, std::uint64_t bits = 0,
                            TakeTarget target = TakeTarget::end) noexcept VELOTRINE_NONBLOCKING;

    Shared<bool> recordingWanted{false};
    RecordBuffer buffer;

    // Render thread

    State state = State::waiting;
    std::int64_t frame = 0; ///< of the take, at the cycle that comes
    Shared<std::int64_t> frameReached{0};
    double sampleRate = 0.0; ///< Hz

    // What the last call saw and left behind.

    bool stoodAtTheStart = false;
    std::uint64_t generatorBefore = 0;
    double sampleRateBefore = 0.0;
    Values before{};
};

} // namespace velotrine
