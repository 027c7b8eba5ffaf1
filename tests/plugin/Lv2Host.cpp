#include "tests/plugin/Lv2Host.h"

#include "audiounit/Parameters.h"
#include "plugin/lv2/Lv2Names.h"

#include <lv2/atom/forge.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/time/time.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <stdexcept>
#include <thread>
#include <type_traits>

namespace velotrine {

namespace {

Lv2Host& self(void* handle)
{
    return *static_cast<Lv2Host*>(handle);
}

std::string shortNumber(float value)
{
    auto text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    return text;
}

__attribute__((format(printf, 3, 0))) int writeToLog(LV2_Log_Handle handle, LV2_URID, const char* format,
                                                     va_list arguments)
{
    std::array<char, 1000> text{};
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): its caller has begun them
    const auto length = std::vsnprintf(text.data(), text.size(), format, arguments);
    self(handle).logged.emplace_back(text.data());
    return length;
}

__attribute__((format(printf, 3, 4))) int printToLog(LV2_Log_Handle handle, LV2_URID type, const char* format,
                                                     ...)
{
    va_list arguments;
    va_start(arguments, format);
    const auto length = writeToLog(handle, type, format, arguments);
    va_end(arguments);
    return length;
}

/// Hosts hand a value from the window over to the render thread in ways of their own. This one just writes
/// it, and a value of four bytes arrives whole: nothing that the thread sanitizer need speak of.
__attribute__((no_sanitize("thread"))) void writeFromUi(LV2UI_Controller controller, std::uint32_t port,
                                                        std::uint32_t size, std::uint32_t format,
                                                        const void* bytes)
{
    auto& host = self(controller);
    if (port >= parameterCount || size != sizeof(float) || format != 0) {
        host.told.push_back("nonsense for port " + std::to_string(port));
        return;
    }
    host.controls[port] = *static_cast<const float*>(bytes);
    host.told.push_back(std::to_string(port) + " = " + shortNumber(host.controls[port]));
}

void forge(LV2_Atom_Forge& forge, const Lv2Position::Number& number)
{
    std::visit(
        [&forge](auto value) {
            using T = decltype(value);
            if constexpr (std::is_same_v<T, float>)
                lv2_atom_forge_float(&forge, value);
            else if constexpr (std::is_same_v<T, double>)
                lv2_atom_forge_double(&forge, value);
            else if constexpr (std::is_same_v<T, std::int32_t>)
                lv2_atom_forge_int(&forge, value);
            else
                lv2_atom_forge_long(&forge, value);
        },
        number);
}

} // namespace

Lv2Library::Lv2Library()
{
    handle = dlopen(VELOTRINE_LV2, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr)
        throw std::runtime_error(dlerror());
    pluginAt = reinterpret_cast<LV2_Descriptor_Function>(dlsym(handle, "lv2_descriptor"));
    uiAt = reinterpret_cast<LV2UI_DescriptorFunction>(dlsym(handle, "lv2ui_descriptor"));
    if (pluginAt == nullptr || uiAt == nullptr)
        throw std::runtime_error("the LV2 file does not export both of its functions");
}

Lv2Library::~Lv2Library()
{
    dlclose(handle);
}

Lv2Position positionOf(std::int64_t frame, const HostTransport& transport)
{
    // Hosts say it as a whole number; nonsense need not be one.
    Lv2Position::Number beatUnit = transport.beatUnit;
    if (std::abs(transport.beatUnit) < 1e9)
        beatUnit = static_cast<std::int32_t>(transport.beatUnit);
    return {frame,
            {{LV2_TIME__frame, frame},
             {LV2_TIME__speed, transport.isPlaying ? 1.0f : 0.0f},
             {LV2_TIME__bar, std::int64_t{3}},
             {LV2_TIME__barBeat, 1.5f},
             {LV2_TIME__beatUnit, beatUnit},
             {LV2_TIME__beatsPerBar, static_cast<float>(transport.beatsPerBar)},
             {LV2_TIME__beatsPerMinute, static_cast<float>(transport.tempo)}}};
}

