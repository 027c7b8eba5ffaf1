#pragma once

#include <lv2/core/lv2.h>

#include <string_view>

namespace velotrine {

/// What a host hands over under a name; null if it does not.
template <typename Data>
[[nodiscard]] Data* lv2Feature(const LV2_Feature* const* features, std::string_view uri)
{
    for (auto feature = features; feature != nullptr && *feature != nullptr; ++feature)
        if (uri == (*feature)->URI)
            return static_cast<Data*>((*feature)->data);
    return nullptr;
}

} // namespace velotrine
