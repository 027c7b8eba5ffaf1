// Notes of any rings, keys and times into a MIDI file, and what another reader finds there.

#include "engine/ParameterAddress.h"
#include "fuzz/Demand.h"
#include "render/MidiFile.h"
#include "tests/render/MidiReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include <fuzzer/FuzzedDataProvider.h>

namespace velotrine {
namespace {

constexpr double longestPause = 86400.0; ///< seconds
constexpr double longestNote = 60.0;     ///< seconds
constexpr int mostNotes = 200;

NoteEvent anyNote(FuzzedDataProvider& input)
{
    return {.frame = 0,
            .ring = input.ConsumeIntegralInRange(0, MidiFile::ringTracks - 1),
            .spot = 0,
            .note = input.ConsumeBool() ? input.ConsumeIntegralInRange(55, 60) : input.ConsumeIntegral<int>(),
            .gain = input.ConsumeFloatingPointInRange(0.0f, 1.0f),
            .decaySeconds = input.ConsumeFloatingPointInRange(0.0f, static_cast<float>(longestNote))};
}

void check(const MidiContent& content, const std::array<std::size_t, MidiFile::ringTracks>& added)
{
    demand(content.format == 1 && content.tracks.size() == 1 + added.size(),
           "there is a track for each ring");
    for (std::size_t ring = 0; ring < added.size(); ++ring) {
        const auto notes = content.notes(ring + 1);
        demand(notes.size() <= added[ring], "a track has no more notes than its ring has played");
        demand(added[ring] == 0 || !notes.empty(), "a ring's last note is in its track");
        demand(std::ranges::all_of(notes,
                                   [ring](const auto& note) {
                                       return note.channel == static_cast<int>(ring) &&
                                              note.end > note.start && note.velocity >= 1;
                                   }),
               "every note is on its ring's channel, is heard, and ends after its start");
    }
}

void play(FuzzedDataProvider& input)
{
    MidiFile file(
        input.ConsumeFloatingPointInRange(static_cast<double>(minTempo), static_cast<double>(maxTempo)));
    std::array<std::size_t, MidiFile::ringTracks> added{};
    double seconds = 0.0;
    for (int i = 0; i < mostNotes && input.remaining_bytes() > 0; ++i) {
        seconds += input.ConsumeBool() ? 0.0 : input.ConsumeFloatingPointInRange(0.0, longestPause);
        const auto note = midiNote(anyNote(input));
        if (!note)
            continue;
        file.addNote(seconds, *note);
        ++added[note->channel];
    }
    check(readMidi(file.bytes()), added);
}

} // namespace
} // namespace velotrine

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    velotrine::play(input);
    return 0;
}
