#include "plugin/lv2/TurtleFiles.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "plugin/lv2/Lv2Names.h"

#include <cstddef>
#include <initializer_list>
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

std::string audioPort(std::uint32_t index, std::string_view symbol, std::string_view name)
{
    return joined({"[\n\t\ta lv2:OutputPort , lv2:AudioPort ;\n",         //
                   "\t\tlv2:index ", std::to_string(index), " ;\n",       //
                   "\t\tlv2:symbol ", quoted(symbol), " ;\n",             //
                   "\t\tlv2:designation pg:", symbol, " ;\n",             //
                   "\t\tpg:group ", uri(lv2PluginUri, "#output"), " ;\n", //
                   "\t\tlv2:name ", quoted(name), "\n\t]"});
}

std::string timePort()
{
    return joined({"[\n\t\ta lv2:InputPort , atom:AtomPort ;\n\t\tlv2:index ", std::to_string(lv2Port::time),
                   R"( ;
		lv2:symbol "time" ;
		lv2:designation lv2:control ;
		lv2:portProperty lv2:connectionOptional ;
		atom:bufferType atom:Sequence ;
		atom:supports time:Position ;
		lv2:name "Time"
	])"});
}

std::string versions(int majorVersion, int minorVersion, int patchVersion)
{
    // Hosts take the newest of several bundles by these two numbers, and an odd or a zero minor version for
    // unstable.
    constexpr int minorsOfAMajor = 100;
    return joined({"\tlv2:minorVersion ", std::to_string(2 * (majorVersion * minorsOfAMajor + minorVersion)),
                   " ;\n\tlv2:microVersion ", std::to_string(2 * patchVersion), " ;\n"});
}

std::string presetHead(std::size_t number)
{
    return joined({"\n", presetUri(number), "\n\ta pset:Preset ;\n\tlv2:appliesTo ", uri(lv2PluginUri),
                   " ;\n\trdfs:label ", quoted(presetTable()[number].name), " ;\n"});
}

} // namespace

std::string manifestTurtle()
{
    constexpr std::string_view files = "\tlv2:binary <velotrine.so> ;\n\trdfs:seeAlso <velotrine.ttl> .\n";
    auto text = joined({prefixes,                                                                      //
                        "\n", uri(lv2PluginUri), "\n\ta lv2:Plugin , lv2:InstrumentPlugin ;\n", files, //
                        "\n", uri(lv2UiUri), "\n\ta ui:X11UI ;\n", files});
    for (std::size_t number = 0; number < presetCount; ++number)
        text += joined({presetHead(number), "\trdfs:seeAlso <presets.ttl> .\n"});
    return text;
}

std::string pluginTurtle(int majorVersion, int minorVersion, int patchVersion)
{
    const auto output = uri(lv2PluginUri, "#output");
    auto text = joined({prefixes, "\n", output,
                        R"(
	a pg:StereoGroup , pg:OutputGroup ;
	lv2:symbol "output" ;
	lv2:name "Output" .
)",
                        "\n", uri(lv2PluginUri),
                        R"(
	a lv2:Plugin , lv2:InstrumentPlugin , doap:Project ;
	doap:name "Velotrine" ;
	doap:shortdesc "A musical instrument that plays itself" ;
	doap:license <http://spdx.org/licenses/GPL-3.0-or-later> ;
	doap:maintainer [ a foaf:Organization ; foaf:name "Marrowbeck" ] ;
)",
                        versions(majorVersion, minorVersion, patchVersion),
                        R"(	lv2:requiredFeature urid:map ;
	lv2:optionalFeature lv2:hardRTCapable , state:threadSafeRestore , log:log ;
	lv2:extensionData state:interface ;
)",
                        "\tui:ui ", uri(lv2UiUri), " ;\n\tpg:mainOutput ", output, " ;\n\tlv2:port "});
    for (const auto& parameter : parameterTable())
        text += joined({controlPort(parameter), " , "});
    text += joined({audioPort(lv2Port::left, "left", "Left"), " , ",
                    audioPort(lv2Port::right, "right", "Right"), " , ", timePort(), " .\n"});
    text += joined({"\n", uri(lv2UiUri), R"(
	a ui:X11UI ;
	lv2:requiredFeature ui:idleInterface , ui:parent , urid:map , <http://lv2plug.in/ns/ext/instance-access> ;
	lv2:optionalFeature ui:resize , ui:touch , opts:options , log:log ;
	lv2:extensionData ui:idleInterface , ui:resize ;
	opts:supportedOption ui:scaleFactor .
)"});
    return text;
}

std::string presetsTurtle()
{
    std::string text(prefixes);
    for (std::size_t number = 0; number < presetCount; ++number) {
        text += joined({presetHead(number), "\tlv2:port "});
        for (const auto& parameter : parameterTable())
            text += joined({parameter.address == 0 ? "" : " , ", "[\n\t\tlv2:symbol ",
                            quoted(parameter.identifier), " ;\n\t\tpset:value ",
                            decimal(presetTable()[number].values[parameter.address]), "\n\t]"});
        text += " .\n";
    }
    return text;
}

} // namespace velotrine
