#pragma once

#include "audiounit/StereoOutput.h"
#include "engine/Nonblocking.h"
#include "platform/AUAudioUnit.h"

#include <vector>

namespace velotrine {

/// Pulls sound from an audio unit in render cycles of one fixed length and hands it out in any number of
/// frames.
///
/// Notes start at the first frame of a render cycle. Short cycles on a grid of their own keep every note
/// close to its crossing, and make the sound independent of how many frames a host asks for at a time. What a
/// call leaves over of a cycle begins the next call; nothing is delayed.
class CycleRenderer
{
public:
    static constexpr int defaultCycleFrames = 32;

    /// Whether a call renders a whole last cycle and keeps what is left of it, or cuts that cycle short, so
    /// that what comes next takes effect at exactly this frame.
    enum class LastCycle
    {
        whole,
        cutShort,
    };

    /// Takes over the render block of a unit whose maximum number of frames is at least the cycle's, and
    /// forgets what was left over. The one function that allocates; not while rendering.
    /// @param cycleFrames  1 or more; fewer is a fatal error
    void setup(AURenderBlock block, int cycleFrames = defaultCycleFrames);

    /// Fills the output. Where the unit refuses to render, the rest is silence and its error the answer.
    /// @param frames  any number; none for fewer than 1
    AUAudioUnitStatus render(StereoOutput output, int frames,
                             LastCycle lastCycle = LastCycle::whole) noexcept VELOTRINE_NONBLOCKING
    {
        return render(output, frames, lastCycle, [](int, int, int) {});
    }

    /// The same for a caller who wants to know what is handed out: of each cycle in turn, before the unit
    /// renders the next.
    /// @param onHandedOut  called with where in the cycle the frames begin, how many they are, and where in
    ///                     the output they begin
    template <typename OnHandedOut>
    AUAudioUnitStatus render(StereoOutput output, int frames, LastCycle lastCycle,
                             OnHandedOut&& onHandedOut) noexcept VELOTRINE_NONBLOCKING
    {
        AUAudioUnitStatus status = noErr;
        for (int done = 0; done < frames;) {
            const int remaining = frames - done;
            if (framesLeftOver() == 0) {
                const bool cut = lastCycle == LastCycle::cutShort && remaining < cycleLength;
                status = renderCycle(cut ? remaining : cycleLength);
                if (status != noErr) {
                    output.from(done).clear(remaining);
                    return status;
                }
            }
            const int cycleFrame = consumed;
            const int count = handOut(output.from(done), remaining);
            onHandedOut(cycleFrame, count, done);
            done += count;
        }
        return status;
    }

    /// Moves the grid of cycles on as render() would, without asking the unit or writing anything, for a unit
    /// that is silent. Only while nothing is left over.
    /// @param frames  0 or more
    void skip(int frames) noexcept VELOTRINE_NONBLOCKING;

    /// Frames rendered but not yet handed out.
    [[nodiscard]] int framesLeftOver() const noexcept VELOTRINE_NONBLOCKING { return available - consumed; }

private:
    AUAudioUnitStatus renderCycle(int frames) noexcept VELOTRINE_NONBLOCKING;
    int handOut(StereoOutput output, int frames) noexcept VELOTRINE_NONBLOCKING;

    AURenderBlock renderBlock;
    int cycleLength = defaultCycleFrames;
    std::vector<float> leftCycle;
    std::vector<float> rightCycle;
    int available = 0; ///< frames in the cycle buffers
    int consumed = 0;  ///< frames of these handed out
    AudioTimeStamp timestamp;
};

} // namespace velotrine
