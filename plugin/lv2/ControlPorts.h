#pragma once

#include "engine/AddressSet.h"
#include "engine/Nonblocking.h"
#include "engine/ParameterAddress.h"
#include "engine/Shared.h"
#include "plugin/HostedInstrument.h"

#include <array>
#include <atomic>

namespace velotrine {

/// A host's control ports. A value has two homes, its port and the instrument, and whichever changed last
/// wins:
///
///   port has changed | control is held | state is pending | port rounds the state | who wins
///   -----------------|-----------------|------------------|-----------------------|-----------
///   no               | any             | any              | any                   | instrument
///   yes              | yes             | any              | any                   | instrument
///   yes              | no              | no               | any                   | port
///   yes              | no              | yes              | no                    | port
///   yes              | no              | yes              | yes                   | instrument
///
/// Changed: since it was last looked at. A host that restores only a state goes on showing old values.
/// Held: by a hand in the editor. The port says what the editor wrote to it some moments ago.
/// Pending: a state was restored, and no run has ended since. A host may restore its ports along with it.
/// Rounds: it is the instrument's value but for the six digits that a session keeps of a port.
class ControlPorts
{
public:
    /// Every port says its parameter's initial value, and is connected to nothing.
    ControlPorts();

    /// Where the host keeps a port's value; null for nowhere. Render thread.
    void connect(ParameterAddress address, const float* port) noexcept { connected[address] = port; }

    /// Looks at all connected ports and hands the instrument the values of those that win; then no state is
    /// pending any more, unless one was restored meanwhile. Render thread.
    void applyTo(HostedInstrument& instrument) noexcept VELOTRINE_NONBLOCKING;

    /// The same for one port whose value comes another way, while nothing runs. What is pending stays so.
    /// Main thread.
    void apply(ParameterAddress address, float port,
               HostedInstrument& instrument) noexcept VELOTRINE_NONBLOCKING;

    /// A state has been restored, and is pending. Any thread.
    void stateRestored() noexcept { ++restored; }

    /// Grows whenever a state is no longer pending. Ports may be stale from then on. Any thread.
    [[nodiscard]] unsigned settledStates() const noexcept { return settled; }

    /// Whether the port, when it was last looked at, said something else than this value of the instrument's.
    /// Any thread.
    [[nodiscard]] bool isStale(ParameterAddress address, float value) const noexcept;

    /// The controls that a hand holds in the editor. Any thread.
    SharedAddressSet held;

private:
    std::array<const float*, parameterCount> connected{};
    std::array<Shared<float>, parameterCount> lastValues{}; ///< what each port said when it was looked at
    std::atomic<unsigned> restored{0};
    std::atomic<unsigned> settled{0}; ///< of the restored states; less while one is pending
};

} // namespace velotrine
