#pragma once

#include "engine/ParameterAddress.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace velotrine {

/// Edits on their way from the main thread to a host that takes them on its render thread. One place for each
/// parameter: however late the host is, no gesture stays open, no last value is lost, and nothing overflows.
/// Neither side waits.
class PendingEdits
{
public:
    // Main thread.

    void beginGesture(ParameterAddress address) noexcept { held.fetch_or(bitOf(address)); }

    void setValue(ParameterAddress address, float value) noexcept
    {
        values[address].store(value, std::memory_order_relaxed);
        edited.fetch_or(bitOf(address));
    }

    void endGesture(ParameterAddress address) noexcept { held.fetch_and(~bitOf(address)); }

    /// Hands what has happened since the last call to the receiver: begin(address), value(address, value),
    /// end(address), each parameter's in this order. Each answers whether it took it; what it did not take
    /// comes again. One thread at a time.
    template <typename Receiver>
    void handOver(Receiver&& receiver) noexcept
    {
        // Only where there is something to take: an exchange costs more than all else of a call without
        // edits.
        const auto nowEdited = edited.load() != 0 ? edited.exchange(0) : 0;
        const auto nowHeld = held.load();
        const auto concerned = nowEdited | (nowHeld ^ toldHeld);
        for (ParameterAddress address = 0; concerned != 0 && address < parameterCount; ++address) {
            const auto bit = bitOf(address);
            if ((concerned & bit) != 0 &&
                !handOverOne(address, (nowEdited & bit) != 0, (nowHeld & bit) != 0, receiver))
                edited.fetch_or(nowEdited & bit);
        }
    }

private:
    [[nodiscard]] static constexpr std::uint64_t bitOf(ParameterAddress address) noexcept
    {
        static_assert(parameterCount <= 64);
        return std::uint64_t{1} << address;
    }

    template <typename Receiver>
    [[nodiscard]] bool handOverOne(ParameterAddress address, bool isEdited, bool isHeld,
                                   Receiver& receiver) noexcept
    {
        const auto bit = bitOf(address);
        if ((toldHeld & bit) == 0) {
            if (!receiver.begin(address))
                return false;
            toldHeld |= bit;
        }
        if (isEdited && !receiver.value(address, values[address].load(std::memory_order_relaxed)))
            return false;
        if (!isHeld) {
            if (!receiver.end(address))
                return true; // the value is told; the gesture's end comes with the next call
            toldHeld &= ~bit;
        }
        return true;
    }

    std::atomic<std::uint64_t> held{0};   ///< controls that are held now
    std::atomic<std::uint64_t> edited{0}; ///< values that the host has not been told
    std::array<std::atomic<float>, parameterCount> values{};
    std::uint64_t toldHeld = 0; ///< controls that the host believes to be held; for handOver()
};

} // namespace velotrine
