#include "tests/real-hosts/JackConductor.h"

#include <jack/midiport.h>
#include <jack/transport.h>

#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <thread>
#include <utility>

namespace velotrine {

namespace {

constexpr double timeoutSeconds = 15.0;

template <typename Condition>
bool waitUntil(Condition&& isMet)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
    while (!isMet()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

void appendFrom(jack_port_t* port, jack_nframes_t frames, std::vector<float>& sound)
{
    const auto* const samples = static_cast<const float*>(jack_port_get_buffer(port, frames));
    sound.insert(sound.end(), samples, samples + frames);
}

void appendFrom(jack_port_t* port, jack_nframes_t frames, int start, std::vector<NoteMessage>& notes)
{
    auto* const events = jack_port_get_buffer(port, frames);
    for (std::uint32_t i = 0; i < jack_midi_get_event_count(events); ++i) {
        jack_midi_event_t event{};
        jack_midi_event_get(&event, events, i);
        notes.push_back({.frame = start + static_cast<int>(event.time),
                         .isOn = (event.buffer[0] & 0xF0) == 0x90,
                         .channel = static_cast<std::uint8_t>(event.buffer[0] & 0x0F),
                         .key = event.buffer[1],
                         .velocity = event.buffer[2]});
    }
}

void tellTempo(jack_position_t& position, double tempo)
{
    constexpr float beatsPerBar = 4.0f;
    position.valid = JackPositionBBT;
    position.bar = 1;
    position.beat = 1;
    position.tick = 0;
    position.bar_start_tick = 0.0;
    position.beats_per_bar = beatsPerBar;
    position.beat_type = 4.0f;
    position.ticks_per_beat = 1920.0;
    position.beats_per_minute = tempo;
}

} // namespace

JackConductor::JackConductor() : client(jack_client_open("conductor", JackNoStartServer, nullptr))
{
    if (client == nullptr)
        throw std::runtime_error("no JACK server");
    left = jack_port_register(client, "left", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    right = jack_port_register(client, "right", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    notes = jack_port_register(client, "notes", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    jack_set_process_callback(
        client,
        [](jack_nframes_t frames, void* self) {
            static_cast<JackConductor*>(self)->process(frames);
            return 0;
        },
        this);
    jack_set_timebase_callback(
        client, 0,
        [](jack_transport_state_t, jack_nframes_t, jack_position_t* position, int, void* self) {
            tellTempo(*position, static_cast<JackConductor*>(self)->tempo);
        },
        this);
    jack_activate(client);
}

JackConductor::~JackConductor()
{
    jack_client_close(client);
}

bool JackConductor::listenTo(const std::string& clientName)
{
    return connect(clientName + ":left", jack_port_name(left)) &&
           connect(clientName + ":right", jack_port_name(right));
}

bool JackConductor::listenToNotesOf(const std::string& clientName)
{
    return connect(clientName + ":notes", jack_port_name(notes));
}

bool JackConductor::connect(const std::string& output, const std::string& input)
{
    return waitUntil([&] {
        return jack_port_by_name(client, output.c_str()) != nullptr &&
               jack_port_by_name(client, input.c_str()) != nullptr &&
               jack_connect(client, output.c_str(), input.c_str()) == 0;
    });
}

JackTake JackConductor::perform(const JackScore& newScore, bool isFreewheeling)
{
    score = newScore;
    tempo = score.tempo;
    take = {};
    const auto cycles = static_cast<std::size_t>(score.end);
    take.cycles.reserve(cycles);
    take.left.reserve(cycles * jack_get_buffer_size(client));
    take.right.reserve(cycles * jack_get_buffer_size(client));
    take.notes.reserve(cycles);
    if (isFreewheeling)
        jack_set_freewheel(client, 1);
    isPerforming = true;
    const bool isDone = waitUntil([this] { return !isPerforming; });
    if (isFreewheeling) {
        jack_set_freewheel(client, 0);
        // A server that gets a request while it returns to real time may stall for seconds.
        constexpr int severalCycles = 10;
        const int before = cyclesHeard;
        waitUntil([&] { return cyclesHeard > before + severalCycles; });
    }
    if (!isDone)
        throw std::runtime_error("JACK does not call");
    return std::exchange(take, {});
}

void JackConductor::process(jack_nframes_t frames)
{
    ++cyclesHeard;
    if (!isPerforming)
        return;
    jack_position_t position{};
    const auto state = jack_transport_query(client, &position);
    take.cycles.push_back({.isRolling = state == JackTransportRolling,
                           .tempo = (position.valid & JackPositionBBT) != 0 ? position.beats_per_minute : 0.0,
                           .frames = static_cast<int>(frames)});
    appendFrom(notes, frames, static_cast<int>(take.left.size()), take.notes);
    appendFrom(left, frames, take.left);
    appendFrom(right, frames, take.right);

    const auto cycle = static_cast<int>(take.cycles.size());
    if (cycle == score.start)
        jack_transport_start(client);
    if (cycle == score.tempoChange)
        tempo = score.laterTempo;
    if (cycle == score.stop)
        jack_transport_stop(client);
    if (cycle == score.end)
        isPerforming = false;
}

} // namespace velotrine
