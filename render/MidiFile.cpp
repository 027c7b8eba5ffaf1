#include "render/MidiFile.h"

#include "audiounit/Identity.h"
#include "audiounit/NoteOutput.h"

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

constexpr std::uint8_t metaStatus = 0xFF;

enum class MetaEvent : std::uint8_t
{
    text = 0x01,
    trackName = 0x03,
    endOfTrack = 0x2F,
    tempo = 0x51,
    timeSignature = 0x58,
};

/// Without the time at which it comes.
void appendEvent(Bytes& track, MetaEvent type, const Bytes& data)
{
    track.push_back(metaStatus);
    track.push_back(static_cast<std::uint8_t>(type));
    appendVariableLength(track, static_cast<std::uint32_t>(data.size()));
    std::ranges::copy(data, std::back_inserter(track));
}

void appendMeta(Bytes& track, std::uint32_t delta, MetaEvent type, const Bytes& data)
{
    appendVariableLength(track, delta);
    appendEvent(track, type, data);
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

std::int64_t ticksOf(double quarters)
{
    return std::llround(quarters * MidiFile::ticksPerQuarter);
}

Bytes tempoData(double quartersPerMinute)
{
    constexpr double microsecondsPerMinute = 60.0e6;
    constexpr long mostMicroseconds = (1L << 24) - 1;
    const auto microseconds =
        std::min(std::lround(microsecondsPerMinute / quartersPerMinute), mostMicroseconds);
    Bytes tempo;
    appendNumber(tempo, static_cast<std::uint32_t>(microseconds), 3);
    return tempo;
}

Bytes tempoTrack(const std::vector<TempoMap::Step>& steps, const std::string& comment)
{
    Bytes track;
    appendName(track, identity::name);
    if (!comment.empty())
        appendMeta(track, 0, MetaEvent::text, Bytes(comment.begin(), comment.end()));
    appendMeta(track, 0, MetaEvent::tempo, tempoData(steps.front().quartersPerMinute));
    // 4/4: numerator, denominator as a power of two, MIDI clocks per click, 32nds per quarter.
    appendMeta(track, 0, MetaEvent::timeSignature, {4, 2, 24, 8});
    std::int64_t tick = 0;
    for (const auto& step : std::span(steps).subspan(1)) {
        const auto next = ticksOf(step.quarters);
        appendPause(track, next - tick);
        appendEvent(track, MetaEvent::tempo, tempoData(step.quartersPerMinute));
        tick = next;
    }
    return track;
}

/// A note in ticks.
struct HeldKey
{
    std::int64_t start;
    std::int64_t end;
    std::uint8_t key;
    std::uint8_t velocity;
};

/// Each note ends where its key is struck again; of several at one tick the last remains.
std::vector<HeldKey> withoutOverlaps(std::vector<HeldKey> notes)
{
    /// 1 + index of each key's latest note; 0 until it is played.
    std::array<std::size_t, MidiNote::highestKey + 1> latestAtKey{};
    for (std::size_t i = 0; i < notes.size(); ++i) {
        const auto& note = notes[i];
        if (auto& latest = latestAtKey[note.key]; latest > 0) {
            auto& earlier = notes[latest - 1];
            earlier.end = std::clamp(earlier.end, earlier.start, std::max(note.start, earlier.start));
        }
        latestAtKey[note.key] = i + 1;
    }
    std::erase_if(notes, [](const auto& note) { return note.end == note.start; });
    return notes;
}

struct KeyEvent
{
    std::int64_t tick;
    bool isOn;
    std::uint8_t key;
    std::uint8_t velocity;
};

Bytes ringTrack(int ring, const std::vector<HeldKey>& notes)
{
    std::vector<KeyEvent> events;
    for (const auto& note : notes) {
        events.push_back({note.start, true, note.key, note.velocity});
        events.push_back({note.end, false, note.key, 0});
    }
    // At the same tick what ends comes first, or it would end what begins.
    std::ranges::stable_sort(events, [](const auto& a, const auto& b) {
        return a.tick != b.tick ? a.tick < b.tick : a.isOn < b.isOn;
    });

    Bytes track;
    appendName(track, std::string("Ring ") + static_cast<char>('1' + ring));
    std::int64_t tick = 0;
    for (const auto& event : events) {
        appendPause(track, event.tick - tick);
        const NoteMessage message{.frame = 0,
                                  .isOn = event.isOn,
                                  .channel = static_cast<std::uint8_t>(ring),
                                  .key = event.key,
                                  .velocity = event.velocity};
        std::ranges::copy(message.bytes(), std::back_inserter(track));
        tick = event.tick;
    }
    return track;
}

/// Reads a number of appendVariableLength() and moves on behind it; 0 at the end of the bytes.
std::uint32_t takeVariableLength(std::span<const std::uint8_t>& bytes)
{
    constexpr std::uint8_t moreToCome = 0x80;
    std::uint32_t number = 0;
    while (!bytes.empty()) {
        const auto byte = bytes.front();
        bytes = bytes.subspan(1);
        number = number << 7 | (byte & 0x7FU);
        if ((byte & moreToCome) == 0)
            break;
    }
    return number;
}

} // namespace

void MidiFile::addNote(double start, const MidiNote& note)
{
    tracks[note.channel].push_back({start, start + note.seconds, note.key, note.velocity});
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

    const auto steps = tempoMap.steps();
    const auto tickAt = [&steps](double seconds) { return ticksOf(TempoMap::quartersAt(steps, seconds)); };
    appendTrack(file, tempoTrack(steps, comment));
    for (int ring = 0; ring < ringTracks; ++ring) {
        std::vector<HeldKey> notes;
        for (const auto& note : tracks[static_cast<std::size_t>(ring)]) {
            const auto start = tickAt(note.start);
            notes.push_back({start, std::max(tickAt(note.end), start + 1), note.key, note.velocity});
        }
        appendTrack(file, ringTrack(ring, withoutOverlaps(std::move(notes))));
    }
    return file;
}

bool MidiFile::isOne(std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view magic = "MThd";
    return std::ranges::equal(bytes.first(std::min(bytes.size(), magic.size())), magic);
}

std::string MidiFile::commentIn(std::span<const std::uint8_t> bytes)
{
    constexpr std::size_t headerBytes = 14;
    constexpr std::size_t trackHeaderBytes = 8;
    bytes = bytes.subspan(std::min(bytes.size(), headerBytes + trackHeaderBytes));
    while (!bytes.empty()) {
        (void)takeVariableLength(bytes);
        if (bytes.size() < 2 || bytes[0] != metaStatus)
            break;
        const auto type = static_cast<MetaEvent>(bytes[1]);
        bytes = bytes.subspan(2);
        const std::size_t length = takeVariableLength(bytes);
        if (length > bytes.size())
            break;
        if (type == MetaEvent::text)
            return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)};
        bytes = bytes.subspan(length);
    }
    return "";
}

} // namespace velotrine
