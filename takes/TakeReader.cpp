#include "audiounit/JsonText.h"
#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "audiounit/SampleRateRange.h"
#include "commandline/NearestName.h"
#include "takes/TakeNames.h"
#include "takes/TakeText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace velotrine {

namespace {

using Json = nlohmann::json;

constexpr double longestTakeBars = 1.0e6;
constexpr double longestTakeFrames = 1.0e13; ///< half a year at the highest rate
constexpr double longestCycle = 8192.0;

/// A range of numbers, and how to say it.
struct Range
{
    double min = 0.0;
    double max = 0.0;
    const char* expected = "";
    bool orZero = false; ///< for what is not told
};

constexpr Range barRange{0.0, longestTakeBars, "a number of bars from 0 to 1000000"};
constexpr Range frameRange{0.0, longestTakeFrames, "a whole number of frames, 0 or more"};
constexpr Range seedRange{0.0, std::numeric_limits<std::uint32_t>::max(),
                          "a whole number from 0 to 4294967295"};
constexpr Range cycleRange{1.0, longestCycle, "a whole number of frames from 1 to 8192"};
constexpr Range rateRange{lowestSampleRate, highestSampleRate, "a number of Hz from 8000 to 768000"};
constexpr Range tempoRange{1.0, 10000.0, "a number from 1 to 10000, or 0", true};
constexpr Range beatsRange{1.0, 256.0, "a number from 1 to 256, or 0", true};
constexpr Range unitRange{1.0, 128.0, "a number from 1 to 128, or 0", true};

/// In quotes, and no longer than a message bears.
std::string inShort(std::string_view name)
{
    constexpr std::size_t longest = 40;
    return '"' + excerpt(name, longest) + '"';
}

/// An object of the document that is read member by member, and where it stands.
class Object
{
public:
    Object(const Json& newMembers, std::string newPlace) : members(newMembers), place(std::move(newPlace))
    {
        if (!members.is_object())
            refuse("it must be an object");
    }

    [[noreturn]] void refuse(const std::string& problem) const
    {
        throw JsonRefusal(place.empty() ? problem : place + ": " + problem);
    }

    void allowOnly(const std::vector<std::string>& known) const
    {
        for (const auto& [name, value] : members.items())
            if (std::ranges::find(known, name) == known.end())
                refuse(inShort(name) + " is not known here" + suggestion(name, known));
    }

    [[nodiscard]] const Json* find(const char* name) const
    {
        const auto found = members.find(name);
        return found == members.end() ? nullptr : &*found;
    }

    [[nodiscard]] std::optional<double> number(const char* name, const Range& range) const
    {
        const auto* const found = find(name);
        if (found == nullptr)
            return std::nullopt;
        const double value = found->is_number() ? found->get<double>() : -1.0;
        if (!(value >= range.min && value <= range.max) && !(range.orZero && value == 0.0))
            refuse(inShort(name) + " must be " + range.expected);
        return value;
    }

    [[nodiscard]] std::optional<double> whole(const char* name, const Range& range) const
    {
        const auto value = number(name, range);
        if (value && *value != std::floor(*value))
            refuse(inShort(name) + " must be " + range.expected);
        return value;
    }

    [[nodiscard]] std::optional<bool> flag(const char* name) const
    {
        const auto* const found = find(name);
        if (found == nullptr)
            return std::nullopt;
        if (!found->is_boolean())
            refuse(inShort(name) + " must be true or false");
        return found->get<bool>();
    }

    [[nodiscard]] std::optional<Object> object(const char* name) const
    {
        const auto* const found = find(name);
        if (found == nullptr)
            return std::nullopt;
        return Object(*found, place.empty() ? inShort(name) : place + ", " + inShort(name));
    }

    /// Calls the receiver with the address and the value of each parameter in this object.
    template <typename Receiver>
    void readParameters(Receiver&& receiver) const
    {
        for (const auto& [identifier, value] : members.items())
            if (parameterWithIdentifier(identifier) == nullptr)
                refuseIdentifier(identifier);
        for (const auto& info : parameterTable())
            if (const auto* const value = find(info.identifier.c_str()))
                receiver(info.address, parameterValue(info, *value));
    }

private:
    [[noreturn]] void refuseIdentifier(const std::string& identifier) const
    {
        std::vector<std::string> identifiers;
        for (const auto& info : parameterTable())
            identifiers.push_back(info.identifier);
        refuse("there is no parameter " + inShort(identifier) + suggestion(identifier, identifiers));
    }

    [[nodiscard]] float parameterValue(const ParameterInfo& info, const Json& value) const
    {
        std::optional<double> read;
        if (value.is_number())
            read = value.get<double>();
        else if (value.is_string())
            read = parameterFromText(info, value.get_ref<const std::string&>());
        if (!read)
            refuse("the value of " + inShort(info.identifier) +
                   " must be a number, or a text as lists and menus show it");
        return static_cast<float>(
            std::clamp(*read, static_cast<double>(info.minValue), static_cast<double>(info.maxValue)));
    }

