#pragma once

#include "engine/Nonblocking.h"
#include "plugin/HostTransport.h"

#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>

namespace velotrine {

/// Reads what an LV2 host says of its transport. A host says it only when something changes, and may then say
/// only what has changed.
class TimePosition
{
public:
    /// Main thread.
    explicit TimePosition(const LV2_URID_Map& map);

    /// Takes over into the transport what an event says; leaves what it does not speak of, or says in a form
    /// that is not the format's. False for an event of another kind. Render thread.
    bool update(HostTransport& transport, const LV2_Atom& event) const noexcept VELOTRINE_NONBLOCKING;

    [[nodiscard]] bool isSequence(const LV2_Atom& atom) const noexcept { return atom.type == sequence; }

private:
    [[nodiscard]] double number(const LV2_Atom& atom, double otherwise) const noexcept VELOTRINE_NONBLOCKING;

    LV2_URID sequence, object, blank, resource;
    LV2_URID integer, longInteger, floating, doubleFloating;
    LV2_URID position, speed, beatsPerMinute, beatsPerBar, beatUnit;
};

} // namespace velotrine
