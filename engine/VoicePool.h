#pragma once

#include "engine/FMVoice.h"
#include "engine/Nonblocking.h"

#include <array>
#include <cstddef>

namespace velotrine {

/// Sixteen voices, shared by all rings. When all of them sound, a new note takes the one whose note is
/// oldest. Render thread only; made while nothing renders.
class VoicePool
{
public:
    static constexpr std::size_t voiceCount = 16;

    /// Indices of the sounding voices, the one whose note started first in front; each index at most once.
    class TriggerOrder
    {
    public:
        [[nodiscard]] std::size_t size() const noexcept { return count; }

        [[nodiscard]] bool empty() const noexcept { return count == 0; }

        [[nodiscard]] const int& operator[](std::size_t position) const noexcept { return indices[position]; }

        [[nodiscard]] const int* begin() const noexcept { return indices.data(); }

        [[nodiscard]] const int* end() const noexcept { return indices.data() + count; }

        /// A 17th entry is a fatal error.
        void append(int voice) noexcept VELOTRINE_NONBLOCKING;

        /// Removes the front entry and returns it. An empty list is a fatal error.
        int takeFront() noexcept VELOTRINE_NONBLOCKING;

        void clear() noexcept { count = 0; }

        /// Removes the entries for which the condition holds; the others keep their order.
        template <typename Condition>
        void removeIf(Condition&& condition) noexcept
        {
            std::size_t kept = 0;
            for (std::size_t i = 0; i < count; ++i)
                if (!condition(indices[i]))
                    indices[kept++] = indices[i];
            count = kept;
        }

    private:
        std::array<int, voiceCount> indices{};
        std::size_t count = 0;
    };

    /// @param sampleRate  Hz
    explicit VoicePool(double sampleRate) noexcept;

    /// Takes the first free voice, or else steals the oldest, and notes it as the youngest.
    /// The caller starts a note on it at once.
    [[nodiscard]] FMVoice& allocate() noexcept VELOTRINE_NONBLOCKING;

    /// Cuts off all notes at once.
    void silence() noexcept VELOTRINE_NONBLOCKING;

    [[nodiscard]] bool isSilent() const noexcept VELOTRINE_NONBLOCKING;

    /// Adds all sounding voices to the buffer, in the order of their indices.
    void render(float* buffer, int frames) noexcept VELOTRINE_NONBLOCKING;

    /// Drops the voices that have fallen silent from the trigger order.
    void forgetSilentVoices() noexcept VELOTRINE_NONBLOCKING;

    std::array<FMVoice, voiceCount> voices;
    TriggerOrder triggerOrder;
};

} // namespace velotrine
