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

/// Listens to an instrument on its render thread and notes what changes, for a TakeRecorder on another.
///
/// A take begins where the instrument is silent and its clock stands at the start, so that it holds
/// everything that was heard. It ends when it is no longer wanted, when the sample rate changes, and when its
/// notes find no room because nobody has fetched them for too long; while takes are wanted, the next one
/// begins with the next silence.
class TakeTap
{
public:
    /// Takes are wanted, or no longer wanted. Any thread; seen in the next cycle.
    void setRecording(bool isWanted) noexcept { recordingWanted = isWanted; }

    /// Notes what the process call that has just ended saw. Call it behind each one. Render thread.
    /// @param frames  of that call
    void note(const VelotrineDSPKernel& kernel, int frames) noexcept VELOTRINE_NONBLOCKING;

    /// Where the notes are; for the recorder.
    [[nodiscard]] RecordBuffer& records() noexcept { return buffer; }

private:
    static constexpr auto targetCount = static_cast<std::size_t>(TakeTarget::end);

    /// What a call saw, by target.
    using Values = std::array<double, targetCount>;

    enum class State
    {
        waiting,
        recording,
        ending,
    };

    [[nodiscard]] static Values valuesSeen(const VelotrineDSPKernel& kernel,
                                           int frames) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool beginTake(const VelotrineDSPKernel& kernel,
                                 const Values& now) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool goesOnFromBefore(const Values& now) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool noteChanges(const Values& now) noexcept VELOTRINE_NONBLOCKING;
    [[nodiscard]] bool push(TakeRecord::Kind kind, std::uint64_t bits = 0,
                            TakeTarget target = TakeTarget::end) noexcept VELOTRINE_NONBLOCKING;

    Shared<bool> recordingWanted{false};
    RecordBuffer buffer;

    // Render thread

    State state = State::waiting;
    std::int64_t frame = 0;  ///< of the take, at the cycle that comes
    double sampleRate = 0.0; ///< Hz
    bool hasStarted = false; ///< the transport, in this take
    Values before{};
};

} // namespace velotrine
