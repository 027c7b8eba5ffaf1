#include "tests/host/JackNoteRecorder.h"

#include <jack/midiport.h>

#include <stdexcept>
#include <utility>

namespace velotrine {

JackNoteRecorder::JackNoteRecorder() : client(jack_client_open("note-recorder", JackNoStartServer, nullptr))
{
    constexpr std::size_t plenty = std::size_t{1} << 20;
    if (client == nullptr)
        throw std::runtime_error("no JACK server");
    recorded.sound.reserve(plenty);
    recorded.notes.reserve(plenty);
    soundPort = jack_port_register(client, "sound", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    notePort = jack_port_register(client, "notes", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    jack_set_process_callback(
        client,
        [](jack_nframes_t frames, void* self) {
            static_cast<JackNoteRecorder*>(self)->record(frames);
            return 0;
        },
        this);
    jack_activate(client);
}

JackNoteRecorder::~JackNoteRecorder()
{
    jack_client_close(client);
}

bool JackNoteRecorder::connectSound()
{
    return connect(JACK_DEFAULT_AUDIO_TYPE, soundPort);
}

bool JackNoteRecorder::connectNotes()
{
    return connect(JACK_DEFAULT_MIDI_TYPE, notePort);
}

void JackNoteRecorder::disconnectSound()
{
    auto** const outputs = jack_get_ports(client, "^Velotrine:", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
    for (auto** output = outputs; output != nullptr && *output != nullptr; ++output) {
        auto* const port = jack_port_by_name(client, *output);
        auto** const inputs = jack_port_get_all_connections(client, port);
        for (auto** input = inputs; input != nullptr && *input != nullptr; ++input)
            jack_disconnect(client, *output, *input);
        jack_free(static_cast<void*>(inputs));
    }
    jack_free(static_cast<void*>(outputs));
}

JackNoteRecorder::Take JackNoteRecorder::take()
{
    jack_deactivate(client);
    return std::move(recorded);
}

bool JackNoteRecorder::connect(const char* type, jack_port_t* to)
{
    auto** const outputs = jack_get_ports(client, "^Velotrine:", type, JackPortIsOutput);
    const bool isConnected = outputs != nullptr && jack_connect(client, outputs[0], jack_port_name(to)) == 0;
    jack_free(static_cast<void*>(outputs));
    return isConnected;
}

void JackNoteRecorder::record(jack_nframes_t frames)
{
    const auto start = static_cast<int>(recorded.sound.size());
    const auto* const samples = static_cast<const float*>(jack_port_get_buffer(soundPort, frames));
    recorded.sound.insert(recorded.sound.end(), samples, samples + frames);
    auto* const events = jack_port_get_buffer(notePort, frames);
    for (std::uint32_t i = 0; i < jack_midi_get_event_count(events); ++i) {
        jack_midi_event_t event{};
        jack_midi_event_get(&event, events, i);
        const bool isOn = (event.buffer[0] & 0xF0) == 0x90;
        recorded.notes.push_back({.frame = start + static_cast<int>(event.time),
                                  .isOn = isOn,
                                  .channel = static_cast<std::uint8_t>(event.buffer[0] & 0x0F),
                                  .key = event.buffer[1],
                                  .velocity = event.buffer[2]});
        down += isOn ? 1 : -1;
        struck += isOn ? 1 : 0;
    }
}

} // namespace velotrine
