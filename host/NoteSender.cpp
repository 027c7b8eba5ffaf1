#include "host/NoteSender.h"

#include "engine/FatalError.h"
#include "engine/HostClock.h"

#include <chrono>

namespace velotrine {

NoteSender::NoteSender(std::unique_ptr<NotePort> newPort) : port(std::move(newPort))
{
    if (!port)
        fatalError("NoteSender: no port");
    thread = std::thread([this] { run(); });
}

NoteSender::~NoteSender()
{
    isEnding = true;
    thread.join();
}

void NoteSender::begin(int frames, double sampleRate) noexcept VELOTRINE_NONBLOCKING
{
    ticksPerFrame = 1.0 / (sampleRate * hostClockSecondsPerTick);
    blockTicks = hostClockNow() + static_cast<std::uint64_t>(frames * ticksPerFrame);
}

bool NoteSender::take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING
{
    const auto ticks = blockTicks + static_cast<std::uint64_t>(message.frame * ticksPerFrame);
    return isHeard && messages.push({ticks, message});
}

void NoteSender::run()
{
    using std::chrono::milliseconds;
    constexpr int waitsBetweenLooks = lookMilliseconds / lateMilliseconds;
    for (int waits = 0; !isEnding; ++waits) {
        if (waits % waitsBetweenLooks == 0)
            isHeard = port->isHeard();
        collect();
        sendUntil(hostClockNow());
        const bool mayComeSoon = isHeard || !pending.empty();
        std::this_thread::sleep_for(milliseconds(mayComeSoon ? lateMilliseconds : lookMilliseconds));
        if (!mayComeSoon)
            waits = -1;
    }
    collect();
    sendUntil(hostClockNow());
    endHeldKeys();
}

void NoteSender::collect()
{
    messages.takeAll([this](const TimedMessage& message) { pending.push_back(message); });
}

void NoteSender::sendUntil(std::uint64_t ticks)
{
    for (; !pending.empty() && pending.front().ticks <= ticks; pending.pop_front())
        send(pending.front().message);
}

void NoteSender::send(const NoteMessage& message)
{
    port->send(message);
    if (message.isOn)
        held.emplace(message.channel, message.key);
    else
        held.erase({message.channel, message.key});
}

void NoteSender::endHeldKeys()
{
    for (const auto& [channel, key] : held)
        port->send({.frame = 0, .isOn = false, .channel = channel, .key = key, .velocity = 0});
    held.clear();
}

} // namespace velotrine
