#include "tests/real-hosts/JalvProcess.h"

#include "audiounit/Parameters.h"
#include "plugin/HostedInstrument.h"
#include "plugin/lv2/Lv2Names.h"
#include "tests/support/RecordingHost.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace velotrine {

namespace {

std::string manifestOf(const std::vector<std::string>& states)
{
    std::string manifest;
    for (std::size_t i = 0; i < states.size(); ++i)
        manifest += "<urn:velotrine:state" + std::to_string(i) +
                    "> a <http://lv2plug.in/ns/ext/presets#Preset> ;\n"
                    "  <http://lv2plug.in/ns/lv2core#appliesTo> <" +
                    lv2PluginUri +
                    "> ;\n"
                    "  <http://www.w3.org/2000/01/rdf-schema#label> \"a state\" ;\n"
                    "  <http://lv2plug.in/ns/ext/state#state> [ <" +
                    lv2StateUri + "> \"\"\"" + states[i] + "\"\"\" ] .\n";
    return manifest;
}

} // namespace

std::string stateWithVolume(double volume)
{
    RecordingHost host;
    HostedInstrument instrument(host);
    instrument.setValue(parameterWithIdentifier("volume")->address, volume);
    return instrument.saveState();
}

JalvProcess::JalvProcess(const std::map<std::string, double>& values,
                         const std::vector<std::pair<std::string, std::string>>& environment,
                         const std::vector<std::string>& states)
{
    const auto bundle = folder.path() / "states.lv2";
    std::filesystem::create_directory(bundle);
    folder.write("states.lv2/manifest.ttl", manifestOf(states));
    ::setenv("JACK_DEFAULT_SERVER", ("velotrine-test-" + std::to_string(::getpid())).c_str(), 1);
    server = std::make_unique<JackServer>(std::vector<std::string>{"--sync"});
    // It ends when there is nothing more to read for it.
    if (::pipe2(input.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    std::vector<std::string> command{"jalv", "-x", "-n", "velotrine"};
    for (const auto& [symbol, value] : values) {
        command.emplace_back("-c");
        command.push_back(symbol + "=" + std::to_string(value));
    }
    command.emplace_back(lv2PluginUri);
    ProcessSurroundings surroundings;
    surroundings.environment = environment;
    surroundings.environment.emplace_back("LV2_PATH",
                                          VELOTRINE_LV2_BUNDLES ":/usr/lib/lv2:" + folder.path().string());
    surroundings.beforeStart = [this] {
        ::dup2(input[0], STDIN_FILENO);
        // It answers each line, and would wait for a reader.
        ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    };
    jalv = std::make_unique<ChildProcess>(command, surroundings);
}

void JalvProcess::type(const std::string& line) const
{
    const auto typed = line + "\n";
    if (::write(input[1], typed.data(), typed.size()) != static_cast<ssize_t>(typed.size()))
        throw std::runtime_error("jalv takes no more lines");
}

JalvProcess::~JalvProcess()
{
    ::close(input[0]);
    ::close(input[1]);
    jalv->send(SIGTERM);
    for (int i = 0; i < 500 && !jalv->hasEnded(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

} // namespace velotrine
