#pragma once

#include "audiounit/NoteOutput.h"
#include "engine/Nonblocking.h"
#include "engine/OneWayBuffer.h"
#include "engine/Shared.h"
#include "host/NotePort.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <thread>
#include <utility>

namespace velotrine {

/// Hands notes from the render thread to a port, each when its frame is due, on a thread of its own: one
/// block after the block's request, so that notes of one block keep their distances. A message is at most
/// `lateMilliseconds` late, if the system lets the thread run.
class NoteSender final : public NoteReceiver
{
public:
    static constexpr int lateMilliseconds = 2;

    /// How long it takes until a new listener hears something, at most.
    static constexpr int lookMilliseconds = 50;

    /// @param newPort  not null
    explicit NoteSender(std::unique_ptr<NotePort> newPort);

    /// All notes end at once.
    ~NoteSender() override;

    NoteSender(const NoteSender&) = delete;
    NoteSender& operator=(const NoteSender&) = delete;

    /// Before each block. Render thread.
    void begin(int frames, double sampleRate) noexcept VELOTRINE_NONBLOCKING;

    /// Takes nothing while nobody hears the port. Render thread.
    [[nodiscard]] bool take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING override;

private:
    struct TimedMessage
    {
        std::uint64_t ticks; ///< of the host clock
        NoteMessage message;
    };

    void run();
    void collect();
    void sendUntil(std::uint64_t ticks);
    void send(const NoteMessage& message);
    void endHeldKeys();

    std::unique_ptr<NotePort> port;
    OneWayBuffer<TimedMessage, 4096> messages;
    Shared<bool> isHeard{false};
    std::atomic<bool> isEnding{false};

    // Render thread.
    std::uint64_t blockTicks = 0; ///< when the current block's first frame is due
    double ticksPerFrame = 0.0;

    // The sender's thread.
    std::deque<TimedMessage> pending;
    std::set<std::pair<std::uint8_t, std::uint8_t>> held; ///< channel and key

    std::thread thread;
};

} // namespace velotrine
