#include "host/SequencerPort.h"

#include "audiounit/Identity.h"

namespace velotrine {

namespace {

void ignoreMessage(const char*, int, const char*, int, const char*, ...) {}

} // namespace

std::unique_ptr<SequencerPort> SequencerPort::open()
{
    // Where the kernel has none, the library would complain on standard error.
    snd_lib_error_set_handler(ignoreMessage);
    snd_seq_t* sequencer = nullptr;
    const auto opened = snd_seq_open(&sequencer, "default", SND_SEQ_OPEN_OUTPUT, 0);
    snd_lib_error_set_handler(nullptr);
    if (opened < 0)
        return nullptr;
    snd_seq_set_client_name(sequencer, identity::name);
    const auto port =
        snd_seq_create_simple_port(sequencer, "Notes", SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ,
                                   SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION);
    if (port < 0) {
        snd_seq_close(sequencer);
        return nullptr;
    }
    return std::unique_ptr<SequencerPort>(new SequencerPort(sequencer, port));
}

SequencerPort::~SequencerPort()
{
    snd_seq_close(sequencer);
}

bool SequencerPort::isHeard()
{
    snd_seq_port_info_t* information = nullptr;
    snd_seq_port_info_alloca(&information);
    return snd_seq_get_port_info(sequencer, port, information) == 0 &&
           snd_seq_port_info_get_read_use(information) > 0;
}

void SequencerPort::send(const NoteMessage& message)
{
    snd_seq_event_t event{};
    snd_seq_ev_set_source(&event, static_cast<unsigned char>(port));
    snd_seq_ev_set_subs(&event);
    snd_seq_ev_set_direct(&event);
    event.type = message.isOn ? SND_SEQ_EVENT_NOTEON : SND_SEQ_EVENT_NOTEOFF;
    event.data.note.channel = message.channel;
    event.data.note.note = message.key;
    event.data.note.velocity = message.velocity;
    snd_seq_event_output_direct(sequencer, &event);
}

std::unique_ptr<NotePort> systemNotePort()
{
    return SequencerPort::open();
}

} // namespace velotrine
