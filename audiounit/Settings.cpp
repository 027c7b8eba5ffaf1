#include "audiounit/Settings.h"

#include "audiounit/Parameters.h"
#include "audiounit/VelotrineAudioUnit.h"

#include <algorithm>
#include <cmath>
#include <variant>

namespace velotrine {

namespace {

constexpr float alikePartOfRange = 1e-6f;

float bounded(const ParameterInfo& info, float value)
{
    return std::clamp(value, info.minValue, info.maxValue);
}

void readFurtherValues(const AUFullState& state, Settings& into)
{
    for (const auto& [name, value] : state.furtherValues) {
        if (const auto* const number = std::get_if<std::uint32_t>(&value); number && name == seedKey)
            into.seed = *number;
        if (const auto* const isOn = std::get_if<bool>(&value); isOn && name == sameMusicAtEveryStartKey)
            into.sameMusicAtEveryStart = *isOn;
    }
}

} // namespace

Settings settingsFromState(const AUFullState& state, const Settings& base)
{
    Settings read{.values = base.values, .preset = state.currentPreset};
    for (const auto& [identifier, value] : state.parameters)
        if (const auto* const info = parameterWithIdentifier(identifier); info && std::isfinite(value))
            read.values[info->address] = bounded(*info, value);
    readFurtherValues(state, read);
    return read;
}

AUFullState stateFromSettings(const Settings& settings)
{
    AUFullState state{{}, settings.preset};
    for (const auto& info : parameterTable())
        state.parameters.emplace_back(info.identifier, settings.values[info.address]);
    if (settings.seed != defaultSeed)
        state.furtherValues.emplace_back(seedKey, settings.seed);
    if (settings.sameMusicAtEveryStart)
        state.furtherValues.emplace_back(sameMusicAtEveryStartKey, true);
    return state;
}

AUFullState stateThatChanges(const Settings& from, const Settings& to)
{
    auto state = stateFromSettings(to);
    std::erase_if(state.parameters, [&from](const auto& named) {
        return from.values[parameterWithIdentifier(named.first)->address] == named.second;
    });
    return state;
}

bool areAlike(ParameterAddress address, float value, float other)
{
    const auto& info = parameterTable().at(address);
    return std::abs(value - other) <= alikePartOfRange * (info.maxValue - info.minValue);
}

} // namespace velotrine
