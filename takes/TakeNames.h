#pragma once

#include "audiounit/VelotrineAudioUnit.h"

#include <cstdint>
#include <string>

// What a take's text is made of; for who writes it and who reads it.

namespace velotrine {

inline constexpr int takeVersion = 1;

namespace names {

inline constexpr auto version = "version";
inline constexpr auto start = "start";
inline constexpr auto changes = "changes";
inline constexpr auto comment = "comment";

inline constexpr auto preset = "preset";
inline constexpr auto parameters = "parameters";
inline constexpr auto seed = seedKey;
inline constexpr auto generator = "generator";
inline constexpr auto sameMusicAtEveryStart = sameMusicAtEveryStartKey;
inline constexpr auto sampleRate = "sampleRate";
inline constexpr auto cycleFrames = "cycleFrames";

inline constexpr auto host = "host";
inline constexpr auto tempo = "tempo";
inline constexpr auto beatsPerBar = "beatsPerBar";
inline constexpr auto beatUnit = "beatUnit";
inline constexpr auto playing = "playing";

inline constexpr auto frame = "frame";
inline constexpr auto bar = "bar";
inline constexpr auto set = "set";
inline constexpr auto over = "over";
inline constexpr auto play = "play";
inline constexpr auto end = "end";

} // namespace names

/// The dice as 16 hexadecimal digits: a number in JSON is safe up to 53 bits only.
[[nodiscard]] std::string generatorText(std::uint64_t state);

} // namespace velotrine
