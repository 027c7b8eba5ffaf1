#pragma once

#include "engine/Nonblocking.h"
#include "plugin/HostedInstrument.h"
#include "plugin/InstrumentHost.h"
#include "plugin/PendingEdits.h"
#include "plugin/clap/ClapGui.h"
#include "plugin/clap/ClapThreadCheck.h"

#include <clap/ext/audio-ports.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/plugin.h>

#include <memory>
#include <string>

namespace velotrine {

/// The instrument as a CLAP plug-in: what the format's structures call. Each function runs on the thread that
/// the format names for it.
class ClapPlugin final : private InstrumentHost
{
public:
    /// @param host  outlives the plug-in
    ClapPlugin(const clap_plugin_descriptor_t& descriptor, const clap_host_t& host);

    /// What the host calls. It deletes the plug-in when the host destroys it.
    [[nodiscard]] const clap_plugin_t* clapStructure() const noexcept { return &structure; }

    /// Whether this is the thread, as far as one can know.
    [[nodiscard]] bool isOn(ClapThread thread) const noexcept;

    // plugin
    bool init();
    void destroy();
    bool activate(double sampleRate, std::uint32_t minFrames, std::uint32_t maxFrames);
    void deactivate();
    bool startProcessing();
    void stopProcessing();
    void reset();
    clap_process_status process(const clap_process_t* process);
    const void* extension(const char* id);
    void onMainThread();

    // audio-ports, note-ports
    std::uint32_t audioPortCount(bool isInput);
    bool audioPort(std::uint32_t index, bool isInput, clap_audio_port_info_t* info);
    std::uint32_t notePortCount(bool isInput);
    bool notePort(std::uint32_t index, bool isInput, clap_note_port_info_t* info);

    // params
    std::uint32_t parameterCountForHost();
    bool parameterInfo(std::uint32_t index, clap_param_info_t* info);
    bool parameterValue(clap_id id, double* value);
    bool textFromValue(clap_id id, double value, char* text, std::uint32_t size);
    bool valueFromText(clap_id id, const char* text, double* value);
    void flush(const clap_input_events_t* in, const clap_output_events_t* out);

    // state
    bool save(const clap_ostream_t* stream);
    bool load(const clap_istream_t* stream);

    // gui
    bool isGuiSupported(const char* api, bool isFloating);
    bool preferredGui(const char** api, bool* isFloating);
    bool createGui(const char* api, bool isFloating);
    void destroyGui();
    bool setGuiScale(double scale);
    bool guiSize(std::uint32_t* width, std::uint32_t* height);
    bool canResizeGui();
    bool guiResizeHints(clap_gui_resize_hints_t* hints);
    bool adjustGuiSize(std::uint32_t* width, std::uint32_t* height);
    bool setGuiSize(std::uint32_t width, std::uint32_t height);
    bool setGuiParent(const clap_window_t* parent);
    bool setGuiTransient(const clap_window_t* parent);
    void suggestGuiTitle(const char* title);
    bool showGui();
    bool hideGui();

    // timer-support, posix-fd-support
    void onTimer(clap_id timer);
    void onFd(int fd, std::uint32_t flags);

private:
    void beginGesture(ParameterAddress address) override;
    void valueChanged(ParameterAddress address, float value) override;
    void endGesture(ParameterAddress address) override;
    void stateChanged() override;

    void renderBlock(const clap_process_t& block) noexcept VELOTRINE_NONBLOCKING;
    void applyEvent(const clap_event_header_t& event) noexcept VELOTRINE_NONBLOCKING;
    void applyTransport(const clap_event_transport_t* transport) noexcept VELOTRINE_NONBLOCKING;
    void handOverEdits(const clap_output_events_t* out, std::uint32_t frame) noexcept VELOTRINE_NONBLOCKING;
    void logError(const std::string& message) const;

    [[nodiscard]] EmbeddedEditor* editor() noexcept { return gui ? gui->editor() : nullptr; }

    const clap_host_t& clapHost;
    clap_plugin_t structure;
    ClapThreadCheck threads;
    const clap_host_params_t* hostParams = nullptr;
    const clap_host_state_t* hostState = nullptr;
    const ClapHostLog* hostLog = nullptr;
    clap_note_dialect noteDialect = CLAP_NOTE_DIALECT_CLAP;
    PendingEdits edits;
    HostedInstrument instrument{*this};
    std::unique_ptr<ClapGui> gui; ///< from the first time that the host asks for it
};

} // namespace velotrine
