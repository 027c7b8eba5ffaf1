#include "engine/NoteGenerator.h"

#include "engine/FatalError.h"
#include "engine/RandomGenerator.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace velotrine {

namespace {

constexpr auto semitones = static_cast<std::int64_t>(pitchClassCount);

constexpr float middleBoredom = 0.35f;
constexpr float highBoredom = 0.7f;

constexpr NoteWeights uniformWeights = [] {
    NoteWeights weights{};
    weights.fill(1.0f / static_cast<float>(pitchClassCount));
    return weights;
}();

NoteWeights blend(const NoteWeights& from, const NoteWeights& to, float amount) noexcept
{
    NoteWeights result{};
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = (1.0f - amount) * from[i] + amount * to[i];
    return result;
}

/// The first column at which the running sum passes the target. A target that rounding, or a draw of exactly
/// 1, has left at the full sum gives column 0, the root.
std::int64_t columnAt(const NoteWeights& weights, float target) noexcept
{
    float sum = 0.0f;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        sum += weights[i];
        if (target < sum)
            return static_cast<std::int64_t>(i);
    }
    return 0;
}

} // namespace

NoteWeights shapedRow(std::int64_t scale, std::int64_t previous, float boredom) noexcept VELOTRINE_NONBLOCKING
{
    if (scale < 0 || scale >= static_cast<std::int64_t>(scaleCount))
        fatalError("shapedRow: there is no such scale");
    if (previous < 0 || previous >= semitones)
        fatalError("shapedRow: the previous note is not within an octave of the root");

    const auto row = [s = static_cast<std::size_t>(scale), p = static_cast<std::size_t>(previous)](
                         const TransitionTable& table) -> const NoteWeights& { return table[s][p]; };

    const float bounded = std::min(std::max(0.0f, boredom), 1.0f);
    if (bounded <= middleBoredom)
        return blend(row(lowTransitions), row(middleTransitions), bounded / middleBoredom);
    if (bounded <= highBoredom)
        return blend(row(middleTransitions), row(highTransitions),
                     (bounded - middleBoredom) / (highBoredom - middleBoredom));
    return blend(row(highTransitions), uniformWeights, (bounded - highBoredom) / (1.0f - highBoredom));
}

std::int64_t drawPitchClass(const NoteContext& context,
                            std::uint64_t& rngState) noexcept VELOTRINE_NONBLOCKING
{
    const auto [root, scale, lastPitchClass, boredom] = context;
    const bool firstNote = lastPitchClass < 0;
    const auto previous = ((lastPitchClass - root) % semitones + semitones) % semitones;
    const auto weights =
        firstNote ? initialWeights[static_cast<std::size_t>(scale)] : shapedRow(scale, previous, boredom);

    const float total = std::accumulate(weights.begin(), weights.end(), 0.0f);
    if (total <= 0.0f)
        return root;

    const float target = total * drawUnit(rngState);
    return (columnAt(weights, target) + root) % semitones;
}

} // namespace velotrine
