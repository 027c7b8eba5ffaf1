#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <algorithm>
#include <array>
#include <optional>

namespace velotrine {

/// What a key asks of a control that turns: a step, a larger one, or an end of the range.
struct KeyTurn
{
    enum class Distance
    {
        step,
        page,
        end,
    };

    Distance distance = Distance::step;
    int direction = 1;   ///< 1 for more, or further down a list; -1 for the other way
    bool isFine = false; ///< with Shift, for what has no steps of its own
};

/// How far a step and a page go, in the control's own unit.
struct TurnDistances
{
    double step = 0.01;
    double page = 0.1;
};

namespace detail {

struct TurnKey
{
    int code;
    KeyTurn::Distance distance;
    int valueDirection;
    int listDirection; ///< a list's next entry lies below, a larger value above
};

inline std::optional<TurnKey> turnKeyOf(const juce::KeyPress& key)
{
    using enum KeyTurn::Distance;
    const std::array<TurnKey, 8> turnKeys{{
        {juce::KeyPress::upKey, step, 1, -1},
        {juce::KeyPress::downKey, step, -1, 1},
        {juce::KeyPress::rightKey, step, 1, 1},
        {juce::KeyPress::leftKey, step, -1, -1},
        {juce::KeyPress::pageUpKey, page, 1, -1},
        {juce::KeyPress::pageDownKey, page, -1, 1},
        {juce::KeyPress::homeKey, end, -1, -1},
        {juce::KeyPress::endKey, end, 1, 1},
    }};
    const auto modifiers = key.getModifiers();
    if (modifiers.isCtrlDown() || modifiers.isAltDown() || modifiers.isCommandDown())
        return std::nullopt;
    const auto* const found = std::ranges::find(turnKeys, key.getKeyCode(), &TurnKey::code);
    return found != turnKeys.end() ? std::optional(*found) : std::nullopt;
}

} // namespace detail

/// What a key asks of a value: arrows up and right are more. None for a key that does not turn.
[[nodiscard]] inline std::optional<KeyTurn> valueTurnOf(const juce::KeyPress& key)
{
    const auto found = detail::turnKeyOf(key);
    if (!found)
        return std::nullopt;
    return KeyTurn{found->distance, found->valueDirection, key.getModifiers().isShiftDown()};
}

/// What a key asks of a list: arrows down and right go on.
[[nodiscard]] inline std::optional<KeyTurn> listTurnOf(const juce::KeyPress& key)
{
    const auto found = detail::turnKeyOf(key);
    return found ? std::optional(KeyTurn{found->distance, found->listDirection}) : std::nullopt;
}

/// The value after a turn, within its range.
[[nodiscard]] inline double turned(double value, juce::Range<double> range, TurnDistances distances,
                                   const KeyTurn& turn)
{
    switch (turn.distance) {
    case KeyTurn::Distance::step:
        return range.clipValue(value + turn.direction * distances.step);
    case KeyTurn::Distance::page:
        return range.clipValue(value + turn.direction * distances.page);
    case KeyTurn::Distance::end:
        return turn.direction > 0 ? range.getEnd() : range.getStart();
    }
    return value;
}

/// The index in a list of `count` entries after a turn.
[[nodiscard]] inline int turnedIndex(int index, int count, const KeyTurn& turn)
{
    constexpr TurnDistances entries{.step = 1.0, .page = 4.0};
    return juce::roundToInt(turned(index, {0.0, static_cast<double>(count - 1)}, entries, turn));
}

} // namespace velotrine
