#include "plugin/lv2/TurtleFiles.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "plugin/lv2/Lv2Names.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace velotrine {

namespace {

constexpr std::string_view prefixes = R"(@prefix atom:  <http://lv2plug.in/ns/ext/atom#> .
@prefix doap:  <http://usefulinc.com/ns/doap#> .
@prefix foaf:  <http://xmlns.com/foaf/0.1/> .
@prefix log:   <http://lv2plug.in/ns/ext/log#> .
@prefix lv2:   <http://lv2plug.in/ns/lv2core#> .
@prefix opts:  <http://lv2plug.in/ns/ext/options#> .
@prefix pg:    <http://lv2plug.in/ns/ext/port-groups#> .
@prefix pset:  <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf:   <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs:  <http://www.w3.org/2000/01/rdf-schema#> .
@prefix state: <http://lv2plug.in/ns/ext/state#> .
@prefix time:  <http://lv2plug.in/ns/ext/time#> .
@prefix ui:    <http://lv2plug.in/ns/extensions/ui#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix urid:  <http://lv2plug.in/ns/ext/urid#> .
)";

std::string uri(std::string_view text)
{
    return "<" + std::string(text) + ">";
}

std::string quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\')
            result += '\\';
        result += character;
    }
    return result + "\"";
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
    return uri(std::string(lv2PluginUri) + "#preset" + std::to_string(number));
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
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += i == 0 ? "\t\tlv2:scalePoint " : " , ";
        text += "[ rdfs:label " + quoted(names[i]) + " ; rdf:value " + std::to_string(i) + " ]";
    }
    return text + " ;\n";
}

std::string controlPort(const ParameterInfo& parameter)
{
    std::string text = "[\n\t\ta lv2:InputPort , lv2:ControlPort ;\n";
    text += "\t\tlv2:index " + std::to_string(parameter.address) + " ;\n";
    text += "\t\tlv2:symbol " + quoted(parameter.identifier) + " ;\n";
    if (const auto properties = propertiesOf(parameter); !properties.empty())
        text += "\t\tlv2:portProperty " + std::string(properties) + " ;\n";
    if (const auto unit = unitOf(parameter); !unit.empty())
        text += "\t\tunits:unit " + std::string(unit) + " ;\n";
    if (parameter.kind == ParameterKind::root)
        text += scalePoints(rootNames);
    if (parameter.kind == ParameterKind::scale)
        text += scalePoints(scaleNames);
    text += "\t\tlv2:default " + decimal(parameter.initialValue) + " ;\n";
    text += "\t\tlv2:minimum " + decimal(parameter.minValue) + " ;\n";
    text += "\t\tlv2:maximum " + decimal(parameter.maxValue) + " ;\n";
    text += "\t\tlv2:name " + quoted(parameter.name) + "\n\t]";
    return text;
}

std::string audioPort(std::uint32_t index, std::string_view symbol, std::string_view name)
{
    std::string text = "[\n\t\ta lv2:OutputPort , lv2:AudioPort ;\n";
    text += "\t\tlv2:index " + std::to_string(index) + " ;\n";
    text += "\t\tlv2:symbol " + quoted(symbol) + " ;\n";
    text += "\t\tlv2:designation pg:" + std::string(symbol) + " ;\n";
    text += "\t\tpg:group " + uri(std::string(lv2PluginUri) + "#output") + " ;\n";
    text += "\t\tlv2:name " + quoted(name) + "\n\t]";
    return text;
}

std::string timePort()
{
    return "[\n\t\ta lv2:InputPort , atom:AtomPort ;\n\t\tlv2:index " + std::to_string(lv2Port::time) +
           R"( ;
		lv2:symbol "time" ;
		lv2:designation lv2:control ;
		lv2:portProperty lv2:connectionOptional ;
		atom:bufferType atom:Sequence ;
		atom:supports time:Position ;
		lv2:name "Time"
	])";
}

