#pragma once

#include "engine/Nonblocking.h"

#include <array>
#include <cstdint>

namespace velotrine {

/// A key that goes down or up, as other instruments are told while the music plays.
struct NoteMessage
{
    int frame;             ///< counted from the first that is being rendered
    bool isOn;             ///< the key goes down
    std::uint8_t channel;  ///< 0 to 4: the ring, innermost first
    std::uint8_t key;      ///< 0 to 127
    std::uint8_t velocity; ///< 1 to 127 for a key that goes down, 0 for one that goes up

    /// The same as MIDI has it.
    [[nodiscard]] constexpr std::array<std::uint8_t, 3> bytes() const noexcept
    {
        constexpr unsigned noteOff = 0x80;
        constexpr unsigned noteOn = 0x90;
        return {static_cast<std::uint8_t>((isOn ? noteOn : noteOff) | channel), key, velocity};
    }

    bool operator==(const NoteMessage&) const = default;
};

/// Takes messages, in the order of their frames. Render thread.
class NoteReceiver
{
public:
    virtual ~NoteReceiver() = default;

    /// False where there is no room for it now; an end of a note is then offered again later.
    [[nodiscard]] virtual bool take(const NoteMessage& message) noexcept VELOTRINE_NONBLOCKING = 0;
};

/// Where notes go. Without a receiver nothing is taken, as if it were full.
struct NoteOutput
{
    NoteReceiver* receiver = nullptr;
    int firstFrame = 0; ///< of the receiver's, for the first that is being rendered

    /// The same from a later frame on.
    [[nodiscard]] constexpr NoteOutput from(int frame) const noexcept
    {
        return {receiver, firstFrame + frame};
    }

    [[nodiscard]] bool take(NoteMessage message) const noexcept VELOTRINE_NONBLOCKING
    {
        message.frame += firstFrame;
        return receiver != nullptr && receiver->take(message);
    }
};

} // namespace velotrine
