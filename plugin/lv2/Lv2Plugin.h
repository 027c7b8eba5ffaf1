#pragma once

#include "engine/AddressSet.h"
#include "engine/Nonblocking.h"
#include "plugin/EmbeddedEditor.h"
#include "plugin/HostedInstrument.h"
#include "plugin/InstrumentHost.h"
#include "plugin/lv2/Lv2Log.h"
#include "plugin/lv2/Lv2Names.h"
#include "plugin/lv2/TimePosition.h"

#include <lv2/core/lv2.h>
#include <lv2/state/state.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace velotrine {

/// The instrument as an LV2 plug-in. Functions without a word on threads run where the format says.
///
/// Values have two homes, the host's control ports and the instrument. What changed last wins: a port counts
/// when its value is another than at the run before, so that a host which restores its ports and the state in
/// whichever order gets both, and a host which restores only the state does not have it overwritten by ports
/// that still show what was before. The editor then writes the state's values to these ports. Where both say
/// the same but for a session's rounding of the ports, the state is right.
class Lv2Plugin final : private InstrumentHost
{
public:
    Lv2Plugin(double sampleRate, const LV2_URID_Map& map, const Lv2Log& log);

    void connectPort(std::uint32_t port, void* data) noexcept;
    void activate();
    void run(std::uint32_t frames) noexcept VELOTRINE_NONBLOCKING;
    void deactivate();

    LV2_State_Status save(LV2_State_Store_Function store, LV2_State_Handle handle) const;
    LV2_State_Status restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle);

    // For the editor. Main thread.

    [[nodiscard]] HostedInstrument& hostedInstrument() noexcept { return instrument; }

    /// Made with the first use and kept to the end: to start JUCE takes ten times as long as to open the
    /// editor again.
    [[nodiscard]] EmbeddedEditor& embeddedEditor();

    [[nodiscard]] bool hasEditor() const noexcept { return editorHost != nullptr; }

    /// Tells one editor's way to the host of edits from now on; none with null. What the one before still
    /// held is let go.
    void setEditorHost(InstrumentHost* host) noexcept;

    /// Grows whenever the first run after a restored state is done: the ports that are not what the
    /// instrument has are then stale.
    [[nodiscard]] unsigned settledStates() const noexcept { return settled; }

    /// What the host's port said at the last run.
    [[nodiscard]] float portValue(ParameterAddress address) const noexcept { return portValues[address]; }

    /// Takes what the host shows the editor of a port. A port reaches the instrument when it runs, and the
    /// editor follows the instrument; only while nothing runs, this is the way.
    void showPort(ParameterAddress address, float value) noexcept;

private:
    void beginGesture(ParameterAddress address) override;
    void valueChanged(ParameterAddress address, float value) override;
    void endGesture(ParameterAddress address) override;

    void applyPorts() noexcept VELOTRINE_NONBLOCKING;
    void applyPort(ParameterAddress address, float value) noexcept VELOTRINE_NONBLOCKING;
    template <typename RenderUpTo>
    void applyEvents(RenderUpTo&& renderUpTo) noexcept VELOTRINE_NONBLOCKING;

    const double hostSampleRate;
    const Lv2Log hostLog;
    const TimePosition timePosition;
    const LV2_URID stateKey;
    const LV2_URID stringType;

    std::array<const float*, parameterCount> controls{};
    float* left = nullptr;
    float* right = nullptr;
    const LV2_Atom_Sequence* time = nullptr;

    HostTransport transport; ///< as far as the host has spoken of it
    std::array<std::atomic<float>, parameterCount> portValues{};
    std::atomic<unsigned> restored{0};
    std::atomic<unsigned> settled{0};
    std::atomic<bool> isActive{false};

    /// Controls that a hand holds in the editor. What their ports say is what the editor wrote to them some
    /// moments ago.
    SharedAddressSet held;

    InstrumentHost* editorHost = nullptr;
    HostedInstrument instrument{*this};
    std::unique_ptr<EmbeddedEditor> embedded;
};

} // namespace velotrine
