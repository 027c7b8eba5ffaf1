#include "plugin/clap/ClapStructures.h"

#include "engine/FatalError.h"
#include "plugin/HostCall.h"
#include "plugin/clap/ClapPlugin.h"

#include <array>
#include <source_location>
#include <string_view>
#include <utility>

namespace velotrine {

namespace {

static_assert(CLAP_PROCESS_ERROR == 0);

/// A function of the format's that calls one of the plug-in's. False, 0 or null say that it has thrown.
template <ClapThread thread, auto method>
struct Call;

template <ClapThread thread, typename Result, typename... Arguments,
          Result (ClapPlugin::*method)(Arguments...)>
struct Call<thread, method>
{
    static Result CLAP_ABI function(const clap_plugin_t* structure, Arguments... arguments)
    {
        auto& plugin = *static_cast<ClapPlugin*>(structure->plugin_data);
        if (checksThreads && !plugin.isOn(thread))
            fatalError(std::source_location::current().function_name()); // which names the method, too
        return answerOrNothing([&] { return (plugin.*method)(arguments...); });
    }
};

// The thread on which the format lets a host call each.

template <auto method>
constexpr auto onMain = &Call<ClapThread::main, method>::function;

template <auto method>
constexpr auto onAudio = &Call<ClapThread::audio, method>::function;

template <auto method>
constexpr auto onAudioWhileActive = &Call<ClapThread::audioWhileActive, method>::function;

template <auto method>
constexpr auto onAny = &Call<ClapThread::any, method>::function;

using P = ClapPlugin;

constexpr clap_plugin_audio_ports_t audioPorts{.count = onMain<&P::audioPortCount>,
                                               .get = onMain<&P::audioPort>};

constexpr clap_plugin_note_ports_t notePorts{.count = onMain<&P::notePortCount>, .get = onMain<&P::notePort>};

constexpr clap_plugin_params_t params{.count = onMain<&P::parameterCountForHost>,
                                      .get_info = onMain<&P::parameterInfo>,
                                      .get_value = onMain<&P::parameterValue>,
                                      .value_to_text = onMain<&P::textFromValue>,
                                      .text_to_value = onMain<&P::valueFromText>,
                                      .flush = onAudioWhileActive<&P::flush>};

constexpr clap_plugin_state_t state{.save = onMain<&P::save>, .load = onMain<&P::load>};

constexpr clap_plugin_gui_t guiFunctions{.is_api_supported = onMain<&P::isGuiSupported>,
                                         .get_preferred_api = onMain<&P::preferredGui>,
                                         .create = onMain<&P::createGui>,
                                         .destroy = onMain<&P::destroyGui>,
                                         .set_scale = onMain<&P::setGuiScale>,
                                         .get_size = onMain<&P::guiSize>,
                                         .can_resize = onMain<&P::canResizeGui>,
                                         .get_resize_hints = onMain<&P::guiResizeHints>,
                                         .adjust_size = onMain<&P::adjustGuiSize>,
                                         .set_size = onMain<&P::setGuiSize>,
                                         .set_parent = onMain<&P::setGuiParent>,
                                         .set_transient = onMain<&P::setGuiTransient>,
                                         .suggest_title = onMain<&P::suggestGuiTitle>,
                                         .show = onMain<&P::showGui>,
                                         .hide = onMain<&P::hideGui>};

constexpr clap_plugin_timer_support_t timerSupport{.on_timer = onMain<&P::onTimer>};

constexpr ClapPluginPosixFdSupport posixFdSupport{.onFd = onMain<&P::onFd>};

} // namespace

clap_plugin_t clapStructureOf(ClapPlugin& plugin, const clap_plugin_descriptor_t& descriptor)
{
    return {.desc = &descriptor,
            .plugin_data = &plugin,
            .init = onMain<&P::init>,
            .destroy = onMain<&P::destroy>,
            .activate = onMain<&P::activate>,
            .deactivate = onMain<&P::deactivate>,
            .start_processing = onAudio<&P::startProcessing>,
            .stop_processing = onAudio<&P::stopProcessing>,
            .reset = onAudio<&P::reset>,
            .process = onAudio<&P::process>,
            .get_extension = onAny<&P::extension>,
            .on_main_thread = onMain<&P::onMainThread>};
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
