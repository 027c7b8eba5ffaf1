#include "tests/host/JackListener.h"

#include "tests/support/MessageLoop.h"

#include <jack/jack.h>

#include <algorithm>
#include <atomic>
#include <cmath>

namespace velotrine {

namespace {

/// What arrives at one input port.
class Listener
{
public:
    Listener()
    {
        jack_set_error_function([](const char*) {});
        client = jack_client_open("listener", JackNoStartServer, nullptr);
        if (client == nullptr)
            return;
        port = jack_port_register(client, "in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
        jack_set_process_callback(client, &Listener::listen, this);
        jack_activate(client);
    }

    ~Listener()
    {
        if (client != nullptr)
            jack_client_close(client);
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    [[nodiscard]] bool isAnswered() const { return client != nullptr; }

    /// Whether the application was there to be connected.
    [[nodiscard]] bool connect() const
    {
        bool connected = false;
        auto** const names = jack_get_ports(client, "^Velotrine", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
        for (auto** name = names; name != nullptr && *name != nullptr; ++name)
            connected = jack_connect(client, *name, jack_port_name(port)) == 0 || connected;
        jack_free(static_cast<void*>(names));
        return connected;
    }

    std::atomic<float> peak{0.0f};

private:
    static int listen(jack_nframes_t frames, void* context)
    {
        auto& listener = *static_cast<Listener*>(context);
        const auto* const samples = static_cast<float*>(jack_port_get_buffer(listener.port, frames));
        for (jack_nframes_t i = 0; i < frames; ++i)
            listener.peak = std::max<float>(listener.peak, std::abs(samples[i]));
        return 0;
    }

    jack_client_t* client = nullptr;
    jack_port_t* port = nullptr;
};

} // namespace

float peakOnJack(double seconds)
{
    Listener listener;
    if (!listener.isAnswered() || !listener.connect())
        return -1.0f;
    runMessagesFor(seconds);
    return listener.peak;
}

} // namespace velotrine