    const Json& members;
    std::string place; ///< empty for the document itself
};

// The start

std::uint64_t readGenerator(const Object& start, const Json& value)
{
    constexpr int hexadecimal = 16;
    std::uint64_t state = 0;
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        const auto* const end = text.data() + text.size();
        const auto [read, error] = std::from_chars(text.data(), end, state, hexadecimal);
        if (error != std::errc{} || read != end)
            state = 0;
    }
    if (state == 0)
        start.refuse(inShort(names::generator) + " must be a text of hexadecimal digits, not all of them 0");
    return state;
}

void readPreset(const Object& start, const Json& value, TakeStart& into)
{
    const auto text = value.is_string() ? value.get<std::string>() : value.dump();
    const auto number = presetFromText(text);
    if (!number)
        start.refuse("there is no preset " + inShort(text) + suggestion(text, presetNames()));
    into.values = presetTable()[*number].values;
}

TakeHost readStartHost(const Object& host)
{
    host.allowOnly({names::tempo, names::beatsPerBar, names::beatUnit, names::playing});
    return {.tempo = host.number(names::tempo, tempoRange).value_or(0.0),
            .beatsPerBar = host.number(names::beatsPerBar, beatsRange).value_or(0.0),
            .beatUnit = host.number(names::beatUnit, unitRange).value_or(0.0),
            .isPlaying = host.flag(names::playing).value_or(false)};
}

TakeStart readStart(const Object& start)
{
    start.allowOnly({names::preset, names::parameters, names::seed, names::generator,
                     names::sameMusicAtEveryStart, names::sampleRate, names::cycleFrames, names::host,
                     names::comment});
    TakeStart read;
    if (const auto* const preset = start.find(names::preset))
        readPreset(start, *preset, read);
    if (const auto parameters = start.object(names::parameters))
        parameters->readParameters(
            [&read](ParameterAddress address, float value) { read.values[address] = value; });
    if (const auto seed = start.whole(names::seed, seedRange))
        read.seed = static_cast<std::uint32_t>(*seed);
    if (const auto* const generator = start.find(names::generator))
        read.generator = readGenerator(start, *generator);
    read.sameMusicAtEveryStart = start.flag(names::sameMusicAtEveryStart).value_or(false);
    read.sampleRate = start.number(names::sampleRate, rateRange).value_or(read.sampleRate);
    if (const auto frames = start.whole(names::cycleFrames, cycleRange))
        read.cycleFrames = static_cast<int>(*frames);
    if (const auto host = start.object(names::host))
        read.host = readStartHost(*host);
    return read;
}

// The changes

/// Reads a document whose list of changes may be very long: each one is read as the parser comes to it, and
/// dropped by the parser.
class TakeReader
{
public:
    Take read(std::string_view text)
    {
        const auto document =
            parseJson(text, maxTakeMebibytes, [this](int depth, Json::parse_event_t event, Json& part) {
                return see(depth, event, part);
            });
        const Object take(document, "");
        checkVersion(document);
        take.allowOnly({names::version, names::start, names::changes, names::comment});
        if (changesSeen == 0)
            take.refuse(inShort(names::changes) + " is missing");
        if (const auto start = take.object(names::start))
            result.start = readStart(*start);
        if (tellsOfAHost && !result.start.host)
            result.start.host.emplace();
        return std::move(result);
    }

private:
    // How deep in the document things stand.
    static constexpr int membersOfTake = 1;
    static constexpr int eachChange = 2;
    static constexpr int deepest = 4; ///< members of what a member of a change is

    /// Whether the parser keeps the part.
    bool see(int depth, Json::parse_event_t event, const Json& part)
    {
        using Event = Json::parse_event_t;
        if (event == Event::key)
            seeKey(depth, part);
        if (event == Event::array_start)
            seeList(depth);
        if (event == Event::object_start)
            seeObject(depth);
        if (event == Event::value && depth == membersOfTake)
            seeMember(part);
        if (!inChanges || depth != eachChange || (event != Event::object_end && event != Event::value))
            return true;
        readChange(part);
        return false;
    }

    void seeList(int depth) const
    {
        if (depth == 0)
            throw JsonRefusal("it must be an object");
        if (!inChanges || depth != membersOfTake)
            throw JsonRefusal(place() + "there is a list, but only " + inShort(names::changes) + " is one");
    }

    void seeObject(int depth) const
    {
        if (inChanges && depth == membersOfTake)
            throw JsonRefusal(inShort(names::changes) + " must be a list");
        if (depth >= deepest)
            throw JsonRefusal(place() + "there are objects within each other that nobody reads");
    }

