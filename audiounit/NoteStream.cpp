#include "audiounit/NoteStream.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velotrine {

void NoteStream::setup(double newSampleRate) noexcept VELOTRINE_NONBLOCKING
{
    sampleRate = newSampleRate;
    endAll();
}

void NoteStream::endAll() noexcept VELOTRINE_NONBLOCKING
{
    for (auto& end : ends)
        if (end != keyIsUp)
            end = nextEnd = now;
}

void NoteStream::play(std::span<const NoteEvent> fired, int cycleFrame, int frames,
                      const NoteOutput& output) noexcept VELOTRINE_NONBLOCKING
{
    const Stretch stretch{now, output};
    now += frames;
    for (const auto& event : fired) {
        const auto frame = stretch.start + (event.frame - cycleFrame);
        if (frame < stretch.start || frame >= now)
            continue;
        const auto note = midiNote(event);
        if (!endKeysUntil(frame, stretch) || (note && !strike(*note, frame, stretch)))
            return;
    }
    endKeysUntil(now - 1, stretch);
}

bool NoteStream::endKeysUntil(std::int64_t frame, const Stretch& stretch) noexcept VELOTRINE_NONBLOCKING
{
    while (nextEnd <= frame) {
        const auto key = std::ranges::find(ends, nextEnd);
        if (!endKey(static_cast<std::size_t>(key - ends.begin()), std::max(nextEnd, stretch.start), stretch))
            return false;
    }
    return true;
}

bool NoteStream::endKey(std::size_t index, std::int64_t frame,
                        const Stretch& stretch) noexcept VELOTRINE_NONBLOCKING
{
    const bool isTaken = stretch.output.take({.frame = static_cast<int>(frame - stretch.start),
                                              .isOn = false,
                                              .channel = static_cast<std::uint8_t>(index / keysPerChannel),
                                              .key = static_cast<std::uint8_t>(index % keysPerChannel),
                                              .velocity = 0});
    if (!isTaken)
        return false;
    if (std::exchange(ends[index], keyIsUp) == nextEnd)
        nextEnd = std::ranges::min(ends);
    return true;
}

bool NoteStream::strike(const MidiNote& note, std::int64_t frame,
                        const Stretch& stretch) noexcept VELOTRINE_NONBLOCKING
{
    const auto index = note.channel * keysPerChannel + note.key;
    if (ends[index] != keyIsUp && !endKey(index, frame, stretch))
        return false;
    if (!stretch.output.take({.frame = static_cast<int>(frame - stretch.start),
                              .isOn = true,
                              .channel = note.channel,
                              .key = note.key,
                              .velocity = note.velocity}))
        return false;
    const auto length = std::llround(note.seconds * sampleRate);
    ends[index] = frame + std::max<std::int64_t>(1, length);
    nextEnd = std::min(nextEnd, ends[index]);
    return true;
}

} // namespace velotrine
