#include "render/MidiFile.h"

#include "audiounit/Identity.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

namespace velotrine {

namespace {

using Bytes = std::vector<std::uint8_t>;

void appendText(Bytes& bytes, std::string_view text)
{
    std::ranges::copy(text, std::back_inserter(bytes));
}

/// Highest byte first.
void appendNumber(Bytes& bytes, std::uint32_t number, int byteCount)
{
    for (int shift = 8 * (byteCount - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
}

/// Seven bits a byte, highest first; all but the last byte have their top bit set.
void appendVariableLength(Bytes& bytes, std::uint32_t number)
{
    constexpr int bitsPerByte = 7;
    constexpr std::uint32_t lowBits = 0x7F;
    constexpr std::uint32_t moreToCome = 0x80;
    int shift = 0;
    while (number >> (shift + bitsPerByte) != 0)
        shift += bitsPerByte;
    for (; shift > 0; shift -= bitsPerByte)
        bytes.push_back(static_cast<std::uint8_t>(((number >> shift) & lowBits) | moreToCome));
    bytes.push_back(static_cast<std::uint8_t>(number & lowBits));
}

enum class MetaEvent : std::uint8_t
{
    text = 0x01,
    trackName = 0x03,
    endOfTrack = 0x2F,
    tempo = 0x51,
    timeSignature = 0x58,
};

void appendMeta(Bytes& track, std::uint32_t delta, MetaEvent type, const Bytes& data)
{
    appendVariableLength(track, delta);
    track.push_back(0xFF);
    track.push_back(static_cast<std::uint8_t>(type));
    appendVariableLength(track, static_cast<std::uint32_t>(data.size()));
    std::ranges::copy(data, std::back_inserter(track));
}

/// What comes before an event. A number has four bytes at most; texts without a letter, which no player
/// minds, split what is longer.
void appendPause(Bytes& track, std::int64_t ticks)
{
    constexpr std::uint32_t longest = (1U << 28) - 1;
    for (; ticks > longest; ticks -= longest)
        appendMeta(track, longest, MetaEvent::text, {});
    appendVariableLength(track, static_cast<std::uint32_t>(ticks));
}

void appendName(Bytes& track, std::string_view name)
{
    appendMeta(track, 0, MetaEvent::trackName, Bytes(name.begin(), name.end()));
}

void appendTrack(Bytes& file, Bytes track)
{
    appendMeta(track, 0, MetaEvent::endOfTrack, {});
    appendText(file, "MTrk");
    appendNumber(file, static_cast<std::uint32_t>(track.size()), 4);
    std::ranges::copy(track, std::back_inserter(file));
}

Bytes tempoTrack(double quartersPerMinute)
{
    constexpr double microsecondsPerMinute = 60.0e6;
    Bytes tempo;
    appendNumber(tempo, static_cast<std::uint32_t>(std::lround(microsecondsPerMinute / quartersPerMinute)),
                 3);

    Bytes track;
    appendName(track, identity::name);
    appendMeta(track, 0, MetaEvent::tempo, tempo);
    // 4/4: numerator, denominator as a power of two, MIDI clocks per click, 32nds per quarter.
    appendMeta(track, 0, MetaEvent::timeSignature, {4, 2, 24, 8});
    return track;
}

struct KeyEvent
{
    std::int64_t tick;
    bool isOn;
    std::uint8_t key;
    std::uint8_t velocity;
};

Bytes ringTrack(int ring, std::vector<KeyEvent> events)
{
    constexpr int noteOff = 0x80;
    constexpr int noteOn = 0x90;
    // At the same tick what ends comes first, or it would end what begins.
    std::ranges::stable_sort(events, [](const auto& a, const auto& b) {
        return a.tick != b.tick ? a.tick < b.tick : a.isOn < b.isOn;
    });

    Bytes track;
    appendName(track, std::string("Ring ") + static_cast<char>('1' + ring));
    std::int64_t tick = 0;
    for (const auto& event : events) {
        appendPause(track, event.tick - tick);
        track.push_back(static_cast<std::uint8_t>((event.isOn ? noteOn : noteOff) + ring));
        track.push_back(event.key);
        track.push_back(event.velocity);
        tick = event.tick;
    }
    return track;
}

} // namespace

std::int64_t MidiFile::ticksAt(double seconds) const
{
    constexpr double secondsPerMinute = 60.0;
    return std::llround(seconds * quartersPerMinute / secondsPerMinute * ticksPerQuarter);
}

void MidiFile::addNote(double start, const MidiNote& note)
{
    const auto from = ticksAt(start);
    const auto to = std::max(ticksAt(start + note.seconds), from + 1);

    auto& [notes, latestAtKey] = tracks[note.channel];
    auto& latest = latestAtKey[note.key];
    if (latest > 0) {
        auto& earlier = notes[latest - 1];
        earlier.end = std::clamp(earlier.end, earlier.start, std::max(from, earlier.start));
    }
    notes.push_back({from, to, note.key, note.velocity});
    latest = notes.size();
}

std::vector<std::uint8_t> MidiFile::bytes() const
{
    constexpr std::uint32_t simultaneousTracks = 1;
    Bytes file;
    appendText(file, "MThd");
    appendNumber(file, 6, 4);
    appendNumber(file, simultaneousTracks, 2);
    appendNumber(file, 1 + ringTracks, 2);
    appendNumber(file, ticksPerQuarter, 2);

    appendTrack(file, tempoTrack(quartersPerMinute));
    for (int ring = 0; ring < ringTracks; ++ring) {
        std::vector<KeyEvent> events;
        for (const auto& note : tracks[static_cast<std::size_t>(ring)].notes) {
            if (note.end == note.start)
                continue;
            events.push_back({note.start, true, note.key, note.velocity});
            events.push_back({note.end, false, note.key, 0});
        }
        appendTrack(file, ringTrack(ring, std::move(events)));
    }
    return file;
}

} // namespace velotrine
