#include "plugin/HostCall.h"
#include "plugin/lv2/Lv2Features.h"
#include "plugin/lv2/Lv2Plugin.h"
#include "plugin/lv2/Lv2Ui.h"

#include <string>
#include <string_view>

namespace velotrine {

namespace {

Lv2Plugin& plugin(LV2_Handle handle)
{
    return *static_cast<Lv2Plugin*>(handle);
}

LV2_Handle make(double sampleRate, const LV2_Feature* const* features)
{
    const Lv2Log log(features);
    const auto* const map = lv2Feature<LV2_URID_Map>(features, LV2_URID__map);
    if (map == nullptr) {
        log.error("A host must offer " LV2_URID__map ".");
        return nullptr;
    }
    if (!HostedInstrument::takesSampleRate(sampleRate)) {
        log.sampleRateError(sampleRate);
        return nullptr;
    }
    return new Lv2Plugin(sampleRate, *map, log); // the host cleans it up
}

LV2_Handle instantiate(const LV2_Descriptor*, double sampleRate, const char*,
                       const LV2_Feature* const* features)
{
    return answerOrNothing([&] { return make(sampleRate, features); });
}

LV2_State_Status save(LV2_Handle handle, LV2_State_Store_Function store, LV2_State_Handle state,
                      std::uint32_t, const LV2_Feature* const*)
{
    return answerOr(LV2_STATE_ERR_UNKNOWN, [&] { return plugin(handle).save(store, state); });
}

LV2_State_Status restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve, LV2_State_Handle state,
                         std::uint32_t, const LV2_Feature* const*)
{
    return answerOr(LV2_STATE_ERR_UNKNOWN, [&] { return plugin(handle).restore(retrieve, state); });
}

constexpr LV2_State_Interface stateInterface{.save = save, .restore = restore};

const void* extensionData(const char* uri)
{
    return uri != nullptr && std::string_view(uri) == LV2_STATE__interface ? &stateInterface : nullptr;
}

constexpr LV2_Descriptor descriptor{
    .URI = lv2PluginUri,
    .instantiate = instantiate,
    .connect_port = [](LV2_Handle handle, std::uint32_t port,
                       void* data) { plugin(handle).connectPort(port, data); },
    .activate = [](LV2_Handle handle) { answerOrNothing([handle] { plugin(handle).activate(); }); },
    .run = [](LV2_Handle handle, std::uint32_t frames) { plugin(handle).run(frames); },
    .deactivate = [](LV2_Handle handle) { plugin(handle).deactivate(); },
    .cleanup = [](LV2_Handle handle) { delete static_cast<Lv2Plugin*>(handle); },
    .extension_data = extensionData};

} // namespace

} // namespace velotrine

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(std::uint32_t index)
{
    return index == 0 ? &velotrine::descriptor : nullptr;
}

LV2_SYMBOL_EXPORT const LV2UI_Descriptor* lv2ui_descriptor(std::uint32_t index)
{
    return index == 0 ? &velotrine::lv2UiDescriptor() : nullptr;
}
