#include "plugin/clap/ClapPlugin.h"

#include "audiounit/ParameterText.h"
#include "audiounit/Parameters.h"
#include "audiounit/StateText.h"
#include "plugin/HostValue.h"
#include "plugin/clap/ClapEventWriter.h"
#include "plugin/clap/ClapNoteWriter.h"
#include "plugin/clap/ClapStructures.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <limits>
#include <span>
#include <string_view>

namespace velotrine {

namespace {

/// As much of a text as there is room for, and a zero at its end.
void copyText(std::string_view text, std::span<char> room)
{
    if (room.empty())
        return;
    const auto length = std::min(text.size(), room.size() - 1);
    std::copy_n(text.begin(), length, room.begin());
    room[length] = '\0';
}

/// The channels that the host does not have are null.
StereoOutput outputOf(const clap_process_t& process) noexcept
{
    if (process.audio_outputs_count == 0 || process.audio_outputs == nullptr)
        return {};
    auto& output = process.audio_outputs[0];
    output.constant_mask = 0;
    const auto channel = [&output](std::uint32_t index) {
        return output.data32 != nullptr && index < output.channel_count ? output.data32[index] : nullptr;
    };
    return {channel(0), channel(1)};
}

bool readAll(const clap_istream_t& stream, std::string& text)
{
    std::array<char, 4096> piece{};
    for (;;) {
        const auto count = stream.read(&stream, piece.data(), piece.size());
        if (count == 0)
            return true;
        if (count < 0 || count > static_cast<std::int64_t>(piece.size()))
            return false;
        text.append(piece.data(), static_cast<std::size_t>(count));
        if (text.size() > maxStateBytes)
            return true; // too long for a state whatever follows, as its reader will say
    }
}

} // namespace

ClapPlugin::ClapPlugin(const clap_plugin_descriptor_t& descriptor, const clap_host_t& host)
    : clapHost(host), structure(clapStructureOf(*this, descriptor)), threads(host)
{}

bool ClapPlugin::isOn(ClapThread thread) const noexcept
{
    return threads.isOn(thread, instrument.audioUnit()->renderResourcesAllocated());
}

bool ClapPlugin::init()
{
    const auto ask = [this](const char* id) { return clapHost.get_extension(&clapHost, id); };
    hostParams = static_cast<const clap_host_params_t*>(ask(CLAP_EXT_PARAMS));
    hostState = static_cast<const clap_host_state_t*>(ask(CLAP_EXT_STATE));
    hostLog = static_cast<const ClapHostLog*>(ask(clapLogId));
    if (const auto* const ports = static_cast<const clap_host_note_ports_t*>(ask(CLAP_EXT_NOTE_PORTS)))
        noteDialect = ClapNoteWriter::dialectFor(ports->supported_dialects(&clapHost));
    threads.findHostsWord();
    return true;
}

void ClapPlugin::destroy()
{
    delete this;
}

bool ClapPlugin::activate(double sampleRate, std::uint32_t, std::uint32_t)
{
    return instrument.prepare(sampleRate);
}

void ClapPlugin::deactivate()
{
    instrument.release();
}

bool ClapPlugin::startProcessing()
{
    return true;
}

void ClapPlugin::stopProcessing() {}

void ClapPlugin::reset()
{
    instrument.reset();
}

clap_process_status ClapPlugin::process(const clap_process_t* process)
{
    if (process == nullptr)
        return CLAP_PROCESS_ERROR;
    renderBlock(*process);
    return CLAP_PROCESS_CONTINUE;
}

void ClapPlugin::renderBlock(const clap_process_t& block) noexcept VELOTRINE_NONBLOCKING
{
    constexpr auto longest = static_cast<std::uint32_t>(std::numeric_limits<int>::max());
    const auto frames = std::min(block.frames_count, longest);
    const auto output = outputOf(block);
    ClapNoteWriter noteWriter(block.out_events, noteDialect);
    const NoteOutput notes{&noteWriter};
    std::uint32_t rendered = 0;
    const auto renderUpTo = [&](std::uint32_t frame) {
        const auto from = static_cast<int>(rendered);
        instrument.render(output.from(from), static_cast<int>(frame) - from, notes.from(from));
        rendered = frame;
    };

    applyTransport(block.transport);
    if (const auto* const in = block.in_events) {
        VELOTRINE_UNFOLLOWED(const auto count = in->size(in);) // the host's own code
        for (std::uint32_t i = 0; i < count; ++i) {
            VELOTRINE_UNFOLLOWED(const auto* const event = in->get(in, i);) // likewise
            if (event == nullptr)
                continue;
            renderUpTo(std::clamp(event->time, rendered, frames));
            applyEvent(*event);
        }
    }
    renderUpTo(frames);
    // Behind the notes, for the list goes by frames.
    handOverEdits(block.out_events, frames > 0 ? frames - 1 : 0);
}

const void* ClapPlugin::extension(const char* id)
{
    return id != nullptr ? clapExtension(id) : nullptr;
}

void ClapPlugin::onMainThread() {}

void ClapPlugin::applyEvent(const clap_event_header_t& event) noexcept VELOTRINE_NONBLOCKING
{
    if (event.space_id != CLAP_CORE_EVENT_SPACE_ID)
        return;
    if (event.type == CLAP_EVENT_PARAM_VALUE && event.size >= sizeof(clap_event_param_value_t)) {
        const auto& change = reinterpret_cast<const clap_event_param_value_t&>(event);
        instrument.setValue(change.param_id, change.value);
    } else if (event.type == CLAP_EVENT_TRANSPORT && event.size >= sizeof(clap_event_transport_t)) {
        applyTransport(&reinterpret_cast<const clap_event_transport_t&>(event));
    }
}

void ClapPlugin::applyTransport(const clap_event_transport_t* transport) noexcept VELOTRINE_NONBLOCKING
{
    if (transport == nullptr) {
        instrument.setTransport(std::nullopt);
        return;
    }
    HostTransport told;
    if ((transport->flags & CLAP_TRANSPORT_HAS_TEMPO) != 0) {
        told.tempo = transport->tempo;
        told.tempoPerFrame = transport->tempo_inc;
    }
    if ((transport->flags & CLAP_TRANSPORT_HAS_TIME_SIGNATURE) != 0) {
        told.beatsPerBar = transport->tsig_num;
        told.beatUnit = transport->tsig_denom;
    }
    told.isPlaying = (transport->flags & CLAP_TRANSPORT_IS_PLAYING) != 0;
    instrument.setTransport(told);
}

void ClapPlugin::handOverEdits(const clap_output_events_t* out,
                               std::uint32_t frame) noexcept VELOTRINE_NONBLOCKING
{
    if (out != nullptr)
        VELOTRINE_UNFOLLOWED(edits.handOver(ClapEventWriter{*out, frame});) // calls the host's own code
}

std::uint32_t ClapPlugin::audioPortCount(bool isInput)
{
    return isInput ? 0 : 1;
}

bool ClapPlugin::audioPort(std::uint32_t index, bool isInput, clap_audio_port_info_t* info)
{
    if (isInput || index != 0 || info == nullptr)
        return false;
    *info = {.id = 0,
             .name = {},
             .flags = CLAP_AUDIO_PORT_IS_MAIN,
             .channel_count = 2,
             .port_type = CLAP_PORT_STEREO,
             .in_place_pair = CLAP_INVALID_ID};
    copyText("Output", info->name);
    return true;
}

std::uint32_t ClapPlugin::notePortCount(bool isInput)
{
    return isInput ? 0 : 1;
}

bool ClapPlugin::notePort(std::uint32_t index, bool isInput, clap_note_port_info_t* info)
{
    if (isInput || index != 0 || info == nullptr)
        return false;
    *info = {.id = 0,
             .supported_dialects = ClapNoteWriter::dialects,
             .preferred_dialect = CLAP_NOTE_DIALECT_CLAP,
             .name = {}};
    copyText("Notes", info->name);
    return true;
}

std::uint32_t ClapPlugin::parameterCountForHost()
{
    return parameterCount;
}

bool ClapPlugin::parameterInfo(std::uint32_t index, clap_param_info_t* info)
{
    if (index >= parameterCount || info == nullptr)
        return false;
    const auto& parameter = parameterTable()[index];
    *info = {};
    info->id = static_cast<clap_id>(parameter.address);
    info->flags = CLAP_PARAM_IS_AUTOMATABLE;
    if (parameter.isDiscrete())
        info->flags |= CLAP_PARAM_IS_STEPPED;
    copyText(parameter.name, info->name);
    info->min_value = static_cast<double>(parameter.minValue);
    info->max_value = static_cast<double>(parameter.maxValue);
    info->default_value = static_cast<double>(parameter.initialValue);
    return true;
}

bool ClapPlugin::parameterValue(clap_id id, double* value)
{
    if (id >= parameterCount || value == nullptr)
        return false;
    *value = static_cast<double>(instrument.value(id));
    return true;
}

bool ClapPlugin::textFromValue(clap_id id, double value, char* text, std::uint32_t size)
{
    const auto bounded = valueFromHost(id, value);
    if (!bounded || text == nullptr || size == 0)
        return false;
    copyText(parameterText(parameterTable()[id], *bounded), {text, size});
    return true;
}

bool ClapPlugin::valueFromText(clap_id id, const char* text, double* value)
{
    if (id >= parameterCount || text == nullptr || value == nullptr)
        return false;
    const auto read = parameterFromText(parameterTable()[id], text);
    const auto bounded = read ? valueFromHost(id, static_cast<double>(*read)) : std::nullopt;
    if (!bounded)
        return false;
    *value = static_cast<double>(*bounded);
    return true;
}

void ClapPlugin::flush(const clap_input_events_t* in, const clap_output_events_t* out)
{
    const auto count = in != nullptr ? in->size(in) : 0;
    for (std::uint32_t i = 0; i < count; ++i)
        if (const auto* const event = in->get(in, i))
            applyEvent(*event);
    handOverEdits(out, 0);
}

bool ClapPlugin::save(const clap_ostream_t* stream)
{
    if (stream == nullptr)
        return false;
    const auto text = instrument.saveState();
    for (std::size_t written = 0; written < text.size();) {
        const auto count = stream->write(stream, text.data() + written, text.size() - written);
        if (count <= 0)
            return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

bool ClapPlugin::load(const clap_istream_t* stream)
{
    std::string text;
    if (stream == nullptr || !readAll(*stream, text)) {
        logError("The state is refused: the host could not read it.");
        return false;
    }
    if (const auto error = instrument.restoreState(text)) {
        logError(*error);
        return false;
    }
    if (hostParams != nullptr)
        hostParams->rescan(&clapHost, CLAP_PARAM_RESCAN_VALUES);
    return true;
}

void ClapPlugin::logError(const std::string& message) const
{
    if (hostLog != nullptr)
        hostLog->log(&clapHost, clapLogError, message.c_str());
}

void ClapPlugin::beginGesture(ParameterAddress address)
{
    edits.beginGesture(address);
    if (hostParams != nullptr)
        hostParams->request_flush(&clapHost);
}

void ClapPlugin::valueChanged(ParameterAddress address, float value)
{
    edits.setValue(address, value);
    if (hostParams != nullptr)
        hostParams->request_flush(&clapHost);
}

void ClapPlugin::endGesture(ParameterAddress address)
{
    edits.endGesture(address);
    if (hostParams != nullptr)
        hostParams->request_flush(&clapHost);
}

void ClapPlugin::stateChanged()
{
    if (hostState != nullptr)
        hostState->mark_dirty(&clapHost);
}

bool ClapPlugin::isGuiSupported(const char* api, bool isFloating)
{
    return api != nullptr && std::string_view(api) == CLAP_WINDOW_API_X11 && !isFloating;
}

bool ClapPlugin::preferredGui(const char** api, bool* isFloating)
{
    if (api == nullptr || isFloating == nullptr)
        return false;
    *api = CLAP_WINDOW_API_X11;
    *isFloating = false;
    return true;
}

bool ClapPlugin::createGui(const char* api, bool isFloating)
{
    if (!isGuiSupported(api, isFloating))
        return false;
    if (!gui)
        gui = std::make_unique<ClapGui>(clapHost, instrument);
    try {
        return gui->create();
    } catch (const std::exception&) {
        gui->destroy(); // whatever there is of it by now
        throw;
    }
}

void ClapPlugin::destroyGui()
{
    if (gui)
        gui->destroy();
}

bool ClapPlugin::setGuiScale(double scale)
{
    return editor() != nullptr && editor()->setScale(scale);
}

bool ClapPlugin::guiSize(std::uint32_t* width, std::uint32_t* height)
{
    if (editor() == nullptr || width == nullptr || height == nullptr)
        return false;
    const auto size = editor()->size();
    *width = static_cast<std::uint32_t>(size.width);
    *height = static_cast<std::uint32_t>(size.height);
    return true;
}

bool ClapPlugin::canResizeGui()
{
    return true;
}

bool ClapPlugin::guiResizeHints(clap_gui_resize_hints_t* hints)
{
    if (hints == nullptr)
        return false;
    *hints = {.can_resize_horizontally = true,
              .can_resize_vertically = true,
              .preserve_aspect_ratio = false,
              .aspect_ratio_width = 0,
              .aspect_ratio_height = 0};
    return true;
}

namespace {

EmbeddedEditor::PixelSize pixelSize(std::uint32_t width, std::uint32_t height)
{
    constexpr std::uint32_t beyondScreens = 1U << 24U;
    return {static_cast<int>(std::min(width, beyondScreens)),
            static_cast<int>(std::min(height, beyondScreens))};
}

} // namespace

bool ClapPlugin::adjustGuiSize(std::uint32_t* width, std::uint32_t* height)
{
    if (editor() == nullptr || width == nullptr || height == nullptr)
        return false;
    const auto nearest = editor()->nearestSize(pixelSize(*width, *height));
    *width = static_cast<std::uint32_t>(nearest.width);
    *height = static_cast<std::uint32_t>(nearest.height);
    return true;
}

bool ClapPlugin::setGuiSize(std::uint32_t width, std::uint32_t height)
{
    if (editor() == nullptr)
        return false;
    const auto before = instrument.editorSize();
    editor()->setSize(pixelSize(width, height));
    if (hostState != nullptr && instrument.editorSize() != before)
        hostState->mark_dirty(&clapHost);
    return true;
}

bool ClapPlugin::setGuiParent(const clap_window_t* parent)
{
    return editor() != nullptr && parent != nullptr && isGuiSupported(parent->api, false) &&
           editor()->attach(parent->x11);
}

bool ClapPlugin::setGuiTransient(const clap_window_t*)
{
    return false;
}

void ClapPlugin::suggestGuiTitle(const char*) {}

bool ClapPlugin::showGui()
{
    if (editor() == nullptr)
        return false;
    editor()->setVisible(true);
    return true;
}

bool ClapPlugin::hideGui()
{
    if (editor() == nullptr)
        return false;
    editor()->setVisible(false);
    return true;
}

void ClapPlugin::onTimer(clap_id)
{
    if (gui)
        gui->pump();
}

void ClapPlugin::onFd(int, std::uint32_t)
{
    if (gui)
        gui->pump();
}

} // namespace velotrine
