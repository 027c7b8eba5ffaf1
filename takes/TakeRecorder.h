#pragma once

#include "takes/RecordBuffer.h"
#include "takes/Take.h"

#include <optional>
#include <vector>

namespace velotrine {

/// Makes takes of what a TakeTap notes. Main thread.
class TakeRecorder
{
public:
    explicit TakeRecorder(RecordBuffer& newRecords) : records(newRecords) {}

    /// Fetches what has been noted. Call it several times a second: notes that find no room end a take.
    void collect();

    /// The takes that have ended, oldest first; each is handed out once. The last change of each is its end.
    [[nodiscard]] std::vector<Take> finishedTakes();

    /// Whether a take has begun that has not ended.
    [[nodiscard]] bool isRecording() const noexcept { return current.has_value(); }

private:
    void receive(const TakeRecord& record);
    void receiveStart(const TakeRecord& record);
    void finish(double frame);

    RecordBuffer& records;
    std::optional<Take> current;
    std::vector<Take> finished;
};

} // namespace velotrine
