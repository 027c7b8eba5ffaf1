#pragma once

#include "engine/ParameterAddress.h"
#include "engine/RingCount.h"
#include "engine/Shared.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace velotrine {

/// The parameters by name, each with its initial value. Once as the kernel keeps them, Shared with all
/// threads, and once as plain values.
template <template <typename> typename Field>
struct ParameterFields
{
    // Global parameters

    /// 0..1: how fast the rings rotate, and above 0.5 how far apart their speeds are
    Field<float> activity{0.5f};
    Field<float> boredom{0.5f};   ///< 0..1: from learned to chromatic note choice; NaN counts as 0
    Field<float> calories{0.5f};  ///< 0..1: depth of the rings' wobble
    Field<float> drudgery{0.5f};  ///< 0..1: feedback of the voices' modulators; NaN counts as 0
    Field<float> rootNote{0.0f};  ///< 0..11, 0 is C
    Field<float> scaleType{0.0f}; ///< 0..3, bounded to it
    /// Internal tempo, quarter notes a minute, bounded to minTempo..maxTempo; NaN counts as maxTempo
    Field<float> bpm{120.0f};
    Field<float> volume{0.8f}; ///< 0..1, before the soft clip
    Field<bool> sync{true};    ///< follow the host's tempo and transport rather than the internal clock

    // Ring parameters

    PerRing<Field<std::int64_t>> spotCounts{4, 5, 6, 7, 8}; ///< 0..16, evenly spaced
    PerRing<Field<float>> phaseOffsets{0, 0, 0, 0, 0};      ///< turns, 0..1; at least 0.001 is used
    PerRing<Field<float>> probabilities{0.75f, 0.75f, 0.75f, 0.75f, 0.75f}; ///< that a crossed spot fires
    PerRing<Field<std::int64_t>> ringOctaves{1, 2, 3, 4, 5}; ///< MIDI note = 12 x octave + pitch class
    PerRing<Field<float>> ringVolumes{0.7f, 0.7f, 0.7f, 0.7f, 0.7f}; ///< 0..1, squared for the gain
    PerRing<Field<float>> ringTimbres{0.5f, 0.5f, 0.5f, 0.5f, 0.5f}; ///< 0..1, see timbreParameters
};

using ParameterSnapshot = ParameterFields<std::type_identity_t>;

/// The one place that knows which address means which field. Calls the visitor with that field of each of the
/// objects; not at all for an address beyond the last.
template <typename Visitor, typename... Fields>
[[gnu::always_inline]] constexpr void visitField(ParameterAddress address, Visitor&& visitor,
                                                 Fields&... fields) noexcept
{
    if (address >= parameterCount)
        return;

    if (address < globalParameterCount) {
        switch (static_cast<GlobalParameter>(address)) {
        case GlobalParameter::activity:
            return visitor(fields.activity...);
        case GlobalParameter::boredom:
            return visitor(fields.boredom...);
        case GlobalParameter::calories:
            return visitor(fields.calories...);
        case GlobalParameter::drudgery:
            return visitor(fields.drudgery...);
        case GlobalParameter::rootNote:
            return visitor(fields.rootNote...);
        case GlobalParameter::scaleType:
            return visitor(fields.scaleType...);
        case GlobalParameter::bpm:
            return visitor(fields.bpm...);
        case GlobalParameter::volume:
            return visitor(fields.volume...);
        case GlobalParameter::sync:
            return visitor(fields.sync...);
        }
    }

    const auto group = (address - globalParameterCount) / ringCount;
    const auto ring = (address - globalParameterCount) % ringCount;
    switch (static_cast<RingParameter>(group)) {
    case RingParameter::spots:
        return visitor(fields.spotCounts[ring]...);
    case RingParameter::phase:
        return visitor(fields.phaseOffsets[ring]...);
    case RingParameter::probability:
        return visitor(fields.probabilities[ring]...);
    case RingParameter::octave:
        return visitor(fields.ringOctaves[ring]...);
    case RingParameter::volume:
        return visitor(fields.ringVolumes[ring]...);
    case RingParameter::timbre:
        return visitor(fields.ringTimbres[ring]...);
    }
}

/// Calls the visitor with each address as a constant, so that visitField takes no time to look it up.
template <typename Visitor>
[[gnu::always_inline]] constexpr void forEachAddress(Visitor&& visitor) noexcept
{
    [&]<std::size_t... address>(std::index_sequence<address...>)
    {
        (visitor(std::integral_constant<ParameterAddress, address>{}), ...);
    }
    (std::make_index_sequence<parameterCount>{});
}

/// Reads each parameter once.
inline void readOnce(const ParameterFields<Shared>& parameters, ParameterSnapshot& into) noexcept
{
    const auto read = [](const auto& shared, auto& value) { value = shared.load(); };
    forEachAddress([&](auto address) { visitField(address, read, parameters, into); });
}

} // namespace velotrine
