#include "audiounit/Presets.h"

#include "audiounit/ParameterText.h"

namespace velotrine {

namespace {

// Seven lines a preset: the global values, then spots, phase, probability, octave, volume and timbre of the
// five rings.
// clang-format off
const std::array<PresetInfo, presetCount> presets{{
    {"Default",
     {0, 0, 0, 0, 4, 0, 120, 0.8f, 1,
      4, 4, 4, 4, 4,
      0, 0, 0, 0, 0,
      0.5f, 0.5f, 0.5f, 0.5f, 0.5f,
      2, 3, 4, 5, 6,
      0.7f, 0.7f, 0.7f, 0.7f, 0.7f,
      0.3f, 0.4f, 0.5f, 0.6f, 0.7f}},
    {"Drum Circle",
     {0, 0, 0, 0, 4, 3, 120, 0.8f, 1,
      4, 4, 4, 6, 4,
      0, 0, 1, 0, 0.0935f,
      1, 0.648f, 1, 1, 1,
      2, 3, 4, 4, 4,
      0.7f, 0.6881f, 0.7f, 0.7f, 0.6723f,
      0.5031f, 0.4979f, 0.5f, 0.5037f, 0.4996f}},
    {"Phase 4",
     {0, 0, 1, 0.5f, 4, 3, 120, 0.8f, 1,
      4, 4, 4, 4, 4,
      0, 0, 0, 0, 0,
      1, 1, 1, 1, 1,
      3, 4, 5, 6, 7,
      0.7f, 0.6881f, 0.7f, 0.7f, 0.8043f,
      0, 0.2536f, 0.5f, 0.7522f, 1}},
    {"Lobster Quadrille",
     {0.5f, 0.5f, 1, 0, 4, 3, 120, 0.8f, 1,
      4, 4, 4, 4, 4,
      0, 0, 0, 0, 0,
      1, 1, 1, 1, 1,
      2, 3, 2, 4, 3,
      0.7f, 0.6881f, 0.7f, 0.7f, 0.8043f,
      0, 0.2536f, 0.5f, 0.7522f, 1}},
    {"Precession",
     {1, 0.5f, 0, 0.2086f, 4, 0, 120, 0.8f, 1,
      6, 6, 6, 6, 6,
      0, 0, 0, 0, 0,
      1, 1, 1, 1, 1,
      1, 2, 3, 4, 5,
      0.7f, 0.6881f, 0.7f, 0.7f, 0.8043f,
      0, 0.2536f, 0.5f, 0.7522f, 1}},
    {"Spiral Arms",
     {0, 0, 0, 0.618f, 4, 3, 120, 0.8f, 1,
      4, 4, 4, 4, 4,
      0, 0.1718f, 0.12f, 0.07f, 0,
      1, 1, 1, 1, 1,
      3, 4, 3, 5, 5,
      0.7f, 0.6881f, 0.7f, 0.7f, 0.8043f,
      0, 0.2536f, 0.5f, 0.7522f, 1}},
    {"Wobbly Bits",
     {0, 0.3254f, 0.228f, 0.363f, 4, 3, 120, 0.8f, 1,
      1, 2, 4, 8, 16,
      0, 0, 0, 0, 0,
      0.5f, 0.5f, 0.5f, 0.5f, 0.5f,
      2, 3, 4, 5, 6,
      0.7f, 0.7f, 0.7f, 0.7f, 0.7f,
      0, 0.2531f, 0.5f, 0.7459f, 1}},
    {"Wind Chimes",
     {0.5f, 0.6578f, 1, 0.1102f, 4, 2, 120, 0.8f, 1,
      2, 3, 4, 5, 6,
      0, 0, 0, 0, 0,
      1, 1, 1, 1, 1,
      6, 5, 6, 5, 6,
      0.7f, 0.6881f, 0.7f, 0.7f, 0.8043f,
      0.5032f, 0.4972f, 0.4994f, 0.4989f, 0.4993f}},
    {"Chocolate Starfish",
     {0, 0.5f, 0.5f, 0.2994f, 4, 1, 120, 0.8f, 1,
      5, 5, 5, 5, 5,
      0, 0.5f, 0, 0.5f, 0,
      0.5f, 0.5f, 0.5f, 0.5f, 0.5f,
      2, 3, 4, 5, 6,
      0.7f, 0.7f, 0.7f, 0.7f, 0.7f,
      0, 0.2045f, 0.3978f, 0.6f, 0.7987f}},
    {"Lazy 8",
     {0.5f, 0.6458f, 0, 0, 4, 3, 120, 0.8f, 1,
      8, 8, 8, 8, 8,
      0, 0, 0, 0, 0,
      1, 1, 1, 1, 1,
      1, 2, 3, 4, 5,
      1, 1, 1, 1, 1,
      0, 0, 0, 0, 0}},
}};
// clang-format on

} // namespace

const std::array<PresetInfo, presetCount>& presetTable()
{
    return presets;
}

std::optional<std::size_t> presetFromText(std::string_view text)
{
    for (std::size_t number = 0; number < presets.size(); ++number)
        if (equalIgnoringCase(presets[number].name, text) || text == std::to_string(number))
            return number;
    return std::nullopt;
}

std::vector<std::string> presetNames()
{
    std::vector<std::string> names;
    names.reserve(presets.size());
    for (const auto& preset : presets)
        names.emplace_back(preset.name);
    return names;
}

} // namespace velotrine