    void seeKey(int depth, const Json& name)
    {
        // Far more than there are names.
        constexpr int mostNames = 1000;
        if (++namesSeen > mostNames)
            throw JsonRefusal(place() + "there are more names than anything has");
        if (depth != membersOfTake)
            return;
        member = name.get<std::string>();
        inChanges = member == names::changes;
        if (inChanges && ++changesSeen > 1)
            throw JsonRefusal(inShort(names::changes) + " is there twice");
    }

    void seeMember(const Json& part)
    {
        // First of all: another version may look like anything.
        if (member == names::version)
            checkVersion({{names::version, part}});
        if (inChanges)
            throw JsonRefusal(inShort(names::changes) + " must be a list");
    }

    static void checkVersion(const Json& document)
    {
        const auto found = document.find(names::version);
        if (found == document.end())
            throw JsonRefusal(inShort(names::version) + " is missing");
        if (!found->is_number_integer())
            throw JsonRefusal(inShort(names::version) + " must be a whole number");
        if (*found != takeVersion)
            throw JsonRefusal(inShort(names::version) + " is " + found->dump() +
                              ", but this program reads version 1");
    }

    /// For the front of a message: the change that is being read, if one is.
    [[nodiscard]] std::string place() const
    {
        return inChanges ? "change " + std::to_string(changeCount + 1) + ": " : "";
    }

    void readChange(const Json& part)
    {
        namesSeen = 0;
        const Object change(part, "change " + std::to_string(++changeCount));
        if (changeCount > Take::maxChanges)
            change.refuse("a take has at most 1000000 changes");
        change.allowOnly({names::bar, names::frame, names::set, names::over, names::play, names::seed,
                          names::sameMusicAtEveryStart, names::host, names::cycleFrames, names::end,
                          names::comment});
        if (hasEnded)
            change.refuse("it comes behind the take's " + inShort(names::end));

        const auto time = readTime(change);
        readSet(change, time);
        const auto add = [&](TakeTarget target, std::optional<double> value) {
            if (value)
                result.changes.push_back({.time = time, .value = *value, .target = target});
        };
        add(TakeTarget::play, change.flag(names::play));
        add(TakeTarget::seed, change.whole(names::seed, seedRange));
        add(TakeTarget::sameMusicAtEveryStart, change.flag(names::sameMusicAtEveryStart));
        add(TakeTarget::cycleFrames, change.whole(names::cycleFrames, cycleRange));
        if (const auto host = change.object(names::host)) {
            tellsOfAHost = true;
            host->allowOnly({names::tempo, names::beatsPerBar, names::beatUnit, names::playing});
            add(TakeTarget::hostTempo, host->number(names::tempo, tempoRange));
            add(TakeTarget::hostBeatsPerBar, host->number(names::beatsPerBar, beatsRange));
            add(TakeTarget::hostBeatUnit, host->number(names::beatUnit, unitRange));
            add(TakeTarget::hostPlaying, host->flag(names::playing));
        }
        if (change.flag(names::end).value_or(false)) {
            hasEnded = true;
            add(TakeTarget::end, 0.0);
        }
    }

    TakeTime readTime(const Object& change)
    {
        const auto bar = change.number(names::bar, barRange);
        const auto frame = change.whole(names::frame, frameRange);
        if (bar.has_value() == frame.has_value())
            change.refuse(R"(it must say when: give either "bar" or "frame")");
        auto& latest = bar ? latestBar : latestFrame;
        const auto amount = bar ? *bar : *frame;
        if (amount < latest)
            change.refuse((bar ? "bar " : "frame ") + shortestText(amount) + " lies before " +
                          shortestText(latest) + ", which is above it");
        latest = amount;
        return {.amount = amount, .unit = bar ? TakeTime::Unit::bars : TakeTime::Unit::frames};
    }

    void readSet(const Object& change, const TakeTime& time)
    {
        const auto over = change.number(names::over, barRange);
        const auto set = change.object(names::set);
        if (over && !set)
            change.refuse(inShort(names::over) + " says how long " + inShort(names::set) +
                          " takes, and that is missing");
        if (!set)
            return;
        set->readParameters([&](ParameterAddress address, float value) {
            result.changes.push_back({.time = time,
                                      .value = static_cast<double>(value),
                                      .overBars = over.value_or(0.0),
                                      .target = takeTarget(address)});
        });
    }

    Take result;
    std::string member; ///< of the document, the one that is being read
    bool inChanges = false;
    int changesSeen = 0;
    int namesSeen = 0; ///< since the last change
    std::size_t changeCount = 0;
    double latestBar = 0.0;
    double latestFrame = 0.0;
    bool tellsOfAHost = false;
    bool hasEnded = false;
};

} // namespace

TakeReading takeFromText(std::string_view text)
{
    try {
        return {TakeReader().read(text), {}};
    } catch (const JsonRefusal& refusal) {
        return {std::nullopt, refusal.what()};
    }
}

} // namespace velotrine
