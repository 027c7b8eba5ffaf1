#include "audiounit/StateText.h"

#include "audiounit/OrderedJson.h"
#include "audiounit/Parameters.h"
#include "audiounit/StateDocument.h"
#include "audiounit/VelotrineAudioUnit.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace velotrine {

namespace {

constexpr int version = 1;

const StateDocument& member(const StateDocument& object, const char* key, StateDocument::value_t type,
                            const char* expected)
{
    const auto found = object.find(key);
    if (found == object.end())
        throw StateRefusal(std::string("\"") + key + "\" is missing");
    if (found->type() != type)
        throw StateRefusal(std::string("\"") + key + "\" must be " + expected);
    return *found;
}

void checkVersion(const StateDocument& document)
{
    const auto found = document.find("version");
    if (found == document.end())
        throw StateRefusal("\"version\" is missing");
    if (!found->is_number_integer())
        throw StateRefusal("\"version\" must be a whole number");
    if (*found != version)
        throw StateRefusal("\"version\" is " + found->dump() + ", but this program reads version 1");
}

/// A number too large for a float becomes the largest float: it is out of every range, and will be bounded.
float narrowed(double value)
{
    constexpr auto largest = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::clamp(value, -largest, largest));
}

AUValue readValue(const std::string& identifier, const StateDocument& value)
{
    constexpr std::size_t longest = 40;
    if (!value.is_number())
        throw StateRefusal("the value of \"" + excerpt(identifier, longest) +
                           "\" in \"parameters\" must be a number");
    return narrowed(value.get<double>());
}

std::optional<AUAudioUnitPreset> readPreset(const StateDocument& document)
{
    const auto found = document.find("preset");
    if (found == document.end() || found->is_null())
        return std::nullopt;
    if (!found->is_object())
        throw StateRefusal("\"preset\" must be an object or null");
    const auto number = found->find("number");
    if (number == found->end())
        throw StateRefusal("\"number\" is missing in \"preset\"");
    const bool beyond64Bits = number->is_number_unsigned() && number->get<std::uint64_t>() > INT64_MAX;
    if (!number->is_number_integer() || beyond64Bits)
        throw StateRefusal("\"number\" in \"preset\" must be a whole number");
    return AUAudioUnitPreset{
        number->get<std::int64_t>(),
        member(*found, "name", StateDocument::value_t::string, "a text").get<std::string>()};
}

/// Those that the instrument has in the tree's order, then the others.
std::vector<std::pair<std::string, AUValue>> readParameters(const StateDocument& parameters)
{
    std::vector<std::pair<std::string, AUValue>> read;
    for (const auto& info : parameterTable())
        if (const auto found = parameters.find(info.identifier); found != parameters.end())
            read.emplace_back(info.identifier, readValue(info.identifier, *found));
    for (const auto& [identifier, value] : parameters.items())
        if (parameterWithIdentifier(identifier) == nullptr)
            read.emplace_back(identifier, readValue(identifier, value));
    return read;
}

std::vector<std::pair<std::string, AUFurtherValue>> readFurtherValues(const StateDocument& document)
{
    std::vector<std::pair<std::string, AUFurtherValue>> read;
    if (const auto found = document.find(seedKey); found != document.end()) {
        if (!found->is_number_unsigned() || found->get<std::uint64_t>() > UINT32_MAX)
            throw StateRefusal("\"seed\" must be a whole number from 0 to 4294967295");
        read.emplace_back(seedKey, found->get<std::uint32_t>());
    }
    if (const auto found = document.find(sameMusicAtEveryStartKey); found != document.end()) {
        if (!found->is_boolean())
            throw StateRefusal("\"sameMusicAtEveryStart\" must be true or false");
        read.emplace_back(sameMusicAtEveryStartKey, found->get<bool>());
    }
    return read;
}

/// A switch, a number or a text as JSON.
std::string written(const OrderedJson& scalar)
{
    return scalar.dump(-1, ' ', false, OrderedJson::error_handler_t::replace);
}

std::string presetJson(const std::optional<AUAudioUnitPreset>& preset)
{
    if (!preset)
        return "null";
    return jsonObject({{"number", written(preset->number)}, {"name", written(preset->name)}}, 1);
}

std::string parametersJson(const AUFullState& state)
{
    std::vector<JsonMember> values;
    for (const auto& [identifier, value] : state.parameters)
        if (std::isfinite(value))
            values.emplace_back(identifier, written(value));
    return jsonObject(values, 1);
}

/// In the document's order.
std::vector<JsonMember> membersOf(const AUFullState& state)
{
    std::vector<JsonMember> members{{"version", written(version)},
                                    {"preset", presetJson(state.currentPreset)},
                                    {"parameters", parametersJson(state)}};
    for (const auto& [name, value] : state.furtherValues)
        members.emplace_back(name, std::visit([](auto plain) { return written(plain); }, value));
    return members;
}

} // namespace

// The library's documents take memory even while they are destroyed, and end the program when it runs out.
// So only numbers and texts go through it: whoever saves in a shortage gets an exception.
std::string jsonObject(const std::vector<JsonMember>& members, int depth)
{
    constexpr std::size_t spacesPerLevel = 2;
    const std::string outerIndent(spacesPerLevel * static_cast<std::size_t>(depth), ' ');
    std::string text = "{";
    for (const auto& [key, value] : members) {
        text += text.size() == 1 ? "\n" : ",\n";
        text.append(outerIndent).append("  ").append(written(key)).append(": ").append(value);
    }
    return members.empty() ? "{}" : text + "\n" + outerIndent + "}";
}

std::string textFromState(const AUFullState& state, const std::vector<JsonMember>& furtherMembers)
{
    auto members = membersOf(state);
    members.insert(members.end(), furtherMembers.begin(), furtherMembers.end());
    return jsonObject(members, 0) + "\n";
}

StateDocument parseState(std::string_view text)
{
    return parseJson(text, maxStateBytes >> 20);
}

AUFullState stateFromDocument(const StateDocument& document)
{
    if (!document.is_object())
        throw StateRefusal("it must be a JSON object");
    checkVersion(document);

    AUFullState state;
    state.currentPreset = readPreset(document);
    state.parameters =
        readParameters(member(document, "parameters", StateDocument::value_t::object, "an object"));
    state.furtherValues = readFurtherValues(document);
    return state;
}

StateReading stateFromText(std::string_view text)
{
    try {
        return {stateFromDocument(parseState(text)), {}};
    } catch (const StateRefusal& refusal) {
        return {std::nullopt, refusal.what()};
    }
}

} // namespace velotrine
