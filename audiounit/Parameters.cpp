#include "audiounit/Parameters.h"

#include <algorithm>

namespace velotrine {

namespace {

constexpr auto readWrite = kAudioUnitParameterFlag_IsReadable | kAudioUnitParameterFlag_IsWritable;
constexpr auto readWriteRamp = readWrite | kAudioUnitParameterFlag_CanRamp;

/// A ring parameter before it is spelled out for each ring.
struct RingGroup
{
    RingParameter parameter;
    std::string_view identifierPrefix;
    std::string_view nameWord;
    float maxValue; ///< the minimum is always 0
    AudioUnitParameterUnit unit;
    AudioUnitParameterOptions flags;
    std::array<float, ringCount> initialValues;
    ParameterKind kind;
};

using Unit = AudioUnitParameterUnit;

ParameterInfo amount(GlobalParameter parameter, const char* identifier, const char* name, float initialValue)
{
    return {.address = addressOf(parameter),
            .identifier = identifier,
            .name = name,
            .minValue = 0.0f,
            .maxValue = 1.0f,
            .unit = Unit::generic,
            .flags = readWriteRamp,
            .initialValue = initialValue,
            .kind = ParameterKind::amount};
}

std::array<ParameterInfo, globalParameterCount> globalParameters()
{
    using enum GlobalParameter;
    return {
        amount(activity, "activity", "Activity", 0.5f),
        amount(boredom, "boredom", "Boredom", 0.5f),
        amount(calories, "calories", "Calories", 0.5f),
        amount(drudgery, "drudgery", "Drudgery", 0.5f),
        {addressOf(rootNote), "rootNote", "Root Note", 0, 11, Unit::indexed, readWrite, 0,
         ParameterKind::root},
        {addressOf(scaleType), "scaleType", "Scale", 0, 3, Unit::indexed, readWrite, 0, ParameterKind::scale},
        {addressOf(bpm), "bpm", "BPM", minTempo, maxTempo, Unit::bpm, readWrite, 120, ParameterKind::tempo},
        amount(volume, "volume", "Volume", 0.8f),
        {addressOf(sync), "sync", "Sync", 0, 1, Unit::boolean, readWrite, 1, ParameterKind::toggle},
    };
}

const std::array<RingGroup, ringParameterCount> ringGroups{{
    {RingParameter::spots,
     "spots",
     "Spots",
     maxSpotsPerRing,
     Unit::indexed,
     readWrite,
     {4, 5, 6, 7, 8},
     ParameterKind::spots},
    {RingParameter::phase,
     "phase",
     "Phase",
     1,
     Unit::generic,
     readWrite,
     {0, 0, 0, 0, 0},
     ParameterKind::turns},
    {RingParameter::probability,
     "prob",
     "Probability",
     1,
     Unit::generic,
     readWrite,
     {0.75f, 0.75f, 0.75f, 0.75f, 0.75f},
     ParameterKind::amount},
    {RingParameter::octave,
     "octave",
     "Octave",
     7,
     Unit::indexed,
     readWrite,
     {1, 2, 3, 4, 5},
     ParameterKind::octave},
    {RingParameter::volume,
     "ringVol",
     "Ring Volume",
     1,
     Unit::generic,
     readWriteRamp,
     {0.7f, 0.7f, 0.7f, 0.7f, 0.7f},
     ParameterKind::amount},
    {RingParameter::timbre,
     "timbre",
     "Timbre",
     1,
     Unit::generic,
     readWriteRamp,
     {0.5f, 0.5f, 0.5f, 0.5f, 0.5f},
     ParameterKind::amount},
}};

ParameterInfo ringParameter(const RingGroup& group, int ring)
{
    const std::string suffix{'R', static_cast<char>('1' + ring)};
    return {.address = addressOf(group.parameter, ring),
            .identifier = std::string(group.identifierPrefix) + suffix,
            .name = std::string(group.nameWord) + " " + suffix,
            .minValue = 0.0f,
            .maxValue = group.maxValue,
            .unit = group.unit,
            .flags = group.flags,
            .initialValue = group.initialValues[static_cast<std::size_t>(ring)],
            .kind = group.kind};
}

std::array<ParameterInfo, parameterCount> makeTable()
{
    std::array<ParameterInfo, parameterCount> table;
    std::ranges::copy(globalParameters(), table.begin());
    for (const auto& group : ringGroups)
        for (int ring = 0; ring < ringCount; ++ring)
            table[addressOf(group.parameter, ring)] = ringParameter(group, ring);
    return table;
}

} // namespace

const std::array<ParameterInfo, parameterCount>& parameterTable()
{
    static const auto table = makeTable();
    return table;
}

const ParameterInfo* parameterWithIdentifier(std::string_view identifier)
{
    const auto& table = parameterTable();
    const auto found = std::ranges::find(table, identifier, &ParameterInfo::identifier);
    return found != table.end() ? &*found : nullptr;
}

std::span<const std::string_view> valueNames(ParameterKind kind)
{
    if (kind == ParameterKind::root)
        return rootNames;
    if (kind == ParameterKind::scale)
        return scaleNames;
    return {};
}

} // namespace velotrine
