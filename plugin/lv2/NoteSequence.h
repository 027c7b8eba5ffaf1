#pragma once

#include "audiounit/NoteOutput.h"
#include "engine/Nonblocking.h"

#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>

#include <cstdint>

namespace velotrine {

/// Writes notes as MIDI events into the port that the host lends for one run at a time.
class NoteSequence final : public NoteReceiver
{
public:
    /// Main thread.
    explicit NoteSequence(const LV2_URID_Map& map);

    /// Where the host keeps the port; null for nowhere. Render thread.
    void connect(LV2_Atom_Sequence* newPort) noexcept { port = newPort; }

    /// At the beginning of each run: nothing is in it, and the room is what the host says. Render thread.
    void begin() noexcept VELOTRINE_NONBLOCKING;

    [[nodiscard]] bool take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING override;

private:
    LV2_URID sequence, midiEvent;
    LV2_Atom_Sequence* port = nullptr;
    std::uint32_t room = 0; ///< bytes that the port's body may have
};

} // namespace velotrine
