#pragma once

#include <lv2/core/lv2.h>

#include <string_view>

namespace velotrine {

/// The data of a host's feature; null if the host does not offer it.
template <typename Data>
[[nodiscard]] Data* lv2Feature(const LV2_Feature* const* features, std::string_view uri)
{
    for (auto feature = features; feature != nullptr && *feature != nullptr; ++feature)
        if (uri == (*feature)->URI)
            return static_cast<Data*>((*feature)->data);
    return nullptr;
}

} // namespace velotrine
