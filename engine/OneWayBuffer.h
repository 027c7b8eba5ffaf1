#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace velotrine {

/// Carries records from one thread to another. Neither waits: one only writes, the other only reads (a ring
/// with one counter for each of them).
template <typename Record, std::size_t size>
class OneWayBuffer
{
public:
    static constexpr std::size_t capacity = size;

    /// How many records find room, at least. Writing thread.
    [[nodiscard]] std::size_t room() const noexcept
    {
        return capacity - (written.load(std::memory_order_relaxed) - taken.load(std::memory_order_acquire));
    }

    /// False where there is no room. Writing thread.
    [[nodiscard]] bool push(const Record& record) noexcept
    {
        if (room() == 0)
            return false;
        const auto count = written.load(std::memory_order_relaxed);
        records[count % capacity] = record;
        written.store(count + 1, std::memory_order_release);
        return true;
    }

    /// Hands every record that is there to the receiver, in order. Reading thread.
    template <typename Receiver>
    void takeAll(Receiver&& receiver)
    {
        const auto end = written.load(std::memory_order_acquire);
        for (auto count = taken.load(std::memory_order_relaxed); count != end; ++count) {
            receiver(records[count % capacity]);
            taken.store(count + 1, std::memory_order_release);
        }
    }

private:
    static_assert(std::atomic<std::size_t>::is_always_lock_free);

    std::array<Record, capacity> records{};
    std::atomic<std::size_t> written{0}; ///< ever
    std::atomic<std::size_t> taken{0};   ///< ever
};

} // namespace velotrine
