#pragma once

#include "audiounit/CycleRenderer.h"
#include "audiounit/MidiNote.h"
#include "audiounit/NoteOutput.h"
#include "engine/VelotrineDSPKernel.h"
#include "tests/support/TestInstrument.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace velotrine {

/// The keys that go down.
inline std::vector<NoteMessage> strikesIn(std::vector<NoteMessage> messages)
{
    std::erase_if(messages, [](const auto& message) { return !message.isOn; });
    return messages;
}

/// A note of a kernel on its own, by frames since its beginning.
struct PlayedNote
{
    int frame;
    MidiNote note;
};

/// What a kernel with initial settings plays, in cycles of the usual length, under a host that plays 4/4 from
/// the first frame on and stops after so many.
inline std::vector<PlayedNote> notesOfTheKernel(int frames, double rate, double tempo)
{
    const auto unit = makeInstrument();
    auto& kernel = *unit->dspKernel;
    constexpr int cycle = CycleRenderer::defaultCycleFrames;
    kernel.setup(cycle, rate);
    kernel.hostTempo = tempo;
    kernel.hostBeatsPerBar = 4.0;
    kernel.hostBeatUnit = 4.0;
    std::array<float, cycle> left{};
    std::array<float, cycle> right{};
    std::vector<PlayedNote> played;
    for (int start = 0; start < frames; start += cycle) {
        kernel.hostPlaying = true;
        kernel.process(left.data(), right.data(), cycle);
        for (const auto& event : kernel.noteEvents())
            if (const auto note = midiNote(event))
                played.push_back({start + event.frame, *note});
    }
    return played;
}

inline NoteMessage messageOf(const PlayedNote& played)
{
    return {.frame = played.frame,
            .isOn = true,
            .channel = played.note.channel,
            .key = played.note.key,
            .velocity = played.note.velocity};
}

inline std::vector<NoteMessage> strikesOfTheKernel(int frames, double rate, double tempo)
{
    std::vector<NoteMessage> strikes;
    for (const auto& each : notesOfTheKernel(frames, rate, tempo))
        if (each.frame < frames)
            strikes.push_back(messageOf(each));
    return strikes;
}

/// By frames; of one frame, ends before strikes, and each in the order of rings and keys.
inline std::vector<NoteMessage> inPlainOrder(std::vector<NoteMessage> messages)
{
    std::ranges::sort(messages, {}, [](const NoteMessage& message) {
        return std::tuple(message.frame, message.isOn, message.channel, message.key);
    });
    return messages;
}

/// Strikes and ends, by the plain rule: a note ends after its length, or where its key is struck again.
/// In plain order.
/// @param framesAfter  that follow the stop
inline std::vector<NoteMessage> messagesOfTheKernel(int frames, int framesAfter, double rate, double tempo)
{
    const auto played = notesOfTheKernel(frames, rate, tempo);
    std::vector<NoteMessage> messages;
    for (std::size_t i = 0; i < played.size(); ++i) {
        const auto& [frame, note] = played[i];
        messages.push_back(messageOf(played[i]));
        int end = frame + static_cast<int>(std::lround(note.seconds * rate));
        for (std::size_t later = i + 1; later < played.size(); ++later)
            if (played[later].note.channel == note.channel && played[later].note.key == note.key)
                end = std::min(end, played[later].frame);
        if (end < frames + framesAfter)
            messages.push_back(
                {.frame = end, .isOn = false, .channel = note.channel, .key = note.key, .velocity = 0});
    }
    return inPlainOrder(std::move(messages));
}

} // namespace velotrine
