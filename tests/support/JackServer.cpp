#include "tests/support/JackServer.h"

#include <jack/jack.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

namespace velotrine {

namespace {

constexpr double timeoutSeconds = 10.0;

std::string serverName()
{
    const auto* const name = std::getenv("JACK_DEFAULT_SERVER");
    if (name == nullptr)
        throw std::runtime_error("JACK_DEFAULT_SERVER names no server of the test's own");
    return name;
}

bool isAnswering()
{
    jack_set_error_function([](const char*) {});
    auto* const client = jack_client_open("visitor", JackNoStartServer, nullptr);
    if (client != nullptr)
        jack_client_close(client);
    return client != nullptr;
}

/// What clients leave in shared memory that were never closed.
void removeRemainsOfClients()
{
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm", ignored))
        if (entry.path().filename().string().find(serverName() + "_") != std::string::npos)
            std::filesystem::remove(entry.path(), ignored);
}

} // namespace

JackServer::JackServer(const std::vector<std::string>& options, int sampleRate)
{
    start(options, sampleRate);
}

void JackServer::start(const std::vector<std::string>& options, int sampleRate)
{
    std::vector<std::string> command{"jackd", "-n", serverName(), "-r"};
    command.insert(command.end(), options.begin(), options.end());
    for (const auto& argument :
         {std::string("-d"), std::string("dummy"), std::string("-r"), std::to_string(sampleRate),
          std::string("-p"), std::to_string(jackCycleFrames)})
        command.push_back(argument);
    // However the test ends, jackd is asked to end and gives back what it holds.
    process = std::make_unique<ChildProcess>(command, ProcessSurroundings{.signalWhenOrphaned = SIGTERM});
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
    while (!isAnswering()) {
        if (process->hasEnded() || std::chrono::steady_clock::now() >= end)
            throw std::runtime_error("jackd does not answer: " + process->finish().err);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void JackServer::stop() const
{
    process->send(SIGCONT);
    process->send(SIGTERM);
    (void)process->finish();
}

JackServer::~JackServer()
{
    if (wasKilled)
        giveBackWhatTheKilledHeld();
    else
        stop();
    removeRemainsOfClients();
}

void JackServer::kill()
{
    process->send(SIGKILL);
    (void)process->finish();
    wasKilled = true;
}

/// A killed jackd leaves 100 MB of shared memory, and its name in one of the eight places that there are for
/// servers. Only another of the same name clears both away.
void JackServer::giveBackWhatTheKilledHeld()
{
    try {
        start({}, jackRate);
        stop();
    } catch (const std::exception& problem) {
        std::cerr << "A killed JACK server's memory stays: " << problem.what() << '\n';
    }
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
