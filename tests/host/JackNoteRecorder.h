#pragma once

#include "audiounit/NoteOutput.h"

#include <atomic>
#include <cstdint>
#include <vector>

#include <jack/jack.h>

namespace velotrine {

/// Records sound and notes of the application from the server, frame by frame, from its making on.
class JackNoteRecorder
{
public:
    struct Take
    {
        std::vector<float> sound;       ///< of the first output
        std::vector<NoteMessage> notes; ///< by the frames of the sound
    };

    /// Throws where no server runs.
    JackNoteRecorder();
    ~JackNoteRecorder();
    JackNoteRecorder(const JackNoteRecorder&) = delete;
    JackNoteRecorder& operator=(const JackNoteRecorder&) = delete;

    /// False if the application is not there.
    [[nodiscard]] bool connectSound();
    [[nodiscard]] bool connectNotes();

    /// Takes the application's outputs of sound off everything.
    void disconnectSound();

    /// How many more keys went down than up so far.
    [[nodiscard]] int keysDown() const noexcept { return down; }

    /// How many keys went down so far.
    [[nodiscard]] int strikes() const noexcept { return struck; }

    /// Ends the recording.
    [[nodiscard]] Take take();

private:
    [[nodiscard]] bool connect(const char* type, jack_port_t* to);
    void record(jack_nframes_t frames);

    jack_client_t* client;
    jack_port_t* soundPort = nullptr;
    jack_port_t* notePort = nullptr;
    Take recorded;
    std::atomic<int> down{0};
    std::atomic<int> struck{0};
};

} // namespace velotrine
