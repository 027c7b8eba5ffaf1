#pragma once

#include "takes/Take.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace velotrine {

/// What the render thread notes of a take, one value each.
struct TakeRecord
{
    enum class Kind : std::uint8_t
    {
        begin,     ///< a take begins; the value is its sample rate, Hz
        generator, ///< how far the dice have come by then: `bits` is the generator's state
        start,     ///< a value by then
        change,    ///< a value that is another from the cycle at `frame` on
        reached,   ///< the take has come to `frame`; for a log, where no end may follow
        end,       ///< the take ends at `frame`
    };

    std::int64_t frame; ///< from the take's beginning
    std::uint64_t bits; ///< the value's
    Kind kind;
    TakeTarget target; ///< of a start or a change

    [[nodiscard]] double value() const noexcept { return std::bit_cast<double>(bits); }

    bool operator==(const TakeRecord&) const = default;
};

/// Carries records from the render thread to one other. Neither waits: one only writes, the other only reads
/// (a ring with one counter for each of them).
class RecordBuffer
{
public:
    /// Every parameter in each of 400 cycles, a quarter of a second at 48 kHz; half a megabyte.
    static constexpr std::size_t capacity = std::size_t{1} << 14;

    /// How many records find room, at least. Writing thread.
    [[nodiscard]] std::size_t room() const noexcept
    {
        return capacity - (written.load(std::memory_order_relaxed) - taken.load(std::memory_order_acquire));
    }

    /// False where there is no room. Writing thread.
    [[nodiscard]] bool push(const TakeRecord& record) noexcept
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

    std::array<TakeRecord, capacity> records{};
    std::atomic<std::size_t> written{0}; ///< ever
    std::atomic<std::size_t> taken{0};   ///< ever
};

} // namespace velotrine
