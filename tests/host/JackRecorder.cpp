#include "tests/host/JackRecorder.h"

#include <algorithm>

namespace velotrine {

JackRecorder::JackRecorder(double seconds)
{
    client = jack_client_open("recorder", JackNoStartServer, nullptr);
    if (client == nullptr)
        return;
    recorded.resize(static_cast<std::size_t>(seconds * jack_get_sample_rate(client)));
    port = jack_port_register(client, "in", JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    jack_set_process_callback(client, &JackRecorder::record, this);
    jack_activate(client);
    auto** const outputs = jack_get_ports(client, "^Velotrine", JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput);
    connected = outputs != nullptr && jack_connect(client, outputs[0], jack_port_name(port)) == 0;
    jack_free(static_cast<void*>(outputs));
}

JackRecorder::~JackRecorder()
{
    if (client != nullptr)
        jack_client_close(client);
}

int JackRecorder::record(jack_nframes_t frames, void* context)
{
    auto& self = *static_cast<JackRecorder*>(context);
    const auto* const samples = static_cast<float*>(jack_port_get_buffer(self.port, frames));
    const auto before = self.count.load();
    const auto now = std::min<std::size_t>(frames, self.recorded.size() - before);
    std::copy_n(samples, now, self.recorded.begin() + static_cast<std::ptrdiff_t>(before));
    self.count = before + now;
    return 0;
}

double JackRecorder::seconds() const
{
    return static_cast<double>(count) / jack_get_sample_rate(client);
}

std::vector<float> JackRecorder::samples()
{
    jack_deactivate(client);
    recorded.resize(count);
    return std::move(recorded);
}

} // namespace velotrine