Lv2Host::Lv2Host(const Lv2Library& library, double sampleRate, const Features& without)
    : descriptor(*library.plugin(0)), uiDescriptor(*library.ui(0)), missing(without)
{
    map = {this, [](LV2_URID_Map_Handle handle, const char* uri) { return self(handle).idOf(uri); }};
    log = {this, printToLog, writeToLog};
    resize = {this, [](LV2UI_Feature_Handle handle, int width, int height) {
                  self(handle).wantedSizes.emplace_back(width, height);
                  return 0;
              }};
    touch = {this, [](LV2UI_Feature_Handle handle, std::uint32_t port, bool isGrabbed) {
                 self(handle).told.push_back((isGrabbed ? "begin " : "end ") + std::to_string(port));
             }};
    for (const auto& parameter : parameterTable())
        controls[parameter.address] = parameter.initialValue;
    plugin = descriptor.instantiate(&descriptor, sampleRate, "/nowhere/", features().data());
    for (std::uint32_t port = 0; port < parameterCount && plugin != nullptr; ++port)
        connect(port, &controls[port]);
}

Lv2Host::~Lv2Host()
{
    closeUi();
    stop();
    if (plugin != nullptr)
        descriptor.cleanup(plugin);
}

std::vector<const LV2_Feature*> Lv2Host::features() const
{
    const auto data = [](const auto* pointer) {
        return const_cast<void*>(static_cast<const void*>(pointer));
    };
    given = {{{LV2_URID__map, data(&map)},
              {LV2_LOG__log, data(&log)},
              {LV2_INSTANCE_ACCESS_URI, plugin},
              // NOLINTNEXTLINE(performance-no-int-to-ptr): the format's way
              {LV2_UI__parent, reinterpret_cast<void*>(parent)},
              {LV2_UI__resize, data(&resize)},
              {LV2_UI__touch, data(&touch)},
              {LV2_OPTIONS__options, data(options.data())},
              {LV2_UI__idleInterface, nullptr}}};
    std::vector<const LV2_Feature*> list;
    for (const auto& feature : given)
        if (std::ranges::find(missing, feature.URI) == missing.end())
            list.push_back(&feature);
    list.push_back(nullptr);
    return list;
}

LV2_URID Lv2Host::idOf(const char* uri)
{
    const std::scoped_lock lock(idsMutex);
    const auto next = static_cast<LV2_URID>(ids.size() + 1);
    return ids.emplace(uri, next).first->second;
}

void Lv2Host::connect(std::uint32_t port, void* data)
{
    descriptor.connect_port(plugin, port, data);
}

void Lv2Host::start()
{
    descriptor.activate(plugin);
    isRunning = true;
}

void Lv2Host::stop()
{
    if (isRunning)
        deactivate();
}

void Lv2Host::deactivate()
{
    descriptor.deactivate(plugin);
    isRunning = false;
}

void Lv2Host::run(std::uint32_t frames)
{
    descriptor.run(plugin, frames);
}

void Lv2Host::run(float* left, float* right, std::uint32_t frames, const std::vector<Lv2Position>& positions)
{
    auto sequence = sequenceOf(positions);
    connect(lv2Port::left, left);
    connect(lv2Port::right, right);
    connect(lv2Port::time, sequence.data());
    run(frames);
    connect(lv2Port::time, nullptr);
}

void Lv2Host::runUnheard(std::uint32_t frames)
{
    Sound sound(static_cast<int>(frames));
    run(sound.left.data(), sound.right.data(), frames);
}

std::vector<std::uint64_t> Lv2Host::sequenceOf(const std::vector<Lv2Position>& positions)
{
    constexpr std::size_t wordsEach = 60;
    std::vector<std::uint64_t> words(wordsEach * (positions.size() + 1));
    LV2_Atom_Forge atoms{};
    lv2_atom_forge_init(&atoms, &map);
    lv2_atom_forge_set_buffer(&atoms, reinterpret_cast<std::uint8_t*>(words.data()),
                              words.size() * sizeof words[0]);
    LV2_Atom_Forge_Frame sequence{};
    lv2_atom_forge_sequence_head(&atoms, &sequence, 0);
    for (const auto& position : positions) {
        LV2_Atom_Forge_Frame object{};
        lv2_atom_forge_frame_time(&atoms, position.frame);
        lv2_atom_forge_object(&atoms, &object, 0, idOf(LV2_TIME__Position));
        for (const auto& [uri, number] : position.says) {
            lv2_atom_forge_key(&atoms, idOf(uri.c_str()));
            forge(atoms, number);
        }
        lv2_atom_forge_pop(&atoms, &object);
    }
    lv2_atom_forge_pop(&atoms, &sequence);
    return words;
}

