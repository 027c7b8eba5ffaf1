#pragma once

#include "takes/RecordBuffer.h"
#include "takes/Take.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace velotrine {

/// Puts takes together from the records of a TakeTap. One thread, not the render thread.
class TakeAssembler
{
public:
    /// @param record  they come in the order in which they were noted
    void add(const TakeRecord& record);

    /// The takes that have ended, oldest first; each is handed out once. The last change of each is its end.
    [[nodiscard]] std::vector<Take> finishedTakes();

    /// Whether a take has begun that has not ended.
    [[nodiscard]] bool isRecording() const noexcept { return current.has_value(); }

    /// The take that has begun and has not ended, as if it ended now; none where there is none.
    /// @param frames  its length so far, if that is known to be more than the records say
    [[nodiscard]] std::optional<Take> takeSoFar(std::int64_t frames = 0) const;

private:
    void addStart(const TakeRecord& record);
    void finish(double frame);

    std::optional<Take> current;
    std::int64_t framesReached = 0; ///< by the current take
    std::vector<Take> finished;
};

} // namespace velotrine
