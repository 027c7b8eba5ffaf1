#pragma once

#include "engine/OneWayBuffer.h"
#include "takes/Take.h"

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

/// Carries records from the render thread to one other. It holds every parameter in each of 400 cycles, a
/// quarter of a second at 48 kHz; half a megabyte.
using RecordBuffer = OneWayBuffer<TakeRecord, std::size_t{1} << 14>;

} // namespace velotrine
