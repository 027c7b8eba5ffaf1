#pragma once

#include "host/NotePort.h"

#include <alsa/asoundlib.h>

namespace velotrine {

/// A port of ALSA's sequencer. Only a Linux kernel has one.
class SequencerPort final : public NotePort
{
public:
    /// Null where the kernel has no sequencer, or there is no more room at it.
    [[nodiscard]] static std::unique_ptr<SequencerPort> open();

    ~SequencerPort() override;
    SequencerPort(const SequencerPort&) = delete;
    SequencerPort& operator=(const SequencerPort&) = delete;

    [[nodiscard]] bool isHeard() override;
    void send(const NoteMessage& message) override;

private:
    SequencerPort(snd_seq_t* openSequencer, int newPort) : sequencer(openSequencer), port(newPort) {}

    snd_seq_t* sequencer;
    int port;
};

} // namespace velotrine
