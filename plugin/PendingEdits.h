#pragma once

#include "engine/AddressSet.h"
#include "engine/ParameterAddress.h"

#include <array>
#include <atomic>

namespace velotrine {

/// Edits on their way from the main thread to a host that takes them on its render thread. One slot for each
/// parameter: however late the host is, no gesture stays open, no last value is lost, and nothing overflows.
/// Neither side waits.
class PendingEdits
{
public:
    // Main thread.

    void beginGesture(ParameterAddress address) noexcept { held.insert(address); }

    void setValue(ParameterAddress address, float value) noexcept
    {
        values[address].store(value, std::memory_order_relaxed);
        edited.insert(address);
    }

    void endGesture(ParameterAddress address) noexcept { held.erase(address); }

    /// Hands what has happened since the last call to the receiver: begin(address), value(address, value),
    /// end(address), in this order for each parameter. Each returns whether the host took it; what it did not
    /// take comes again. One thread at a time.
    template <typename Receiver>
    void handOver(Receiver&& receiver) noexcept
    {
        const auto nowEdited = edited.takeAll();
        const auto nowHeld = held.load();
        for (const auto address : nowEdited | (nowHeld ^ toldHeld))
            if (!handOverOne(address, nowEdited.contains(address), nowHeld.contains(address), receiver) &&
                nowEdited.contains(address))
                edited.insert(address);
    }

private:
    template <typename Receiver>
    [[nodiscard]] bool handOverOne(ParameterAddress address, bool isEdited, bool isHeld,
                                   Receiver& receiver) noexcept
    {
        if (!toldHeld.contains(address)) {
            if (!receiver.begin(address))
                return false;
            toldHeld.insert(address);
        }
        if (isEdited && !receiver.value(address, values[address].load(std::memory_order_relaxed)))
            return false;
        if (!isHeld) {
            if (!receiver.end(address))
                return true; // the value is told; the gesture's end comes with the next call
            toldHeld.erase(address);
        }
        return true;
    }

    SharedAddressSet held;   ///< parameters in a gesture now
    SharedAddressSet edited; ///< values that the host has not been told
    std::array<std::atomic<float>, parameterCount> values{};
    AddressSet toldHeld; ///< parameters in a gesture as far as the host knows; for handOver()
};

} // namespace velotrine
