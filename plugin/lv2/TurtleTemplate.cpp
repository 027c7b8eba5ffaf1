#include "plugin/lv2/TurtleTemplate.h"

#include "audiounit/Identity.h"
#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "plugin/lv2/Lv2Names.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <regex>
#include <span>
#include <stdexcept>
#include <string_view>

namespace velotrine {

namespace {

std::string joined(std::initializer_list<std::string_view> texts)
{
    std::string result;
    for (const auto text : texts)
        result += text;
    return result;
}

std::string uri(std::string_view text, std::string_view fragment = {})
{
    return joined({"<", text, fragment, ">"});
}

std::string quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\')
            result += '\\';
        result += character;
    }
    result += '"';
    return result;
}

/// A number that reads as one with a fraction, which is what the format wants of a port's value.
std::string decimal(float value)
{
    auto text = shortestText(value);
    if (text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

std::string presetUri(std::size_t number)
{
    return uri(lv2PluginUri, joined({"#preset", std::to_string(number)}));
}

std::string_view propertiesOf(const ParameterInfo& parameter)
{
    switch (parameter.kind) {
    case ParameterKind::root:
    case ParameterKind::scale:
        return "lv2:integer , lv2:enumeration";
    case ParameterKind::toggle:
        return "lv2:toggled";
    case ParameterKind::spots:
    case ParameterKind::octave:
        return "lv2:integer";
    case ParameterKind::amount:
    case ParameterKind::turns:
    case ParameterKind::tempo:
        return {};
    }
    return {};
}

std::string_view unitOf(const ParameterInfo& parameter)
{
    switch (parameter.kind) {
    case ParameterKind::amount:
        return "units:coef";
    case ParameterKind::turns:
        return R"([ a units:Unit ; rdfs:label "turns" ; units:symbol "turns" ; units:render "%f turns" ])";
    case ParameterKind::tempo:
        return "units:bpm";
    case ParameterKind::spots:
        return R"([ a units:Unit ; rdfs:label "spots" ; units:symbol "spots" ; units:render "%d spots" ])";
    case ParameterKind::root:
    case ParameterKind::scale:
    case ParameterKind::toggle:
    case ParameterKind::octave:
        return {};
    }
    return {};
}

std::string scalePoints(std::span<const std::string_view> names)
{
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i)
        text += joined({i == 0 ? "\t\tlv2:scalePoint [ rdfs:label " : " , [ rdfs:label ", quoted(names[i]),
                        " ; rdf:value ", std::to_string(i), " ]"});
    text += " ;\n";
    return text;
}

std::string controlPort(const ParameterInfo& parameter)
{
    auto text = joined({"[\n\t\ta lv2:InputPort , lv2:ControlPort ;\n",              //
                        "\t\tlv2:index ", std::to_string(parameter.address), " ;\n", //
                        "\t\tlv2:symbol ", quoted(parameter.identifier), " ;\n"});
    if (const auto properties = propertiesOf(parameter); !properties.empty())
        text += joined({"\t\tlv2:portProperty ", properties, " ;\n"});
    if (const auto unit = unitOf(parameter); !unit.empty())
        text += joined({"\t\tunits:unit ", unit, " ;\n"});
    if (parameter.kind == ParameterKind::root)
        text += scalePoints(rootNames);
    if (parameter.kind == ParameterKind::scale)
        text += scalePoints(scaleNames);
    text += joined({"\t\tlv2:default ", decimal(parameter.initialValue), " ;\n", //
                    "\t\tlv2:minimum ", decimal(parameter.minValue), " ;\n",     //
                    "\t\tlv2:maximum ", decimal(parameter.maxValue), " ;\n",     //
                    "\t\tlv2:name ", quoted(parameter.name), "\n\t]"});
    return text;
}

std::string controlPorts()
{
    std::string text;
    for (const auto& parameter : parameterTable())
        text += joined({text.empty() ? "" : " , ", controlPort(parameter)});
    return text;
}

// Hosts take the newest of several bundles by these two numbers, and an odd or a zero minor version for
// unstable.

std::string minorVersion()
{
    constexpr std::uint32_t minorsOfAMajor = 100;
    constexpr std::uint32_t portsAdded =
        1; // since version 1.0; a new port makes a new minor version by itself
    return std::to_string(2 *
                          (identity::majorVersion * minorsOfAMajor + identity::minorVersion + portsAdded));
}

std::string microVersion()
{
    return std::to_string(2 * identity::patchVersion);
}

std::string presetHead(std::size_t number)
{
    return joined({number == 0 ? "" : "\n\n", presetUri(number), "\n\ta pset:Preset ;\n\tlv2:appliesTo ",
                   uri(lv2PluginUri), " ;\n\trdfs:label ", quoted(presetTable()[number].name), " ;\n"});
}

/// Which presets there are, and which file says more of them.
std::string presetList()
{
    std::string text;
    for (std::size_t number = 0; number < presetCount; ++number)
        text += joined({presetHead(number), "\trdfs:seeAlso <presets.ttl> ."});
    return text;
}

/// A value for each control port in each of the factory presets.
std::string presets()
{
    std::string text;
    for (std::size_t number = 0; number < presetCount; ++number) {
        text += joined({presetHead(number), "\tlv2:port "});
        for (const auto& parameter : parameterTable())
            text += joined({parameter.address == 0 ? "" : " , ", "[\n\t\tlv2:symbol ",
                            quoted(parameter.identifier), " ;\n\t\tpset:value ",
                            decimal(presetTable()[number].values[parameter.address]), "\n\t]"});
        text += " .";
    }
    return text;
}

/// What a template's "@NAME@" stands for.
std::string valueOf(std::string_view name)
{
    static const std::map<std::string_view, std::function<std::string()>> values{
        {"NAME", [] { return identity::name; }},
        {"MAKER", [] { return identity::maker; }},
        {"DESCRIPTION", [] { return identity::description; }},
        {"LICENSE", [] { return identity::license; }},
        {"CLASS", [] { return identity::lv2Class; }},
        {"PLUGIN_URI", [] { return lv2PluginUri; }},
        {"UI_URI", [] { return lv2UiUri; }},
        {"MINOR_VERSION", minorVersion},
        {"MICRO_VERSION", microVersion},
        {"CONTROL_PORTS", controlPorts},
        {"LEFT_PORT", [] { return std::to_string(lv2Port::left); }},
        {"RIGHT_PORT", [] { return std::to_string(lv2Port::right); }},
        {"TIME_PORT", [] { return std::to_string(lv2Port::time); }},
        {"NOTES_PORT", [] { return std::to_string(lv2Port::notes); }},
        {"PRESET_LIST", presetList},
        {"PRESETS", presets},
    };
    const auto found = values.find(name);
    if (found == values.end())
        throw std::invalid_argument("nothing is called @" + std::string(name) + "@");
    return found->second();
}

} // namespace

std::string filledIn(const std::string& turtleTemplate)
{
    // "@prefix" is Turtle's own.
    static const std::regex place("@([A-Z_]+)@");
    std::string text;
    auto rest = turtleTemplate.begin();
    for (std::sregex_iterator found(turtleTemplate.begin(), turtleTemplate.end(), place), end; found != end;
         ++found) {
        text.append(rest, (*found)[0].first);
        text += valueOf((*found)[1].str());
        rest = (*found)[0].second;
    }
    return text.append(rest, turtleTemplate.end());
}

} // namespace velotrine
