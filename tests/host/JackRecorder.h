#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include <jack/jack.h>

namespace velotrine {

/// Records what the application's first output sends to the server, from its making on.
class JackRecorder
{
public:
    /// @param seconds  the most that finds room; what comes later is left out
    explicit JackRecorder(double seconds);
    ~JackRecorder();
    JackRecorder(const JackRecorder&) = delete;
    JackRecorder& operator=(const JackRecorder&) = delete;

    /// Whether the application was there to be connected.
    [[nodiscard]] bool isConnected() const noexcept { return connected; }

    /// How much is recorded. The server's time goes slower than the clock's where the machine is busy.
    [[nodiscard]] double seconds() const;

    /// Ends the recording.
    [[nodiscard]] std::vector<float> samples();

private:
    static int record(jack_nframes_t frames, void* context);

    jack_client_t* client = nullptr;
    jack_port_t* port = nullptr;
    bool connected = false;
    std::vector<float> recorded;
    std::atomic<std::size_t> count{0};
};

} // namespace velotrine
