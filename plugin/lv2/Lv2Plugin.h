#pragma once

#include "plugin/EmbeddedEditor.h"
#include "plugin/HostedInstrument.h"
#include "plugin/InstrumentHost.h"
#include "plugin/lv2/ControlPorts.h"
#include "plugin/lv2/Lv2Log.h"
#include "plugin/lv2/Lv2Names.h"
#include "plugin/lv2/NoteSequence.h"
#include "plugin/lv2/TimePosition.h"

#include <lv2/core/lv2.h>
#include <lv2/state/state.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace velotrine {

/// The instrument as an LV2 plug-in. Functions run on the threads that the format names, unless they say
/// more.
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

    /// Made at first use and kept to the end: starting JUCE takes ten times as long as opening the editor
    /// again.
    [[nodiscard]] EmbeddedEditor& embeddedEditor();

    [[nodiscard]] bool hasEditor() const noexcept { return editorHost != nullptr; }

    /// From now on edits go to the host through this editor, or nowhere with null. Gestures that are still
    /// open end in the editor before it.
    void setEditorHost(InstrumentHost* host) noexcept;

    [[nodiscard]] const ControlPorts& controlPorts() const noexcept { return ports; }

    /// Takes a port's value as the host shows it to the editor. Counts only while nothing runs: a run reads
    /// the ports itself, and the editor follows the instrument.
    void showPort(ParameterAddress address, float value) noexcept;

private:
    void beginGesture(ParameterAddress address) override;
    void valueChanged(ParameterAddress address, float value) override;
    void endGesture(ParameterAddress address) override;

    template <typename RenderUpTo>
    void applyEvents(RenderUpTo&& renderUpTo) noexcept VELOTRINE_NONBLOCKING;

    const double hostSampleRate;
    const Lv2Log hostLog;
    const TimePosition timePosition;
    const LV2_URID stateKey;
    const LV2_URID stringType;

    ControlPorts ports;
    StereoOutput output;
    const LV2_Atom_Sequence* time = nullptr;
    NoteSequence notes;

    HostTransport transport; ///< as far as the host has reported it
    std::atomic<bool> isActive{false};

    InstrumentHost* editorHost = nullptr;
    HostedInstrument instrument{*this};
    std::unique_ptr<EmbeddedEditor> embedded;
};

} // namespace velotrine
