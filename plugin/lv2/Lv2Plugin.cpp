#include "plugin/lv2/Lv2Plugin.h"

#include <lv2/atom/util.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <limits>
#include <string_view>

namespace velotrine {

Lv2Plugin::Lv2Plugin(double sampleRate, const LV2_URID_Map& map, const Lv2Log& log)
    : hostSampleRate(sampleRate), hostLog(log), timePosition(map), stateKey(map.map(map.handle, lv2StateUri)),
      stringType(map.map(map.handle, LV2_ATOM__String)), notes(map)
{}

void Lv2Plugin::connectPort(std::uint32_t port, void* data) noexcept
{
    if (port < parameterCount)
        ports.connect(port, static_cast<const float*>(data));
    else if (port == lv2Port::left)
        output.left = static_cast<float*>(data);
    else if (port == lv2Port::right)
        output.right = static_cast<float*>(data);
    else if (port == lv2Port::time)
        time = static_cast<const LV2_Atom_Sequence*>(data);
    else if (port == lv2Port::notes)
        notes.connect(static_cast<LV2_Atom_Sequence*>(data));
}

void Lv2Plugin::activate()
{
    isActive = true;
    try {
        if (!instrument.prepare(hostSampleRate))
            hostLog.sampleRateError(hostSampleRate);
    } catch (const std::exception& error) {
        hostLog.error(std::string("There is no sound: ") + error.what());
    }
}

void Lv2Plugin::deactivate()
{
    instrument.release();
    isActive = false;
}

void Lv2Plugin::run(std::uint32_t frames) noexcept VELOTRINE_NONBLOCKING
{
    constexpr auto longest = static_cast<std::uint32_t>(std::numeric_limits<int>::max());
    frames = std::min(frames, longest);
    std::uint32_t rendered = 0;
    const NoteOutput noteOutput{&notes};
    const auto renderUpTo = [&](std::uint32_t frame) {
        const auto from = static_cast<int>(rendered);
        instrument.render(output.from(from), static_cast<int>(frame) - from, noteOutput.from(from));
        rendered = frame;
    };
    notes.begin();
    ports.applyTo(instrument);
    applyEvents([&](std::int64_t frame) {
        renderUpTo(static_cast<std::uint32_t>(std::clamp<std::int64_t>(frame, rendered, frames)));
    });
    renderUpTo(frames);
}

void Lv2Plugin::showPort(ParameterAddress address, float value) noexcept
{
    if (!isActive)
        ports.apply(address, value, instrument);
}

template <typename RenderUpTo>
void Lv2Plugin::applyEvents(RenderUpTo&& renderUpTo) noexcept VELOTRINE_NONBLOCKING
{
    if (time == nullptr || !timePosition.isSequence(time->atom) || time->atom.size < sizeof time->body)
        return;
    const auto* const first = reinterpret_cast<const std::byte*>(&time->body + 1);
    const std::size_t size = time->atom.size - sizeof time->body;
    for (std::size_t at = 0; at + sizeof(LV2_Atom_Event) <= size;) {
        const auto& event = *reinterpret_cast<const LV2_Atom_Event*>(first + at);
        if (event.body.size > size - at - sizeof event)
            break;
        if (timePosition.update(transport, event.body)) {
            renderUpTo(event.time.frames);
            instrument.setTransport(transport);
        }
        at += sizeof event + lv2_atom_pad_size(event.body.size);
    }
}

LV2_State_Status Lv2Plugin::save(LV2_State_Store_Function store, LV2_State_Handle handle) const
{
    const auto text = instrument.saveState();
    return store(handle, stateKey, text.c_str(), text.size() + 1, stringType,
                 LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE);
}

LV2_State_Status Lv2Plugin::restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle)
{
    std::size_t size = 0;
    std::uint32_t type = 0;
    std::uint32_t flags = 0;
    const auto* const bytes = static_cast<const char*>(retrieve(handle, stateKey, &size, &type, &flags));
    if (bytes == nullptr)
        return LV2_STATE_ERR_NO_PROPERTY; // such as a preset that is only port values
    if (type != stringType) {
        hostLog.error("The state is refused: it is not a text.");
        return LV2_STATE_ERR_BAD_TYPE;
    }
    std::string_view text(bytes, size);
    text = text.substr(0, text.find('\0'));
    if (const auto error = instrument.restoreState(text)) {
        hostLog.error(*error);
        return LV2_STATE_ERR_UNKNOWN;
    }
    ports.stateRestored();
    return LV2_STATE_SUCCESS;
}

EmbeddedEditor& Lv2Plugin::embeddedEditor()
{
    if (!embedded)
        embedded = std::make_unique<EmbeddedEditor>(instrument);
    return *embedded;
}

void Lv2Plugin::setEditorHost(InstrumentHost* host) noexcept
{
    for (const auto address : ports.held.load())
        endGesture(address);
    editorHost = host;
}

void Lv2Plugin::beginGesture(ParameterAddress address)
{
    ports.held.insert(address);
    if (editorHost != nullptr)
        editorHost->beginGesture(address);
}

void Lv2Plugin::valueChanged(ParameterAddress address, float value)
{
    if (editorHost != nullptr)
        editorHost->valueChanged(address, value);
}

void Lv2Plugin::endGesture(ParameterAddress address)
{
    ports.held.erase(address);
    if (editorHost != nullptr)
        editorHost->endGesture(address);
}

} // namespace velotrine
