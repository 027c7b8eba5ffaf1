#include "tests/support/JackServer.h"

#include <jack/jack.h>

#include <chrono>
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

std::string serverName()
{
    return std::getenv("JACK_DEFAULT_SERVER");
}

bool isAnswering()
{
    jack_set_error_function([](const char*) {});
    auto* const client = jack_client_open("visitor", JackNoStartServer, nullptr);
    if (client != nullptr)
        jack_client_close(client);
    return client != nullptr;
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

JackServer::JackServer(const std::vector<std::string>& options)
{
    std::vector<std::string> command{"jackd", "-n", serverName(), "-r"};
    command.insert(command.end(), options.begin(), options.end());
    for (const auto* const argument : {"-d", "dummy", "-r", "48000", "-p", "256"})
        command.emplace_back(argument);
    process = std::make_unique<ChildProcess>(command, ProcessSurroundings{});
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
    while (!isAnswering()) {
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

} // namespace velotrine
