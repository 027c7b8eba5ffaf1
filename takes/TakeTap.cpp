#include "takes/TakeTap.h"

#include <algorithm>
#include <bit>

namespace velotrine {

namespace {

constexpr auto isZero = [](double phase) { return phase == 0.0; };

std::uint64_t bitsOf(double value) noexcept
{
    return std::bit_cast<std::uint64_t>(value);
}

/// What plays next depends on nothing that has played before.
bool standsAtTheStart(const VelotrineDSPKernel& kernel) noexcept
{
    return !kernel.hostPlayingLast && !kernel.internalPlayingLast && kernel.clockPhase == 0.0 &&
           std::ranges::all_of(kernel.activityPhases, isZero) &&
           std::ranges::all_of(kernel.lfoPhases, isZero) && kernel.voicePool->triggerOrder.empty() &&
           kernel.voicePool->isSilent();
}

} // namespace

void TakeTap::note(const VelotrineDSPKernel& kernel, int frames) noexcept VELOTRINE_NONBLOCKING
{
    if (state == State::waiting && !recordingWanted) {
        stoodAtTheStart = false;
        return;
    }

    const auto now = valuesSeen(kernel, frames);
    if (state == State::waiting && stoodAtTheStart && runs(now) && kernel.sampleRate == sampleRateBefore &&
        beginTake())
        state = State::recording;
    const bool stands = standsAtTheStart(kernel);
    if (state == State::recording) {
        const bool goesOn = recordingWanted && kernel.sampleRate == sampleRate && noteChanges(now);
        if (goesOn)
            frameReached = frame += frames;
        if (!goesOn || stands)
            state = State::ending;
    }
    if (state == State::ending && push(TakeRecord::Kind::end))
        state = State::waiting;
    before = now;
    stoodAtTheStart = stands;
    generatorBefore = kernel.rngState;
    sampleRateBefore = kernel.sampleRate;
}

TakeTap::Values TakeTap::valuesSeen(const VelotrineDSPKernel& kernel,
                                    int frames) noexcept VELOTRINE_NONBLOCKING
{
    const auto& inputs = kernel.inputs();
    Values values{};
    forEachAddress([&](auto address) {
        visitField(
            address, [&](const auto& value) { values[address] = static_cast<double>(value); },
            inputs.parameters);
    });
    const auto set = [&values](TakeTarget target, auto value) {
        values[static_cast<std::size_t>(target)] = static_cast<double>(value);
    };
    set(TakeTarget::play, inputs.internalPlaying);
    set(TakeTarget::seed, inputs.seed);
    set(TakeTarget::sameMusicAtEveryStart, inputs.sameMusicAtEveryStart);
    set(TakeTarget::hostPlaying, kernel.hostPlaying);
    set(TakeTarget::hostTempo, kernel.hostTempo);
    set(TakeTarget::hostBeatsPerBar, kernel.hostBeatsPerBar);
    set(TakeTarget::hostBeatUnit, kernel.hostBeatUnit);
    set(TakeTarget::cycleFrames, frames);
    return values;
}

bool TakeTap::runs(const Values& values) noexcept VELOTRINE_NONBLOCKING
{
    const auto isOn = [&values](TakeTarget target) {
        return values[static_cast<std::size_t>(target)] != 0.0;
    };
    return isOn(takeTarget(addressOf(GlobalParameter::sync))) ? isOn(TakeTarget::hostPlaying)
                                                              : isOn(TakeTarget::play);
}

/// As everything was before the call in which the clock has started.
bool TakeTap::beginTake() noexcept VELOTRINE_NONBLOCKING
{
    constexpr std::size_t recordsNeeded = 2 + targetCount;
    if (buffer.room() < recordsNeeded)
        return false;
    frame = 0;
    sampleRate = sampleRateBefore;
    bool fits = push(TakeRecord::Kind::begin, bitsOf(sampleRate)) &&
                push(TakeRecord::Kind::generator, generatorBefore);
    for (std::size_t i = 0; i < targetCount; ++i)
        fits = fits && push(TakeRecord::Kind::start, bitsOf(before[i]), static_cast<TakeTarget>(i));
    return fits;
}

bool TakeTap::noteChanges(const Values& now) noexcept VELOTRINE_NONBLOCKING
{
    // By their bits: a value that is no number is not noted again in each cycle.
    bool fits = true;
    for (std::size_t i = 0; fits && i < targetCount; ++i)
        if (bitsOf(now[i]) != bitsOf(before[i]))
            fits = push(TakeRecord::Kind::change, bitsOf(now[i]), static_cast<TakeTarget>(i));
    return fits;
}

bool TakeTap::push(TakeRecord::Kind kind, std::uint64_t bits,
                   TakeTarget target) noexcept VELOTRINE_NONBLOCKING
{
    return buffer.push({.frame = frame, .bits = bits, .kind = kind, .target = target});
}

} // namespace velotrine
