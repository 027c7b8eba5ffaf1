#pragma once

#include <cstdint>
#include <string>

namespace velotrine {

/// A named set of values. Numbers from 0 up are the maker's, negative ones the user's.
struct AUAudioUnitPreset
{
    std::int64_t number = 0;
    std::string name;

    bool operator==(const AUAudioUnitPreset&) const = default;
};

} // namespace velotrine
