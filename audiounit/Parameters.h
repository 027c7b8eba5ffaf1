#pragma once

#include "engine/ParameterAddress.h"
#include "platform/AUParameter.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velotrine {

/// How a parameter's value reads to a musician; see ParameterText.h.
enum class ParameterKind
{
    amount, ///< "75 %" of 0..1
    turns,  ///< "0.25" of a turn
    root,   ///< "F#"
    scale,  ///< "Minor Pentatonic"
    tempo,  ///< "120.0" quarter notes a minute
    toggle, ///< "On" or "Off"
    spots,  ///< "4 spots"
    octave, ///< "3"
};

/// One row of the list of parameters, from which everything that knows parameters is made.
struct ParameterInfo
{
    ParameterAddress address = 0;
    std::string identifier; ///< for programs, stable for ever
    std::string name;       ///< for people
    float minValue = 0.0f;
    float maxValue = 1.0f;
    AudioUnitParameterUnit unit = AudioUnitParameterUnit::generic;
    AudioUnitParameterOptions flags = 0;
    float initialValue = 0.0f;
    ParameterKind kind = ParameterKind::amount;

    /// Only whole numbers make sense.
    [[nodiscard]] bool isDiscrete() const noexcept
    {
        return unit == AudioUnitParameterUnit::indexed || unit == AudioUnitParameterUnit::boolean;
    }
};

/// All 39, each at the index of its address.
[[nodiscard]] const std::array<ParameterInfo, parameterCount>& parameterTable();

/// None for an identifier that no parameter has; upper and lower case differ.
[[nodiscard]] const ParameterInfo* parameterWithIdentifier(std::string_view identifier);

/// Names of the pitch classes from C upward, by the value of `rootNote`.
inline constexpr std::array<std::string_view, 12> rootNames{"C",  "C#", "D",  "D#", "E",  "F",
                                                            "F#", "G",  "G#", "A",  "A#", "B"};

/// Names of the scales by the value of `scaleType`.
inline constexpr std::array<std::string_view, 4> scaleNames{"Major", "Minor", "Major Pentatonic",
                                                            "Minor Pentatonic"};

/// The names of a parameter's values, from its least on; empty where they have none.
[[nodiscard]] std::span<const std::string_view> valueNames(ParameterKind kind);

} // namespace velotrine
