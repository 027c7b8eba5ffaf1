#include "takes/TakePlayer.h"

#include "audiounit/Parameters.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

TakePlayer::TakePlayer(const Take& newTake, double sampleRate) noexcept
    : take(newTake), rate(sampleRate), framesPerTake(sampleRate / newTake.start.sampleRate),
      cycleFrames_(newTake.start.cycleFrames)
{
    std::ranges::transform(parameterTable(), isWhole.begin(), &ParameterInfo::isDiscrete);
}

void TakePlayer::begin(VelotrineDSPKernel& kernel) noexcept
{
    const auto& start = take.start;
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        kernel.setParameter(address, start.values[address]);
    kernel.internalPlaying = false;
    kernel.seed = start.seed;
    kernel.thrownSeed = start.seed;
    kernel.rngState = start.generator.value_or(generatorState(start.seed));
    kernel.sameMusicAtEveryStart = start.sameMusicAtEveryStart;

    const auto host = start.host.value_or(TakeHost{});
    kernel.hostTempo = host.tempo;
    kernel.hostBeatsPerBar = host.beatsPerBar;
    kernel.hostBeatUnit = host.beatUnit;
    kernel.hostPlaying = host.isPlaying;
    if (!start.host)
        kernel.sync = false;
    followTempo(kernel);
}

void TakePlayer::apply(VelotrineDSPKernel& kernel) noexcept VELOTRINE_NONBLOCKING
{
    moveRamps(kernel);
    while (next < take.changes.size() && isDue(take.changes[next].time)) {
        applyChange(kernel, take.changes[next]);
        ++next;
    }
}

void TakePlayer::applyChange(VelotrineDSPKernel& kernel,
                             const TakeChange& change) noexcept VELOTRINE_NONBLOCKING
{
    const auto address = parameterOf(change.target);
    if (!address) {
        setOther(kernel, change.target, change.value);
    } else {
        // Without a host there is nothing to follow.
        if (*address == addressOf(GlobalParameter::sync) && !take.start.host)
            return;
        endRamp(*address);
        if (change.overBars > 0.0)
            startRamp(kernel, *address, change);
        else
            kernel.setParameter(*address, static_cast<float>(change.value));
    }
    followTempo(kernel);
}

void TakePlayer::setOther(VelotrineDSPKernel& kernel, TakeTarget target,
                          double value) noexcept VELOTRINE_NONBLOCKING
{
    switch (target) {
    case TakeTarget::play:
        kernel.internalPlaying = value != 0.0;
        break;
    case TakeTarget::seed:
        kernel.seed = static_cast<std::uint32_t>(value);
        break;
    case TakeTarget::sameMusicAtEveryStart:
        kernel.sameMusicAtEveryStart = value != 0.0;
        break;
    case TakeTarget::hostPlaying:
        kernel.hostPlaying = value != 0.0;
        break;
    case TakeTarget::hostTempo:
        kernel.hostTempo = value;
        break;
    case TakeTarget::hostBeatsPerBar:
        kernel.hostBeatsPerBar = value;
        break;
    case TakeTarget::hostBeatUnit:
        kernel.hostBeatUnit = value;
        break;
    case TakeTarget::cycleFrames:
        cycleFrames_ = static_cast<int>(value);
        break;
    case TakeTarget::end:
        break;
    }
}

void TakePlayer::startRamp(const VelotrineDSPKernel& kernel, ParameterAddress address,
                           const TakeChange& change) noexcept VELOTRINE_NONBLOCKING
{
    // From its own bar and not from that of the cycle: ramps that follow each other meet exactly.
    const bool inBars = change.time.unit == TakeTime::Unit::bars;
    ramps[rampCount++] = {.address = address,
                          .startBar = inBars ? change.time.amount : bar(),
                          .bars = change.overBars,
                          .from = static_cast<double>(kernel.parameter(address)),
                          .to = change.value};
}

void TakePlayer::endRamp(ParameterAddress address) noexcept VELOTRINE_NONBLOCKING
{
    for (std::size_t i = 0; i < rampCount; ++i)
        if (ramps[i].address == address)
            ramps[i] = ramps[--rampCount];
}

void TakePlayer::moveRamps(VelotrineDSPKernel& kernel) noexcept VELOTRINE_NONBLOCKING
{
    const double now = bar();
    for (std::size_t i = 0; i < rampCount;) {
        const auto& ramp = ramps[i];
        const bool isThere = isDue({ramp.startBar + ramp.bars, TakeTime::Unit::bars});
        const double progress = std::clamp((now - ramp.startBar) / ramp.bars, 0.0, 1.0);
        const double value = isThere ? ramp.to : ramp.from + (ramp.to - ramp.from) * progress;
        kernel.setParameter(ramp.address,
                            static_cast<float>(isWhole[ramp.address] ? std::round(value) : value));
        if (isThere)
            ramps[i] = ramps[--rampCount];
        else
            ++i;
    }
    followTempo(kernel);
}

void TakePlayer::followTempo(const VelotrineDSPKernel& kernel) noexcept VELOTRINE_NONBLOCKING
{
    constexpr double secondsPerMinute = 60.0;
    std::optional<double> now;
    if (const auto tempo = kernel.tempo())
        now = tempo->quartersPerBar * secondsPerMinute * rate / tempo->quartersPerMinute;
    if (now == framesPerBar)
        return;
    barThere = bar();
    frameThere = frame_;
    framesPerBar = now;
}

std::optional<std::int64_t> TakePlayer::frameOf(double bar) const noexcept VELOTRINE_NONBLOCKING
{
    const double bars = bar - barThere;
    if (bars <= 0.0)
        return frameThere;
    // Beyond this, in frames, nothing is ever rendered; and whole numbers hold it.
    constexpr double never = 1.0e15;
    if (!framesPerBar || bars * *framesPerBar > never)
        return std::nullopt;
    // The nearest frame, since a bar's length is not exact in binary digits.
    return frameThere + std::llround(bars * *framesPerBar);
}

bool TakePlayer::isDue(const TakeTime& time) noexcept VELOTRINE_NONBLOCKING
{
    const auto due = time.unit == TakeTime::Unit::bars
                         ? frameOf(time.amount)
                         : std::optional<std::int64_t>(std::llround(time.amount * framesPerTake));
    if (!due || *due > frame_)
        return false;
    lastDueFrame_ = std::max(lastDueFrame_, *due);
    return true;
}

double TakePlayer::barAt(std::int64_t frame) const noexcept VELOTRINE_NONBLOCKING
{
    return barThere + (framesPerBar ? static_cast<double>(frame - frameThere) / *framesPerBar : 0.0);
}

} // namespace velotrine
