#include "tests/host/JackServer.h"

#include "tests/host/MessageLoop.h"

#include <jack/jack.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

namespace velotrine {

namespace {

constexpr double timeoutSeconds = 10.0;

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

std::string serverName()
{
    return std::getenv("JACK_DEFAULT_SERVER");
}

/// The shared memory of clients that could not take their leave.
void removeRemains()
{
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm", ignored))
        if (entry.path().filename().string().find(serverName() + "_") != std::string::npos)
            std::filesystem::remove(entry.path(), ignored);
}

} // namespace

JackServer::JackServer()
{
    const auto name = serverName();
    process = std::make_unique<ChildProcess>(
        std::vector<std::string>{"jackd", "-n", name, "-r", "-d", "dummy", "-r", "48000", "-p", "256"},
        ProcessSurroundings{});
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
    while (!Listener().isAnswered()) {
        if (process->hasEnded() || std::chrono::steady_clock::now() >= end)
            throw std::runtime_error("jackd does not answer: " + process->finish().err);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

JackServer::~JackServer()
{
    process->send(SIGCONT);
    process->send(SIGTERM);
    (void)process->finish();
    removeRemains();
}

void JackServer::kill()
{
    process->send(SIGKILL);
    (void)process->finish();
}

void JackServer::freeze() const
{
    process->send(SIGSTOP);
}

void JackServer::thaw() const
{
    process->send(SIGCONT);
}

float peakOnJack(double seconds)
{
    Listener listener;
    if (!listener.isAnswered() || !listener.connect())
        return -1.0f;
    runMessagesFor(seconds);
    return listener.peak;
}

} // namespace velotrine
