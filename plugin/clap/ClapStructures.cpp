#include "plugin/clap/ClapStructures.h"

#include "plugin/HostCall.h"
#include "plugin/clap/ClapPlugin.h"

#include <array>
#include <string_view>
#include <utility>

namespace velotrine {

namespace {

static_assert(CLAP_PROCESS_ERROR == 0);

/// A function of the format's that calls one of the plug-in's. False, 0 or null say that it has thrown.
template <auto method>
struct Call;

template <typename Result, typename... Arguments, Result (ClapPlugin::*method)(Arguments...)>
struct Call<method>
{
    static Result CLAP_ABI function(const clap_plugin_t* plugin, Arguments... arguments)
    {
        return answerOrNothing(
            [&] { return (static_cast<ClapPlugin*>(plugin->plugin_data)->*method)(arguments...); });
    }
};

template <auto method>
constexpr auto call = &Call<method>::function;

using P = ClapPlugin;

constexpr clap_plugin_audio_ports_t audioPorts{.count = call<&P::audioPortCount>, .get = call<&P::audioPort>};

constexpr clap_plugin_note_ports_t notePorts{.count = call<&P::notePortCount>, .get = call<&P::notePort>};

constexpr clap_plugin_params_t params{.count = call<&P::parameterCountForHost>,
                                      .get_info = call<&P::parameterInfo>,
                                      .get_value = call<&P::parameterValue>,
                                      .value_to_text = call<&P::textFromValue>,
                                      .text_to_value = call<&P::valueFromText>,
                                      .flush = call<&P::flush>};

constexpr clap_plugin_state_t state{.save = call<&P::save>, .load = call<&P::load>};

constexpr clap_plugin_gui_t guiFunctions{.is_api_supported = call<&P::isGuiSupported>,
                                         .get_preferred_api = call<&P::preferredGui>,
                                         .create = call<&P::createGui>,
                                         .destroy = call<&P::destroyGui>,
                                         .set_scale = call<&P::setGuiScale>,
                                         .get_size = call<&P::guiSize>,
                                         .can_resize = call<&P::canResizeGui>,
                                         .get_resize_hints = call<&P::guiResizeHints>,
                                         .adjust_size = call<&P::adjustGuiSize>,
                                         .set_size = call<&P::setGuiSize>,
                                         .set_parent = call<&P::setGuiParent>,
                                         .set_transient = call<&P::setGuiTransient>,
                                         .suggest_title = call<&P::suggestGuiTitle>,
                                         .show = call<&P::showGui>,
                                         .hide = call<&P::hideGui>};

constexpr clap_plugin_timer_support_t timerSupport{.on_timer = call<&P::onTimer>};

constexpr ClapPluginPosixFdSupport posixFdSupport{.onFd = call<&P::onFd>};

/// Throws nothing by itself.
clap_process_status CLAP_ABI process(const clap_plugin_t* plugin, const clap_process_t* block)
{
    return static_cast<ClapPlugin*>(plugin->plugin_data)->process(block);
}

} // namespace

clap_plugin_t clapStructureOf(ClapPlugin& plugin, const clap_plugin_descriptor_t& descriptor)
{
    return {.desc = &descriptor,
            .plugin_data = &plugin,
            .init = call<&P::init>,
            .destroy = call<&P::destroy>,
            .activate = call<&P::activate>,
            .deactivate = call<&P::deactivate>,
            .start_processing = call<&P::startProcessing>,
            .stop_processing = call<&P::stopProcessing>,
            .reset = call<&P::reset>,
            .process = process,
            .get_extension = call<&P::extension>,
            .on_main_thread = call<&P::onMainThread>};
}

const void* clapExtension(const char* id)
{
    const std::array<std::pair<std::string_view, const void*>, 7> extensions{{
        {CLAP_EXT_AUDIO_PORTS, &audioPorts},
        {CLAP_EXT_NOTE_PORTS, &notePorts},
        {CLAP_EXT_PARAMS, &params},
        {CLAP_EXT_STATE, &state},
        {CLAP_EXT_GUI, &guiFunctions},
        {CLAP_EXT_TIMER_SUPPORT, &timerSupport},
        {clapPosixFdSupportId, &posixFdSupport},
    }};
    for (const auto& [name, functions] : extensions)
        if (name == id)
            return functions;
    return nullptr;
}

} // namespace velotrine
