#include "render/Listing.h"

#include "audiounit/OrderedJson.h"
#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace velotrine {

namespace {

constexpr int jsonIndent = 2;

using Row = std::vector<std::string>;

/// Columns as wide as their widest cell.
std::string table(const std::vector<Row>& rows)
{
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());

    std::string text;
    for (const auto& row : rows) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            text += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
        text += row.back() + '\n';
    }
    return text;
}

const char* unitName(AudioUnitParameterUnit unit)
{
    switch (unit) {
    case AudioUnitParameterUnit::generic:
        return "generic";
    case AudioUnitParameterUnit::indexed:
        return "indexed";
    case AudioUnitParameterUnit::boolean:
        return "boolean";
    case AudioUnitParameterUnit::bpm:
        return "bpm";
    }
    return "";
}

OrderedJson parameterJson(const ParameterInfo& parameter)
{
    OrderedJson json{{"address", parameter.address},
                     {"identifier", parameter.identifier},
                     {"name", parameter.name},
                     {"min", parameter.minValue},
                     {"max", parameter.maxValue},
                     {"initial", parameter.initialValue},
                     {"unit", unitName(parameter.unit)},
                     {"canRamp", (parameter.flags & kAudioUnitParameterFlag_CanRamp) != 0}};
    for (const auto name : valueNames(parameter.kind))
        json["values"].push_back(name);
    return json;
}

} // namespace

std::string presetListing(bool asJson)
{
    std::vector<Row> rows;
    auto json = OrderedJson::array();
    for (std::size_t number = 0; number < presetTable().size(); ++number) {
        const auto& preset = presetTable()[number];
        rows.push_back({std::to_string(number), std::string(preset.name)});
        OrderedJson values;
        for (const auto& parameter : parameterTable())
            values[parameter.identifier] = preset.values[parameter.address];
        json.push_back({{"number", number}, {"name", preset.name}, {"values", values}});
    }
    return asJson ? json.dump(jsonIndent) + "\n" : table(rows);
}

std::string parameterListing(bool asJson)
{
    std::vector<Row> rows{{"identifier", "name", "range", "initial"}};
    auto json = OrderedJson::array();
    for (const auto& parameter : parameterTable()) {
        rows.push_back({parameter.identifier, parameter.name,
                        shortestText(parameter.minValue) + " to " + shortestText(parameter.maxValue),
                        parameterText(parameter, parameter.initialValue)});
        json.push_back(parameterJson(parameter));
    }
    return asJson ? json.dump(jsonIndent) + "\n" : table(rows);
}

} // namespace velotrine
