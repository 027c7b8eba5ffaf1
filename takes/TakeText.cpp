#include "takes/TakeText.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/StateText.h"
#include "takes/TakeNames.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <span>

namespace velotrine {

namespace {

std::string flagText(double value)
{
    return value != 0.0 ? "true" : "false";
}

std::string wholeText(double value)
{
    return std::to_string(static_cast<std::int64_t>(value));
}

/// {"a": 1, "b": 2} in one line.
std::string objectInALine(const std::vector<JsonMember>& members)
{
    std::string text = "{";
    for (const auto& [key, value] : members) {
        text += text.size() == 1 ? "\"" : ", \"";
        text += key;
        text += "\": ";
        text += value;
    }
    return text + "}";
}

std::string hostText(const TakeHost& host)
{
    return objectInALine({{names::tempo, shortestText(host.tempo)},
                          {names::beatsPerBar, shortestText(host.beatsPerBar)},
                          {names::beatUnit, shortestText(host.beatUnit)},
                          {names::playing, flagText(host.isPlaying ? 1.0 : 0.0)}});
}

std::string startText(const TakeStart& start)
{
    std::vector<JsonMember> parameters;
    for (const auto& info : parameterTable())
        parameters.emplace_back(info.identifier, shortestText(start.values[info.address]));

    std::vector<JsonMember> members{{names::sampleRate, shortestText(start.sampleRate)},
                                    {names::cycleFrames, std::to_string(start.cycleFrames)},
                                    {names::seed, std::to_string(start.seed)}};
    if (start.generator)
        members.emplace_back(names::generator, '"' + generatorText(*start.generator) + '"');
    if (start.sameMusicAtEveryStart)
        members.emplace_back(names::sameMusicAtEveryStart, "true");
    if (start.host)
        members.emplace_back(names::host, hostText(*start.host));
    members.emplace_back(names::parameters, jsonObject(parameters, 2));
    return jsonObject(members, 1);
}

/// How many of the changes, from the first on, fit into one object: all at one time, ramps of one length, and
/// in the order in which they are read.
std::size_t lengthOfGroup(std::span<const TakeChange> changes)
{
    std::optional<double> overBars;
    std::size_t length = 0;
    for (; length < changes.size(); ++length) {
        const auto& change = changes[length];
        const bool isParameter = parameterOf(change.target).has_value();
        const bool isNext = length == 0 || change.target > changes[length - 1].target;
        if (!isNext || change.time != changes.front().time ||
            (isParameter && overBars.value_or(change.overBars) != change.overBars))
            break;
        if (isParameter)
            overBars = change.overBars;
    }
    return length;
}

/// The changes of one kind in a group, as members of an object.
class GroupText
{
public:
    void add(const TakeChange& change)
    {
        if (const auto address = parameterOf(change.target)) {
            values.emplace_back(parameterTable()[*address].identifier,
                                shortestText(static_cast<float>(change.value)));
            overBars = change.overBars;
        } else {
            addOther(change);
        }
    }

    [[nodiscard]] std::string text(const TakeTime& time) const
    {
        const bool inBars = time.unit == TakeTime::Unit::bars;
        std::vector<JsonMember> members{{inBars ? names::bar : names::frame,
                                         inBars ? shortestText(time.amount) : wholeText(time.amount)}};
        if (!values.empty())
            members.emplace_back(names::set, objectInALine(values));
        if (overBars != 0.0)
            members.emplace_back(names::over, shortestText(overBars));
        members.insert(members.end(), others.begin(), others.end());
        if (!host.empty())
            members.emplace_back(names::host, objectInALine(host));
        return objectInALine(members);
    }

private:
    void addOther(const TakeChange& change)
    {
        switch (change.target) {
        case TakeTarget::play:
            others.emplace_back(names::play, flagText(change.value));
            break;
        case TakeTarget::seed:
            others.emplace_back(names::seed, wholeText(change.value));
            break;
        case TakeTarget::sameMusicAtEveryStart:
            others.emplace_back(names::sameMusicAtEveryStart, flagText(change.value));
            break;
        case TakeTarget::hostPlaying:
            host.emplace_back(names::playing, flagText(change.value));
            break;
        case TakeTarget::hostTempo:
            host.emplace_back(names::tempo, shortestText(change.value));
            break;
        case TakeTarget::hostBeatsPerBar:
            host.emplace_back(names::beatsPerBar, shortestText(change.value));
            break;
        case TakeTarget::hostBeatUnit:
            host.emplace_back(names::beatUnit, shortestText(change.value));
            break;
        case TakeTarget::cycleFrames:
            others.emplace_back(names::cycleFrames, wholeText(change.value));
            break;
        case TakeTarget::end:
            others.emplace_back(names::end, "true");
            break;
        }
    }

    std::vector<JsonMember> values;
    std::vector<JsonMember> others;
    std::vector<JsonMember> host;
    double overBars = 0.0;
};

std::string changesText(std::span<const TakeChange> changes)
{
    if (changes.empty())
        return "[]";
    std::string text = "[";
    while (!changes.empty()) {
        const auto group = changes.first(lengthOfGroup(changes));
        GroupText groupText;
        for (const auto& change : group)
            groupText.add(change);
        text += (text.size() == 1 ? "\n    " : ",\n    ") + groupText.text(group.front().time);
        changes = changes.subspan(group.size());
    }
    return text + "\n  ]";
}

} // namespace

std::string generatorText(std::uint64_t state)
{
    constexpr int hexadecimal = 16;
    constexpr std::size_t digits = 16;
    std::array<char, digits> text{};
    const auto end = std::to_chars(text.data(), text.data() + digits, state, hexadecimal).ptr;
    const std::string_view shortest(text.data(), static_cast<std::size_t>(end - text.data()));
    return std::string(digits - shortest.size(), '0') + std::string(shortest);
}

std::string textFromTake(const Take& take)
{
    return jsonObject({{names::version, std::to_string(takeVersion)},
                       {names::start, startText(take.start)},
                       {names::changes, changesText(take.changes)}},
                      0) +
           "\n";
}

} // namespace velotrine
