#include "plugin/lv2/Lv2Log.h"

#include "plugin/lv2/Lv2Features.h"

#include <iostream>

namespace velotrine {

Lv2Log::Lv2Log(const LV2_Feature* const* features) : hostLog(lv2Feature<LV2_Log_Log>(features, LV2_LOG__log))
{
    const auto* const map = lv2Feature<LV2_URID_Map>(features, LV2_URID__map);
    if (map != nullptr)
        errorKind = map->map(map->handle, LV2_LOG__Error);
    else
        hostLog = nullptr;
}

void Lv2Log::error(const std::string& message) const
{
    if (hostLog != nullptr)
        hostLog->printf(hostLog->handle, errorKind, "Velotrine: %s\n", message.c_str());
    else
        std::cerr << "Velotrine: " << message << "\n";
}

} // namespace velotrine
