#include "tests/render/MidiReader.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace velotrine {

namespace {

constexpr int metaStatus = 0xFF;
constexpr int endOfTrack = 0x2F;

class Reader
{
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : rest(bytes) {}

    [[nodiscard]] bool atEnd() const { return rest.empty(); }

    std::span<const std::uint8_t> take(std::size_t count)
    {
        if (count > rest.size())
            throw std::runtime_error("MIDI: it ends in the middle");
        const auto taken = rest.first(count);
        rest = rest.subspan(count);
        return taken;
    }

    std::int64_t number(std::size_t byteCount)
    {
        std::int64_t value = 0;
        for (const auto byte : take(byteCount))
            value = value * 256 + byte;
        return value;
    }

    std::int64_t variableLength()
    {
        constexpr int mostBytes = 4;
        std::int64_t value = 0;
        for (int i = 0; i < mostBytes; ++i) {
            const auto byte = number(1);
            value = value * 128 + (byte % 128);
            if (byte < 128)
                return value;
        }
        throw std::runtime_error("MIDI: a number of more than four bytes");
    }

    std::string text(std::size_t count)
    {
        const auto taken = take(count);
        return {taken.begin(), taken.end()};
    }

private:
    std::span<const std::uint8_t> rest;
};

MidiContent::Track readTrack(Reader track)
{
    MidiContent::Track events;
    std::int64_t tick = 0;
    while (!track.atEnd()) {
        tick += track.variableLength();
        MidiContent::Event event{tick, static_cast<int>(track.number(1)), 0, {}};
        if (event.status < 0x80)
            throw std::runtime_error("MIDI: running status, which this writer has no use for");
        std::size_t length = 2;
        if (event.status == metaStatus) {
            event.type = static_cast<int>(track.number(1));
            length = static_cast<std::size_t>(track.variableLength());
        } else if (event.status >= 0xF0) {
            throw std::runtime_error("MIDI: a system message");
        } else if (event.status >= 0xC0 && event.status < 0xE0) {
            length = 1;
        }
        const auto data = track.take(length);
        event.data.assign(data.begin(), data.end());
        const bool dataByteTooLarge = std::ranges::any_of(data, [](auto byte) { return byte > 127; });
        if (event.status != metaStatus && dataByteTooLarge)
            throw std::runtime_error("MIDI: a data byte above 127");
        events.push_back(event);
    }
    if (events.empty() || events.back().status != metaStatus || events.back().type != endOfTrack)
        throw std::runtime_error("MIDI: a track without an end");
    return events;
}

} // namespace

std::vector<MidiContent::Note> MidiContent::notes(std::size_t track) const
{
    std::vector<Note> found;
    std::map<std::pair<int, int>, std::size_t> sounding; // channel and key
    for (const auto& event : tracks.at(track)) {
        const int kind = event.status & 0xF0;
        if (event.status == metaStatus || (kind != 0x80 && kind != 0x90))
            continue;
        const std::pair<int, int> voice{event.status & 0x0F, event.data[0]};
        const bool isOn = kind == 0x90 && event.data[1] > 0;
        if (sounding.contains(voice) == isOn)
            throw std::runtime_error(isOn ? "MIDI: a note starts twice" : "MIDI: an end without a start");
        if (isOn) {
            sounding[voice] = found.size();
            found.push_back({event.tick, -1, voice.first, voice.second, event.data[1]});
        } else {
            found[sounding[voice]].end = event.tick;
            sounding.erase(voice);
        }
    }
    if (!sounding.empty())
        throw std::runtime_error("MIDI: a note without an end");
    return found;
}

std::vector<MidiContent::Event> MidiContent::meta(std::size_t track, int type) const
{
    std::vector<Event> found;
    for (const auto& event : tracks.at(track))
        if (event.status == metaStatus && event.type == type)
            found.push_back(event);
    return found;
}

MidiContent readMidi(std::span<const std::uint8_t> bytes)
{
    Reader file(bytes);
    if (file.text(4) != "MThd" || file.number(4) != 6)
        throw std::runtime_error("MIDI: no header");
    MidiContent content;
    content.format = static_cast<int>(file.number(2));
    const auto trackCount = file.number(2);
    content.ticksPerQuarter = static_cast<int>(file.number(2));
    for (std::int64_t i = 0; i < trackCount; ++i) {
        if (file.text(4) != "MTrk")
            throw std::runtime_error("MIDI: a track was expected");
        const auto length = static_cast<std::size_t>(file.number(4));
        content.tracks.push_back(readTrack(Reader(file.take(length))));
    }
    if (!file.atEnd())
        throw std::runtime_error("MIDI: something follows the last track");
    return content;
}

MidiContent readMidi(const std::string& bytes)
{
    return readMidi(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

} // namespace velotrine
