#include "tests/plugin/ClapHost.h"

#include "engine/Nonblocking.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <dlfcn.h>
#include <poll.h>
#include <stdexcept>

namespace velotrine {

namespace {

ClapHost& self(const clap_host_t* host)
{
    return *static_cast<ClapHost*>(host->host_data);
}

std::string shortNumber(double value)
{
    auto text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    return text;
}

NoteMessage messageOf(const clap_event_note_t& note)
{
    return {.frame = static_cast<int>(note.header.time),
            .isOn = note.header.type == CLAP_EVENT_NOTE_ON,
            .channel = static_cast<std::uint8_t>(note.channel),
            .key = static_cast<std::uint8_t>(note.key),
            .velocity = static_cast<std::uint8_t>(std::lround(note.velocity * 127.0))};
}

NoteMessage messageOf(const clap_event_midi_t& midi)
{
    return {.frame = static_cast<int>(midi.header.time),
            .isOn = (midi.data[0] & 0xF0) == 0x90,
            .channel = static_cast<std::uint8_t>(midi.data[0] & 0x0F),
            .key = midi.data[1],
            .velocity = midi.data[2]};
}

std::optional<NoteMessage> noteIn(const clap_event_header_t& event)
{
    if (event.type == CLAP_EVENT_NOTE_ON || event.type == CLAP_EVENT_NOTE_OFF)
        return messageOf(reinterpret_cast<const clap_event_note_t&>(event));
    if (event.type == CLAP_EVENT_MIDI)
        return messageOf(reinterpret_cast<const clap_event_midi_t&>(event));
    return std::nullopt;
}

bool takeNote(ClapHost& host, const NoteMessage& note)
{
    if (host.notes.size() >= host.roomForNotes)
        return false;
    host.notes.push_back(note);
    return true;
}

void takeEdit(ClapHost& host, const clap_event_header_t& event)
{
    VELOTRINE_MAY_BLOCK();
    if (event.type == CLAP_EVENT_PARAM_VALUE) {
        const auto& change = reinterpret_cast<const clap_event_param_value_t&>(event);
        host.told.push_back(std::to_string(change.param_id) + " = " + shortNumber(change.value));
    } else {
        const auto& gesture = reinterpret_cast<const clap_event_param_gesture_t&>(event);
        host.told.push_back((event.type == CLAP_EVENT_PARAM_GESTURE_BEGIN ? "begin " : "end ") +
                            std::to_string(gesture.param_id));
    }
}

bool takeEvent(const clap_output_events_t* list, const clap_event_header_t* event)
{
    auto& host = *static_cast<ClapHost*>(list->ctx);
    if (const auto note = noteIn(*event)) {
        if (!takeNote(host, *note))
            return false;
    } else {
        takeEdit(host, *event);
    }
    host.eventTypes.push_back(event->type);
    host.eventFrames.push_back(event->time);
    return true;
}

using Events = std::vector<clap_event_param_value_t>;

std::uint32_t eventCount(const clap_input_events_t* list)
{
    return static_cast<std::uint32_t>(static_cast<const Events*>(list->ctx)->size());
}

const clap_event_header_t* eventAt(const clap_input_events_t* list, std::uint32_t index)
{
    return &(*static_cast<const Events*>(list->ctx))[index].header;
}

clap_event_param_value_t eventOf(const ClapAutomation& change)
{
    clap_event_param_value_t event{};
    event.header = {.size = sizeof event,
                    .time = change.frame,
                    .space_id = CLAP_CORE_EVENT_SPACE_ID,
                    .type = CLAP_EVENT_PARAM_VALUE,
                    .flags = 0};
    event.param_id = change.id;
    event.value = change.value;
    return event;
}

Events eventsOf(const std::vector<ClapAutomation>& automation)
{
    Events events;
    for (const auto& change : automation)
        events.push_back(eventOf(change));
    return events;
}

clap_event_transport_t eventOf(const HostTransport& transport)
{
    clap_event_transport_t event{};
    event.header = {.size = sizeof event,
                    .time = 0,
                    .space_id = CLAP_CORE_EVENT_SPACE_ID,
                    .type = CLAP_EVENT_TRANSPORT,
                    .flags = 0};
    event.flags = CLAP_TRANSPORT_HAS_TEMPO | CLAP_TRANSPORT_HAS_TIME_SIGNATURE;
    if (transport.isPlaying)
        event.flags |= CLAP_TRANSPORT_IS_PLAYING;
    event.tempo = transport.tempo;
    event.tempo_inc = transport.tempoPerFrame;
    event.tsig_num = static_cast<std::uint16_t>(transport.beatsPerBar);
    event.tsig_denom = static_cast<std::uint16_t>(transport.beatUnit);
    return event;
}

constexpr clap_host_params_t hostParams{
    .rescan = [](const clap_host_t* host, clap_param_rescan_flags) { ++self(host).rescans; },
    .clear = [](const clap_host_t*, clap_id, clap_param_clear_flags) {},
    .request_flush = [](const clap_host_t* host) { ++self(host).flushRequests; }};

constexpr clap_host_note_ports_t hostNotePorts{
    .supported_dialects = [](const clap_host_t* host) { return self(host).dialects.value(); },
    .rescan = [](const clap_host_t*, std::uint32_t) {}};

constexpr clap_host_state_t hostState{.mark_dirty = [](const clap_host_t* host) { ++self(host).dirtyMarks; }};

constexpr ClapHostLog hostLog{.log = [](const clap_host_t* host, std::int32_t, const char* message) {
    self(host).logged.emplace_back(message);
}};

constexpr ClapHostPosixFdSupport hostDescriptors{
    .registerFd =
        [](const clap_host_t* host, int fd, std::uint32_t) {
            ++self(host).descriptors[fd];
            return true;
        },
    .modifyFd = [](const clap_host_t*, int, std::uint32_t) { return true; },
    .unregisterFd =
        [](const clap_host_t* host, int fd) {
            auto& descriptors = self(host).descriptors;
            if (--descriptors.at(fd) == 0)
                descriptors.erase(fd);
            return true;
        }};

} // namespace

ClapLibrary::ClapLibrary()
{
    handle = dlopen(VELOTRINE_CLAP, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr)
        throw std::runtime_error(dlerror());
    pluginEntry = static_cast<const clap_plugin_entry_t*>(dlsym(handle, "clap_entry"));
    if (pluginEntry == nullptr || !pluginEntry->init(VELOTRINE_CLAP))
        throw std::runtime_error("the CLAP file has no entry");
    pluginFactory =
        static_cast<const clap_plugin_factory_t*>(pluginEntry->get_factory(CLAP_PLUGIN_FACTORY_ID));
}

ClapLibrary::~ClapLibrary()
{
    pluginEntry->deinit();
    dlclose(handle);
}

ClapHost::ClapHost(const ClapLibrary& library, std::optional<std::uint32_t> noteDialects)
    : dialects(noteDialects)
{
    notes.reserve(usualRoomForNotes);
    eventTypes.reserve(2 * usualRoomForNotes);
    eventFrames.reserve(2 * usualRoomForNotes);
    host = {.clap_version = CLAP_VERSION,
            .host_data = this,
            .name = "Test",
            .vendor = "Test",
            .url = "",
            .version = "1",
            .get_extension = hostExtension,
            .request_restart = [](const clap_host_t*) {},
            .request_process = [](const clap_host_t*) {},
            .request_callback = [](const clap_host_t*) {}};
    const auto& factory = library.factory();
    instance = factory.create_plugin(&factory, &host, factory.get_plugin_descriptor(&factory, 0)->id);
    if (instance == nullptr || !instance->init(instance))
        throw std::runtime_error("the plug-in cannot be created");
}

ClapHost::~ClapHost()
{
    stop();
    instance->destroy(instance);
}

const void* ClapHost::hostExtension(const clap_host_t* host, const char* id)
{
    static constexpr clap_host_timer_support_t hostTimers{
        .register_timer =
            [](const clap_host_t* h, std::uint32_t period, clap_id* timer) {
                *timer = self(h).nextTimer++;
                self(h).timers[*timer] = period;
                return true;
            },
        .unregister_timer = [](const clap_host_t* h,
                               clap_id timer) { return self(h).timers.erase(timer) == 1; }};
    const std::string name = id;
    if (name == CLAP_EXT_PARAMS)
        return &hostParams;
    if (name == CLAP_EXT_STATE)
        return &hostState;
    if (name == CLAP_EXT_NOTE_PORTS && self(host).dialects)
        return &hostNotePorts;
    if (name == clapLogId)
        return &hostLog;
    if (name == CLAP_EXT_TIMER_SUPPORT)
        return &hostTimers;
    if (name == clapPosixFdSupportId && self(host).watchesDescriptors)
        return &hostDescriptors;
    return nullptr;
}

double ClapHost::value(clap_id id) const
{
    double value = -1.0;
    if (!params().get_value(instance, id, &value))
        throw std::runtime_error("no value");
    return value;
}

bool ClapHost::start(double sampleRate, std::uint32_t maxFrames)
{
    stop();
    isActive = instance->activate(instance, sampleRate, 1, maxFrames) && instance->start_processing(instance);
    return isActive;
}

void ClapHost::stop()
{
    if (!isActive)
        return;
    instance->stop_processing(instance);
    instance->deactivate(instance);
    isActive = false;
}

clap_process_status ClapHost::process(float* left, float* right, std::uint32_t frames,
                                      const std::optional<HostTransport>& transport,
                                      const std::vector<ClapAutomation>& automation)
{
    ClapCall call(*this);
    call.setTransport(transport);
    for (const auto& change : automation)
        call.add(change);
    return call.process(left, right, frames);
}

void ClapHost::flush(const std::vector<ClapAutomation>& automation)
{
    forgetEvents();
    auto events = eventsOf(automation);
    const clap_input_events_t in{.ctx = &events, .size = eventCount, .get = eventAt};
    const clap_output_events_t out{.ctx = this, .try_push = takeEvent};
    params().flush(instance, &in, &out);
}

void ClapHost::forgetEvents() noexcept
{
    notes.clear();
    eventTypes.clear();
    eventFrames.clear();
}

std::string ClapHost::save() const
{
    std::string text;
    const clap_ostream_t stream{
        .ctx = &text, .write = [](const clap_ostream_t* to, const void* bytes, std::uint64_t size) {
            // In small pieces, as a host may.
            const auto count = std::min<std::uint64_t>(size, 100);
            static_cast<std::string*>(to->ctx)->append(static_cast<const char*>(bytes), count);
            return static_cast<std::int64_t>(count);
        }};
    if (!extension<clap_plugin_state_t>(CLAP_EXT_STATE).save(instance, &stream))
        return {};
    return text;
}

bool ClapHost::load(const std::string& state, std::size_t bytesAtATime)
{
    struct Source
    {
        std::string_view rest;
        std::size_t bytesAtATime;
    };

    Source source{state, bytesAtATime};
    const clap_istream_t stream{
        .ctx = &source, .read = [](const clap_istream_t* from, void* bytes, std::uint64_t size) {
            auto& s = *static_cast<Source*>(from->ctx);
            const auto count = std::min({s.rest.size(), s.bytesAtATime, static_cast<std::size_t>(size)});
            std::copy_n(s.rest.data(), count, static_cast<char*>(bytes));
            s.rest.remove_prefix(count);
            return static_cast<std::int64_t>(count);
        }};
    return extension<clap_plugin_state_t>(CLAP_EXT_STATE).load(instance, &stream);
}

void ClapHost::runLoop(std::chrono::milliseconds duration)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + duration;
    std::map<clap_id, Clock::time_point> lastTimes;
    while (Clock::now() < end) {
        std::vector<pollfd> watched;
        for (const auto& [descriptor, count] : descriptors)
            watched.push_back({.fd = descriptor, .events = POLLIN, .revents = 0});
        poll(watched.data(), watched.size(), 5);
        for (const auto& each : watched)
            if (each.revents != 0 && descriptors.contains(each.fd))
                extension<ClapPluginPosixFdSupport>(clapPosixFdSupportId)
                    .onFd(instance, each.fd, clapPosixFdRead);
        const auto running = timers;
        for (const auto& [timer, period] : running) {
            if (Clock::now() - lastTimes[timer] < std::chrono::milliseconds(period))
                continue;
            lastTimes[timer] = Clock::now();
            extension<clap_plugin_timer_support_t>(CLAP_EXT_TIMER_SUPPORT).on_timer(instance, timer);
        }
    }
}

ClapCall::ClapCall(ClapHost& itsHost) : host(itsHost)
{
    output.data32 = channels.data();
    output.channel_count = 2;
    in = {.ctx = &events, .size = eventCount, .get = eventAt};
    out = {.ctx = &host, .try_push = takeEvent};
    call.steady_time = -1;
    call.audio_outputs = &output;
    call.audio_outputs_count = 1;
    call.in_events = &in;
    call.out_events = &out;
}

void ClapCall::setTransport(const std::optional<HostTransport>& transport)
{
    transportEvent = eventOf(transport.value_or(HostTransport{}));
    call.transport = transport ? &transportEvent : nullptr;
}

void ClapCall::add(const ClapAutomation& automation)
{
    events.push_back(eventOf(automation));
}

clap_process_status ClapCall::process(float* left, float* right, std::uint32_t frames)
{
    channels = {left, right};
    call.frames_count = frames;
    host.forgetEvents();
    const auto status = host.plugin().process(&host.plugin(), &call);
    events.clear();
    return status;
}

} // namespace velotrine
