#pragma once

namespace velotrine {

/// While it lives, its thread runs out of memory. One at a time on a thread.
class AllocationFailure
{
public:
    enum class Then
    {
        succeed,
        fail
    };

    /// @param allocationsBefore  how many go well first
    /// @param then               what becomes of those after the first that fails
    AllocationFailure(int allocationsBefore, Then then) noexcept;
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    /// Whether any allocation has failed.
    [[nodiscard]] bool hasHappened() const noexcept;
};

} // namespace velotrine
