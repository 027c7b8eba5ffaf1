#pragma once

namespace velotrine {

/// Counts how often its thread takes memory from the heap or gives some back while it lives. One at a time
/// on a thread.
class AllocationCounter
{
public:
    AllocationCounter() noexcept;
    ~AllocationCounter();
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;

    [[nodiscard]] int count() const noexcept;
};

} // namespace velotrine
