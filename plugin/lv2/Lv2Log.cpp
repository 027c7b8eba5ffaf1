#include "plugin/lv2/Lv2Log.h"

#include "plugin/lv2/Lv2Features.h"

#include <array>
#include <charconv>
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

void Lv2Log::sampleRateError(double sampleRate) const
{
    // Not std::to_string, which writes the decimal sign of the host's locale.
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), sampleRate).ptr;
    error("There is no sound at a sample rate of " + std::string(text.data(), end) + " Hz.");
}

} // namespace velotrine
