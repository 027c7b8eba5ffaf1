#pragma once

#include "engine/HostClock.h"
#include "host/NotePort.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace velotrine {

/// What a port has sent, and when; it outlives the port.
struct SentNotes
{
    std::vector<NoteMessage> messages;
    std::vector<std::uint64_t> ticks;
    std::mutex mutex;
    std::atomic<bool> isHeard{true};

    std::size_t count()
    {
        const std::scoped_lock lock(mutex);
        return messages.size();
    }
};

class FakeNotePort final : public NotePort
{
public:
    explicit FakeNotePort(SentNotes& whereTo) : sent(whereTo) {}

    bool isHeard() override { return sent.isHeard; }

    void send(const NoteMessage& message) override
    {
        const std::scoped_lock lock(sent.mutex);
        sent.messages.push_back(message);
        sent.messages.back().frame = 0; // it means nothing any more
        sent.ticks.push_back(hostClockNow());
    }

private:
    SentNotes& sent;
};

} // namespace velotrine
