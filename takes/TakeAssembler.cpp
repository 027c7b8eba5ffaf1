#include "takes/TakeAssembler.h"

#include <algorithm>
#include <utility>

namespace velotrine {

std::vector<Take> TakeAssembler::finishedTakes()
{
    return std::exchange(finished, {});
}

std::optional<Take> TakeAssembler::takeSoFar(std::int64_t frames) const
{
    if (!current)
        return std::nullopt;
    auto take = *current;
    take.changes.push_back({.time = {.amount = static_cast<double>(std::max(frames, framesReached))},
                            .target = TakeTarget::end});
    return take;
}

void TakeAssembler::add(const TakeRecord& record)
{
    const auto frame = static_cast<double>(record.frame);
    if (record.kind == TakeRecord::Kind::begin) {
        current.emplace();
        framesReached = 0;
        current->start.sampleRate = record.value();
    }
    // What comes behind the longest take.
    if (!current)
        return;
    framesReached = std::max(framesReached, record.frame);
    if (record.kind == TakeRecord::Kind::generator)
        current->start.generator = record.bits;
    else if (record.kind == TakeRecord::Kind::start)
        addStart(record);
    else if (record.kind == TakeRecord::Kind::change)
        current->changes.push_back(
            {.time = {.amount = frame}, .value = record.value(), .target = record.target});

    if (record.kind == TakeRecord::Kind::end || current->changes.size() + 1 == Take::maxChanges)
        finish(frame);
}

void TakeAssembler::addStart(const TakeRecord& record)
{
    auto& start = current->start;
    auto& host = start.host ? *start.host : start.host.emplace();
    const auto value = record.value();
    if (const auto address = parameterOf(record.target)) {
        start.values[*address] = static_cast<float>(value);
        return;
    }
    switch (record.target) {
    case TakeTarget::seed:
        start.seed = static_cast<std::uint32_t>(value);
        if (start.generator == generatorState(start.seed))
            start.generator.reset();
        break;
    case TakeTarget::sameMusicAtEveryStart:
        start.sameMusicAtEveryStart = value != 0.0;
        break;
    case TakeTarget::hostPlaying:
        host.isPlaying = value != 0.0;
        break;
    case TakeTarget::hostTempo:
        host.tempo = value;
        break;
    case TakeTarget::hostBeatsPerBar:
        host.beatsPerBar = value;
        break;
    case TakeTarget::hostBeatUnit:
        host.beatUnit = value;
        break;
    case TakeTarget::cycleFrames:
        start.cycleFrames = static_cast<int>(value);
        break;
    case TakeTarget::play: // nothing plays when a take begins
    case TakeTarget::end:
        break;
    }
}

void TakeAssembler::finish(double frame)
{
    current->changes.push_back({.time = {.amount = frame}, .target = TakeTarget::end});
    finished.push_back(std::move(*current));
    current.reset();
}

} // namespace velotrine
