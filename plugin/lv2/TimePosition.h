#pragma once

#include "engine/Nonblocking.h"
#include "plugin/HostTransport.h"

#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>

namespace velotrine {

/// Reads an LV2 host's transport. A host reports it only when something changes, and then perhaps only what
/// has changed.
class TimePosition
{
public:
    /// Main thread.
    explicit TimePosition(const LV2_URID_Map& map);

    /// Updates the transport with what an event reports; leaves what the event does not mention, or gives in
    /// a form that the format does not know. False for an event of another kind. Render thread.
    bool update(HostTransport& transport, const LV2_Atom& event) const noexcept VELOTRINE_NONBLOCKING;

    [[nodiscard]] bool isSequence(const LV2_Atom& atom) const noexcept { return atom.type == sequence; }

private:
    [[nodiscard]] double number(const LV2_Atom& atom, double fallback) const noexcept VELOTRINE_NONBLOCKING;

    LV2_URID sequence, object, blank, resource;
    LV2_URID integer, longInteger, floating, doubleFloating;
    LV2_URID position, speed, beatsPerMinute, beatsPerBar, beatUnit;
};

} // namespace velotrine