std::string versions(int majorVersion, int minorVersion, int patchVersion)
{
    // Hosts take the newest of several bundles by these two numbers, and an odd or a zero minor version for
    // unstable.
    constexpr int minorsOfAMajor = 100;
    return "\tlv2:minorVersion " + std::to_string(2 * (majorVersion * minorsOfAMajor + minorVersion)) +
           " ;\n\tlv2:microVersion " + std::to_string(2 * patchVersion) + " ;\n";
}

} // namespace

std::string manifestTurtle()
{
    std::string text(prefixes);
    text += "\n" + uri(lv2PluginUri) + "\n\ta lv2:Plugin , lv2:InstrumentPlugin ;\n" +
            "\tlv2:binary <velotrine.so> ;\n\trdfs:seeAlso <velotrine.ttl> .\n";
    text += "\n" + uri(lv2UiUri) + "\n\ta ui:X11UI ;\n" +
            "\tlv2:binary <velotrine.so> ;\n\trdfs:seeAlso <velotrine.ttl> .\n";
    for (std::size_t number = 0; number < presetCount; ++number)
        text += "\n" + presetUri(number) + "\n\ta pset:Preset ;\n\tlv2:appliesTo " + uri(lv2PluginUri) +
                " ;\n\trdfs:label " + quoted(presetTable()[number].name) +
                " ;\n\trdfs:seeAlso <presets.ttl> .\n";
    return text;
}

std::string pluginTurtle(int majorVersion, int minorVersion, int patchVersion)
{
    std::string text(prefixes);
    text += "\n" + uri(std::string(lv2PluginUri) + "#output") +
            "\n\ta pg:StereoGroup , pg:OutputGroup ;\n\tlv2:symbol \"output\" ;\n\tlv2:name \"Output\" .\n";
    text += "\n" + uri(lv2PluginUri) + "\n\ta lv2:Plugin , lv2:InstrumentPlugin ;\n";
    text += R"(	doap:name "Velotrine" ;
	doap:shortdesc "A musical instrument that plays itself" ;
	doap:license <http://spdx.org/licenses/GPL-3.0-or-later> ;
	doap:maintainer [ a foaf:Organization ; foaf:name "Marrowbeck" ] ;
)";
    text += versions(majorVersion, minorVersion, patchVersion);
    text += R"(	lv2:requiredFeature urid:map ;
	lv2:optionalFeature lv2:hardRTCapable , state:threadSafeRestore , log:log ;
	lv2:extensionData state:interface ;
)";
    text += "\tui:ui " + uri(lv2UiUri) + " ;\n";
    text += "\tpg:mainOutput " + uri(std::string(lv2PluginUri) + "#output") + " ;\n\tlv2:port ";
    for (const auto& parameter : parameterTable())
        text += controlPort(parameter) + " , ";
    text += audioPort(lv2Port::left, "left", "Left") + " , " + audioPort(lv2Port::right, "right", "Right") +
            " , " + timePort() + " .\n";

    text += "\n" + uri(lv2UiUri) + R"(
	a ui:X11UI ;
	lv2:requiredFeature ui:idleInterface , ui:parent , urid:map , <http://lv2plug.in/ns/ext/instance-access> ;
	lv2:optionalFeature ui:resize , ui:touch , opts:options , log:log ;
	lv2:extensionData ui:idleInterface , ui:resize ;
	opts:supportedOption ui:scaleFactor .
)";
    return text;
}

std::string presetsTurtle()
{
    std::string text(prefixes);
    for (std::size_t number = 0; number < presetCount; ++number) {
        const auto& preset = presetTable()[number];
        text += "\n" + presetUri(number) + "\n\ta pset:Preset ;\n\tlv2:appliesTo " + uri(lv2PluginUri) +
                " ;\n\trdfs:label " + quoted(preset.name) + " ;\n\tlv2:port ";
        for (const auto& parameter : parameterTable())
            text += std::string(parameter.address == 0 ? "" : " , ") + "[\n\t\tlv2:symbol " +
                    quoted(parameter.identifier) + " ;\n\t\tpset:value " +
                    decimal(preset.values[parameter.address]) + "\n\t]";
        text += " .\n";
    }
    return text;
}

} // namespace velotrine
