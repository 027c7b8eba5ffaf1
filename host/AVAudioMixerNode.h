#pragma once

#include "audiounit/CycleRenderer.h"
#include "audiounit/NoteOutput.h"
#include "audiounit/NoteStream.h"
#include "engine/Nonblocking.h"
#include "engine/Shared.h"
#include "engine/VelotrineDSPKernel.h"
#include "host/NoteSender.h"

#include <array>
#include <atomic>

namespace velotrine {

/// Where the unit's stereo sound becomes that of the device: its two channels as they are, their mean where
/// there is only one, silence on any beyond the second.
///
/// Two threads may ask for sound, the device's and the one that keeps the clock going without a device;
/// whichever asks while the other renders gets silence. Neither waits.
class AVAudioMixerNode
{
public:
    /// Takes over the render block of a unit that is allocated for cycles of CycleRenderer's default length.
    /// Allocates; while nothing renders.
    /// @param playingKernel  whose notes the block plays; null for none. It lives as long as the block
    void setSource(AURenderBlock block, const VelotrineDSPKernel* playingKernel = nullptr);

    /// Whether notes go to those who ask for sound; when they no longer do, those that are held end with what
    /// is rendered next. Any thread.
    void setSendsNotes(bool doesSend) noexcept { sendsNotes = doesSend; }

    /// Gets all notes as well, whoever asks for sound; null for none. While nothing renders.
    void setNoteSender(NoteSender* newSender) noexcept { sender = newSender; }

    /// Fills the channels; silence as long as there is no source, or where it refuses to render. Render
    /// thread.
    /// @param channels      `channelCount` of them, each `frames` long
    /// @param channelCount  0 renders for the clock's sake alone
    /// @param notes         gets the notes (NoteStream)
    void render(float* const* channels, int channelCount, int frames,
                const NoteOutput& notes = {}) noexcept VELOTRINE_NONBLOCKING;

private:
    /// Where notes go in the frames that are rendered.
    struct NoteOutputs
    {
        NoteOutput withSound;
        NoteOutput toSender;
    };

    void renderPart(float* const* channels, int channelCount, int start, int frames,
                    const NoteOutputs& notes) noexcept VELOTRINE_NONBLOCKING;
    void renderCycles(StereoOutput output, int frames,
                      const NoteOutputs& notes) noexcept VELOTRINE_NONBLOCKING;

    static constexpr int longestPart = 512; ///< frames

    CycleRenderer renderer;
    bool hasSource = false;
    const VelotrineDSPKernel* kernel = nullptr;
    NoteStream notesWithSound;
    NoteStream notesToSender;
    NoteSender* sender = nullptr;
    Shared<bool> sendsNotes{true};
    std::array<float, longestPart> left{};  ///< for devices with fewer than two channels
    std::array<float, longestPart> right{}; ///< likewise
    std::atomic_flag rendering;
};

} // namespace velotrine