std::string Lv2Host::save() const
{
    std::string text;
    const auto& state =
        *static_cast<const LV2_State_Interface*>(descriptor.extension_data(LV2_STATE__interface));
    const auto status = state.save(
        plugin,
        [](LV2_State_Handle handle, std::uint32_t, const void* bytes, std::size_t size, std::uint32_t,
           std::uint32_t) {
            static_cast<std::string*>(handle)->assign(static_cast<const char*>(bytes), size);
            return LV2_STATE_SUCCESS;
        },
        &text, LV2_STATE_IS_POD, nullptr);
    if (status != LV2_STATE_SUCCESS || text.empty() || text.back() != '\0')
        throw std::runtime_error("no text was saved");
    text.pop_back();
    return text;
}

LV2_State_Status Lv2Host::restore(const std::string& text)
{
    return restore(text + '\0', LV2_ATOM__String);
}

LV2_State_Status Lv2Host::restore(const std::optional<std::string>& bytes, const char* type)
{
    struct Source
    {
        LV2_URID key;
        LV2_URID type;
        const std::optional<std::string>& bytes;
    };

    Source source{idOf(lv2StateUri), idOf(type), bytes};
    const auto& state =
        *static_cast<const LV2_State_Interface*>(descriptor.extension_data(LV2_STATE__interface));
    return state.restore(
        plugin,
        [](LV2_State_Handle handle, std::uint32_t key, std::size_t* size, std::uint32_t* typeFound,
           std::uint32_t* flags) -> const void* {
            const auto& found = *static_cast<const Source*>(handle);
            if (key != found.key || !found.bytes)
                return nullptr;
            *size = found.bytes->size();
            *typeFound = found.type;
            *flags = LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE;
            return found.bytes->data();
        },
        &source, 0, nullptr);
}

bool Lv2Host::openUi(unsigned long parentWindow, std::optional<float> scale)
{
    closeUi();
    parent = parentWindow;
    wantedScale = scale.value_or(0.0f);
    options = {};
    if (scale)
        options[0] = {LV2_OPTIONS_INSTANCE,  0,           idOf(LV2_UI__scaleFactor), sizeof(float),
                      idOf(LV2_ATOM__Float), &wantedScale};
    LV2UI_Widget widget = nullptr;
    ui = uiDescriptor.instantiate(&uiDescriptor, lv2PluginUri, "/nowhere/", writeFromUi, this, &widget,
                                  features().data());
    uiWindow = reinterpret_cast<unsigned long>(widget);
    return ui != nullptr;
}

void Lv2Host::closeUi()
{
    if (ui != nullptr)
        uiDescriptor.cleanup(ui);
    ui = nullptr;
}

void Lv2Host::idle(std::chrono::milliseconds duration)
{
    using Clock = std::chrono::steady_clock;
    const auto& idleInterface =
        *static_cast<const LV2UI_Idle_Interface*>(uiDescriptor.extension_data(LV2_UI__idleInterface));
    for (const auto end = Clock::now() + duration; Clock::now() < end;) {
        if (isRunning && runsPluginWhileIdle)
            runUnheard(256);
        if (idleInterface.idle(ui) != 0)
            throw std::runtime_error("the editor has closed itself");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void Lv2Host::showPort(std::uint32_t port, float value)
{
    uiDescriptor.port_event(ui, port, sizeof value, 0, &value);
}

bool Lv2Host::resizeUi(int width, int height)
{
    const auto* const interface =
        static_cast<const LV2UI_Resize*>(uiDescriptor.extension_data(LV2_UI__resize));
    return interface->ui_resize(ui, width, height) == 0;
}

} // namespace velotrine
