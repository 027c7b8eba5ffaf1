// ALSA's MIDI sequencer where the kernel has none, for a host that does not start without it. It accepts
// everything and sends nothing. Preloaded, its functions come before the library's.

#include <alsa/asoundlib.h>

#include <cerrno>
#include <sys/eventfd.h>

namespace {

/// Never has anything to read.
int silence = -1;

} // namespace

extern "C" {

int snd_seq_open(snd_seq_t** sequencer, const char*, int, int)
{
    silence = eventfd(0, EFD_CLOEXEC);
    *sequencer = reinterpret_cast<snd_seq_t*>(&silence);
    return 0;
}

int snd_seq_close(snd_seq_t*)
{
    return 0;
}

int snd_seq_client_id(snd_seq_t*)
{
    constexpr int firstOfPrograms = 128;
    return firstOfPrograms;
}

int snd_seq_create_simple_port(snd_seq_t*, const char*, unsigned, unsigned)
{
    static int next = 0;
    return next++;
}

int snd_seq_poll_descriptors_count(snd_seq_t*, short)
{
    return 1;
}

int snd_seq_poll_descriptors(snd_seq_t*, pollfd* descriptors, unsigned, short)
{
    *descriptors = {.fd = silence, .events = POLLIN, .revents = 0};
    return 1;
}

int snd_seq_event_input(snd_seq_t*, snd_seq_event_t**)
{
    return -EAGAIN;
}

// There are no others to connect with.

int snd_seq_get_any_client_info(snd_seq_t*, int, snd_seq_client_info_t*)
{
    return -ENOENT;
}

int snd_seq_get_any_port_info(snd_seq_t*, int, int, snd_seq_port_info_t*)
{
    return -ENOENT;
}

int snd_seq_query_next_client(snd_seq_t*, snd_seq_client_info_t*)
{
    return -ENOENT;
}

int snd_seq_query_next_port(snd_seq_t*, snd_seq_port_info_t*)
{
    return -ENOENT;
}

int snd_seq_query_port_subscribers(snd_seq_t*, snd_seq_query_subscribe_t*)
{
    return -ENOENT;
}

// What succeeds without doing anything.

int snd_seq_set_client_name(snd_seq_t*, const char*)
{
    return 0;
}

int snd_seq_delete_simple_port(snd_seq_t*, int)
{
    return 0;
}

int snd_seq_alloc_queue(snd_seq_t*)
{
    return 0;
}

int snd_seq_free_queue(snd_seq_t*, int)
{
    return 0;
}

int snd_seq_control_queue(snd_seq_t*, int, int, int, snd_seq_event_t*)
{
    return 0;
}

int snd_seq_drain_output(snd_seq_t*)
{
    return 0;
}

int snd_seq_drop_input(snd_seq_t*)
{
    return 0;
}

int snd_seq_drop_output(snd_seq_t*)
{
    return 0;
}

int snd_seq_event_input_pending(snd_seq_t*, int)
{
    return 0;
}

int snd_seq_event_output(snd_seq_t*, snd_seq_event_t*)
{
    return 0;
}

int snd_seq_event_output_direct(snd_seq_t*, snd_seq_event_t*)
{
    return 0;
}

int snd_seq_get_port_info(snd_seq_t*, int, snd_seq_port_info_t*)
{
    return 0;
}

int snd_seq_set_port_info(snd_seq_t*, int, snd_seq_port_info_t*)
{
    return 0;
}

int snd_seq_get_queue_status(snd_seq_t*, int, snd_seq_queue_status_t*)
{
    return 0;
}

int snd_seq_get_queue_tempo(snd_seq_t*, int, snd_seq_queue_tempo_t*)
{
    return 0;
}

int snd_seq_set_queue_tempo(snd_seq_t*, int, snd_seq_queue_tempo_t*)
{
    return 0;
}

int snd_seq_set_queue_timer(snd_seq_t*, int, snd_seq_queue_timer_t*)
{
    return 0;
}

int snd_seq_remove_events(snd_seq_t*, snd_seq_remove_events_t*)
{
    return 0;
}

int snd_seq_subscribe_port(snd_seq_t*, snd_seq_port_subscribe_t*)
{
    return 0;
}

int snd_seq_unsubscribe_port(snd_seq_t*, snd_seq_port_subscribe_t*)
{
    return 0;
}
}
