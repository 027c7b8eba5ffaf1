#include "plugin/lv2/TimePosition.h"

#include <lv2/time/time.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace velotrine {

namespace {

LV2_URID idOf(const LV2_URID_Map& map, const char* uri)
{
    return map.map(map.handle, uri);
}

/// The value behind an atom's header, which need not be aligned to its type; the fallback if the atom is too
/// small for it.
template <typename T>
double valueOf(const LV2_Atom& atom, double fallback) noexcept
{
    if (atom.size < sizeof(T))
        return fallback;
    T value{};
    std::memcpy(&value, &atom + 1, sizeof value);
    return static_cast<double>(value);
}

} // namespace

TimePosition::TimePosition(const LV2_URID_Map& map)
    : sequence(idOf(map, LV2_ATOM__Sequence)), object(idOf(map, LV2_ATOM__Object)),
      blank(idOf(map, LV2_ATOM__Blank)), resource(idOf(map, LV2_ATOM__Resource)),
      integer(idOf(map, LV2_ATOM__Int)), longInteger(idOf(map, LV2_ATOM__Long)),
      floating(idOf(map, LV2_ATOM__Float)), doubleFloating(idOf(map, LV2_ATOM__Double)),
      position(idOf(map, LV2_TIME__Position)), speed(idOf(map, LV2_TIME__speed)),
      beatsPerMinute(idOf(map, LV2_TIME__beatsPerMinute)), beatsPerBar(idOf(map, LV2_TIME__beatsPerBar)),
      beatUnit(idOf(map, LV2_TIME__beatUnit))
{}

double TimePosition::number(const LV2_Atom& atom, double fallback) const noexcept VELOTRINE_NONBLOCKING
{
    if (atom.type == floating)
        return valueOf<float>(atom, fallback);
    if (atom.type == doubleFloating)
        return valueOf<double>(atom, fallback);
    if (atom.type == integer)
        return valueOf<std::int32_t>(atom, fallback);
    if (atom.type == longInteger)
        return valueOf<std::int64_t>(atom, fallback);
    return fallback;
}

bool TimePosition::update(HostTransport& transport,
                          const LV2_Atom& event) const noexcept VELOTRINE_NONBLOCKING
{
    const auto isObject = event.type == object || event.type == blank || event.type == resource;
    if (!isObject || event.size < sizeof(LV2_Atom_Object_Body))
        return false;
    const auto* const body = reinterpret_cast<const std::byte*>(&event + 1);
    LV2_Atom_Object_Body kind{};
    std::memcpy(&kind, body, sizeof kind);
    if (kind.otype != position)
        return false;

    constexpr std::size_t alignment = 8; // of each property
    for (std::size_t at = sizeof kind; at + sizeof(LV2_Atom_Property_Body) <= event.size;) {
        const auto& property = *reinterpret_cast<const LV2_Atom_Property_Body*>(body + at);
        const auto size = sizeof property + property.value.size;
        if (size > event.size - at)
            break;
        if (property.key == speed)
            transport.isPlaying = number(property.value, transport.isPlaying ? 1.0 : 0.0) > 0.0;
        else if (property.key == beatsPerMinute) // of quarter notes, whatever hosts say the beat is
            transport.tempo = number(property.value, transport.tempo);
        else if (property.key == beatsPerBar)
            transport.beatsPerBar = number(property.value, transport.beatsPerBar);
        else if (property.key == beatUnit)
            transport.beatUnit = number(property.value, transport.beatUnit);
        at += (size + alignment - 1) / alignment * alignment;
    }
    return true;
}

} // namespace velotrine
