#pragma once

#include "engine/ParameterAddress.h"
#include "engine/RandomGenerator.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace velotrine {

/// What a take can change: the parameters by address, and what comes behind them. Also the order in which the
/// members of one change in a text are done.
enum class TakeTarget : std::uint8_t
{
    firstBehindParameters = parameterCount,
    play = firstBehindParameters, ///< the internal clock runs
    seed,
    sameMusicAtEveryStart,
    cycleFrames, ///< length of the render cycles from here on
    hostTempo,
    hostBeatsPerBar,
    hostBeatUnit,
    hostPlaying,
    end, ///< nothing comes behind it
};

[[nodiscard]] constexpr TakeTarget takeTarget(ParameterAddress address) noexcept
{
    return static_cast<TakeTarget>(address);
}

/// None for what is no parameter.
[[nodiscard]] constexpr std::optional<ParameterAddress> parameterOf(TakeTarget target) noexcept
{
    const auto number = static_cast<ParameterAddress>(target);
    return number < parameterCount ? std::optional(number) : std::nullopt;
}

/// A moment in a take. A bar is one at the tempo and metre in force, whether the clock runs or not.
struct TakeTime
{
    enum class Unit : std::uint8_t
    {
        frames,
        bars,
    };

    double amount = 0.0; ///< from the take's beginning, 0 or more
    Unit unit = Unit::frames;

    bool operator==(const TakeTime&) const = default;
};

/// One value that is another from here on.
struct TakeChange
{
    TakeTime time{};
    double value = 0.0;    ///< switches are 0 and 1
    double overBars = 0.0; ///< a straight ramp of so many bars; 0 is at once. Parameters only
    TakeTarget target = TakeTarget::end;

    bool operator==(const TakeChange&) const = default;
};

/// The clock of a host that is followed while sync is on.
struct TakeHost
{
    double tempo = 0.0;       ///< quarter notes a minute; 0 for none told
    double beatsPerBar = 0.0; ///< numerator of the time signature; 0 for four quarters
    double beatUnit = 0.0;    ///< its denominator
    bool isPlaying = false;

    bool operator==(const TakeHost&) const = default;
};

/// How an instrument is when a take begins. It is silent, and has not played since it was set up or stopped.
struct TakeStart
{
    TakeStart(); ///< as an instrument is made

    double sampleRate = 48000.0; ///< Hz; frames are counted in it
    int cycleFrames = 32;
    std::array<float, parameterCount> values{}; ///< by address
    std::uint32_t seed = defaultSeed;
    std::optional<std::uint64_t> generator; ///< how far the dice have come; none where the seed begins them
    bool sameMusicAtEveryStart = false;
    /// None for a take that plays by the internal clock, whatever sync says
    std::optional<TakeHost> host;

    bool operator==(const TakeStart&) const = default;
};

/// All that is needed to hear something again: a beginning, and what changes when. Changes take effect in the
/// order of the list, each at the first render cycle that begins at its time or later.
struct Take
{
    static constexpr std::size_t maxChanges = 1'000'000;

    TakeStart start;
    std::vector<TakeChange> changes;

    bool operator==(const Take&) const = default;
};

} // namespace velotrine
