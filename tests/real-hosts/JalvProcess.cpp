#include "tests/real-hosts/JalvProcess.h"

#include "plugin/lv2/Lv2Names.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace velotrine {

JalvProcess::JalvProcess(const std::map<std::string, double>& values,
                         const std::vector<std::pair<std::string, std::string>>& environment)
{
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
    surroundings.environment.emplace_back("LV2_PATH", VELOTRINE_LV2_BUNDLES ":/usr/lib/lv2");
    surroundings.beforeStart = [this] { ::dup2(input[0], STDIN_FILENO); };
    jalv = std::make_unique<ChildProcess>(command, surroundings);
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
