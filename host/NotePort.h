#pragma once

#include "audiounit/NoteOutput.h"

#include <functional>
#include <memory>

namespace velotrine {

/// A way out for notes that knows no time of its own: what is sent is out. One thread at a time.
class NotePort
{
public:
    virtual ~NotePort() = default;

    /// Whether somebody is connected to it.
    [[nodiscard]] virtual bool isHeard() = 0;

    /// The message's frame means nothing here.
    virtual void send(const NoteMessage& message) = 0;
};

using NotePortFactory = std::function<std::unique_ptr<NotePort>()>;

/// A port called "Velotrine" at ALSA's sequencer; null where there is none.
[[nodiscard]] std::unique_ptr<NotePort> systemNotePort();

} // namespace velotrine
