#pragma once

#include "audiounit/NoteOutput.h"

#include <limits>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace velotrine {

/// A receiver that keeps what it takes, and can be short of room.
class NoteRecorder final : public NoteReceiver
{
public:
    [[nodiscard]] bool take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING override
    {
        if (room == 0)
            return false;
        --room;
        VELOTRINE_UNFOLLOWED(keep(message);) // a test may take memory
        return true;
    }

    std::vector<NoteMessage> messages;
    int room = std::numeric_limits<int>::max(); ///< for so many more

private:
    void keep(const NoteMessage& message)
    {
        VELOTRINE_MAY_BLOCK();
        messages.push_back(message);
    }
};

inline std::string textOf(const NoteMessage& message)
{
    return std::string(message.isOn ? "on " : "off ") + std::to_string(message.channel) + "/" +
           std::to_string(message.key) + " " + std::to_string(message.velocity) + " at " +
           std::to_string(message.frame);
}

/// What is wrong with the messages of a whole life, in which every key that goes down goes up once, later or
/// not at all before the next; empty if nothing is.
inline std::string mistakeIn(std::span<const NoteMessage> messages)
{
    std::set<std::pair<int, int>> down;
    int frame = std::numeric_limits<int>::min();
    for (const auto& message : messages) {
        const std::pair<int, int> key(message.channel, message.key);
        if (message.frame < frame)
            return textOf(message) + " comes too late";
        if (message.channel > 4 || message.key > 127 || message.velocity > 127 ||
            message.isOn != (message.velocity > 0))
            return textOf(message) + " is no note";
        const bool isRight = message.isOn ? down.insert(key).second : down.erase(key) == 1;
        if (!isRight)
            return textOf(message) + " does not alternate";
        frame = message.frame;
    }
    return down.empty() ? "" : std::to_string(down.size()) + " keys hang";
}

} // namespace velotrine
