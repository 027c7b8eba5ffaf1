#include "audiounit/UndoHistory.h"

#include <utility>

namespace velotrine {

namespace {

template <typename Value>
void move(Value& now, const Value& from, const Value& to)
{
    if (from != to && now == from)
        now = to;
}

/// What differs between the two becomes as in the second where it is as in the first.
Settings moved(Settings now, const Settings& from, const Settings& to)
{
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        if (from.values[address] != to.values[address] &&
            areAlike(address, now.values[address], from.values[address]))
            now.values[address] = to.values[address];
    move(now.preset, from.preset, to.preset);
    move(now.seed, from.seed, to.seed);
    move(now.sameMusicAtEveryStart, from.sameMusicAtEveryStart, to.sameMusicAtEveryStart);
    return now;
}

bool differ(const Settings& one, const Settings& other)
{
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        if (!areAlike(address, one.values[address], other.values[address]))
            return true;
    return one.preset != other.preset || one.seed != other.seed ||
           one.sameMusicAtEveryStart != other.sameMusicAtEveryStart;
}

} // namespace

void UndoHistory::add(std::string name, const Settings& before, const Settings& after)
{
    if (!differ(before, after))
        return;
    steps.erase(steps.begin() + static_cast<std::ptrdiff_t>(done), steps.end());
    steps.push_back({std::move(name), before, after});
    if (steps.size() > mostSteps)
        steps.pop_front();
    done = steps.size();
}

/// The number of steps that are left done; `done` itself where there is nothing to take back.
std::size_t UndoHistory::undoPlace(const Settings& now) const
{
    for (auto place = done; place > 0; --place)
        if (const auto& step = steps[place - 1]; moved(now, step.after, step.before) != now)
            return place - 1;
    return done;
}

/// The number of steps that are then done; `done` itself where there is nothing to do again.
std::size_t UndoHistory::redoPlace(const Settings& now) const
{
    for (auto place = done; place < steps.size(); ++place)
        if (const auto& step = steps[place]; moved(now, step.before, step.after) != now)
            return place + 1;
    return done;
}

std::string UndoHistory::undoName(const Settings& now) const
{
    const auto place = undoPlace(now);
    return place != done ? steps[place].name : std::string();
}

std::string UndoHistory::redoName(const Settings& now) const
{
    const auto place = redoPlace(now);
    return place != done ? steps[place - 1].name : std::string();
}

Settings UndoHistory::undo(const Settings& now)
{
    const auto place = undoPlace(now);
    if (place == done)
        return now;
    done = place;
    return moved(now, steps[place].after, steps[place].before);
}

Settings UndoHistory::redo(const Settings& now)
{
    const auto place = redoPlace(now);
    if (place == done)
        return now;
    done = place;
    return moved(now, steps[place - 1].before, steps[place - 1].after);
}

} // namespace velotrine
