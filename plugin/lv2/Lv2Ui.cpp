#include "plugin/lv2/Lv2Ui.h"

#include "plugin/HostCall.h"
#include "plugin/lv2/Lv2Features.h"

#include <lv2/atom/atom.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace velotrine {

namespace {

constexpr std::uint32_t plainFloat = 0; ///< the format of a control port's value

} // namespace

Lv2Ui::Lv2Ui(Lv2Plugin& plugin, const Port& port)
    : lv2Plugin(plugin), hostPort(port), embedded(plugin.embeddedEditor())
{
    lv2Plugin.setEditorHost(this);
}

Lv2Ui::~Lv2Ui()
{
    embedded.close();
    lv2Plugin.setEditorHost(nullptr);
}

bool Lv2Ui::open(unsigned long parentWindow, double scale)
{
    embedded.open();
    embedded.setScale(scale);
    if (!embedded.attach(parentWindow))
        return false;
    embedded.setVisible(true);
    return true;
}

void Lv2Ui::idle()
{
    embedded.pump();
    writeStalePorts();
}

void Lv2Ui::showPort(std::uint32_t port, float value) noexcept
{
    if (port < parameterCount)
        lv2Plugin.showPort(port, value);
}

void Lv2Ui::writeStalePorts()
{
    const auto& ports = lv2Plugin.controlPorts();
    const auto states = ports.settledStates();
    if (states == knownStates)
        return;
    knownStates = states;
    for (ParameterAddress address = 0; address < parameterCount; ++address) {
        const auto value = lv2Plugin.hostedInstrument().value(address);
        if (ports.isStale(address, value))
            valueChanged(address, value);
    }
}

void Lv2Ui::beginGesture(ParameterAddress address)
{
    if (hostPort.touch != nullptr)
        hostPort.touch->touch(hostPort.touch->handle, static_cast<std::uint32_t>(address), true);
}

void Lv2Ui::valueChanged(ParameterAddress address, float value)
{
    hostPort.write(hostPort.controller, static_cast<std::uint32_t>(address), sizeof value, plainFloat,
                   &value);
}

void Lv2Ui::endGesture(ParameterAddress address)
{
    if (hostPort.touch != nullptr)
        hostPort.touch->touch(hostPort.touch->handle, static_cast<std::uint32_t>(address), false);
}

namespace {

/// For each of the format's functions.
Lv2Ui& ui(LV2UI_Handle handle)
{
    auto& called = *static_cast<Lv2Ui*>(handle);
    called.home.check("an LV2 host calls its editor on another thread than the one that made it");
    return called;
}

/// Pixels for each point, as far as the host knows; else 0.
double scaleOf(const LV2_Feature* const* features)
{
    const auto* const map = lv2Feature<LV2_URID_Map>(features, LV2_URID__map);
    const auto* option = lv2Feature<const LV2_Options_Option>(features, LV2_OPTIONS__options);
    if (map == nullptr || option == nullptr)
        return 0.0;
    const auto scaleFactor = map->map(map->handle, LV2_UI__scaleFactor);
    const auto floating = map->map(map->handle, LV2_ATOM__Float);
    for (; option->key != 0 || option->value != nullptr; ++option)
        if (option->key == scaleFactor && option->type == floating && option->size == sizeof(float))
            return static_cast<double>(*static_cast<const float*>(option->value));
    return 0.0;
}

LV2UI_Handle openUi(Lv2Plugin& plugin, const Lv2Ui::Port& port, unsigned long parent, LV2UI_Widget* widget,
                    const LV2_Feature* const* features)
{
    auto opened = std::make_unique<Lv2Ui>(plugin, port);
    if (!opened->open(parent, scaleOf(features)))
        return nullptr;
    *widget = reinterpret_cast<LV2UI_Widget>(opened->editor().ownWindow());
    if (const auto* const resize = lv2Feature<LV2UI_Resize>(features, LV2_UI__resize)) {
        const auto size = opened->editor().size();
        resize->ui_resize(resize->handle, size.width, size.height);
    }
    return opened.release(); // the host cleans it up
}

LV2UI_Handle make(const char* pluginUri, LV2UI_Write_Function write, LV2UI_Controller controller,
                  LV2UI_Widget* widget, const LV2_Feature* const* features)
{
    const Lv2Log log(features);
    const auto refuse = [&log](const char* reason) {
        log.error(std::string("The editor cannot be shown: ") + reason + ".");
        return nullptr;
    };
    auto* const plugin = lv2Feature<Lv2Plugin>(features, LV2_INSTANCE_ACCESS_URI);
    const auto parent = reinterpret_cast<unsigned long>(lv2Feature<void>(features, LV2_UI__parent));
    if (pluginUri == nullptr || std::string_view(pluginUri) != lv2PluginUri)
        return refuse("it belongs to another plug-in");
    if (plugin == nullptr)
        return refuse("the host does not offer " LV2_INSTANCE_ACCESS_URI);
    if (parent == 0)
        return refuse("the host does not offer a window, " LV2_UI__parent);
    if (write == nullptr || widget == nullptr)
        return refuse("the host takes nothing from it");
    if (plugin->hasEditor())
        return refuse("it is already open");
    if (!EmbeddedEditor::hasDisplay())
        return refuse("there is no X server");
    const Lv2Ui::Port port{write, controller, lv2Feature<LV2UI_Touch>(features, LV2_UI__touch)};
    auto* const opened = openUi(*plugin, port, parent, widget, features);
    return opened != nullptr ? opened : refuse("the host's window does not take it");
}

LV2UI_Handle instantiate(const LV2UI_Descriptor*, const char* pluginUri, const char*,
                         LV2UI_Write_Function write, LV2UI_Controller controller, LV2UI_Widget* widget,
                         const LV2_Feature* const* features)
{
    return answerOrNothing([&] { return make(pluginUri, write, controller, widget, features); });
}

void showPort(LV2UI_Handle handle, std::uint32_t port, std::uint32_t size, std::uint32_t format,
              const void* bytes)
{
    float value = 0.0f;
    if (format != plainFloat || size != sizeof value || bytes == nullptr)
        return;
    std::memcpy(&value, bytes, sizeof value);
    ui(handle).showPort(port, value);
}

constexpr LV2UI_Idle_Interface idleInterface{.idle = [](LV2UI_Handle handle) {
    answerOrNothing([handle] { ui(handle).idle(); });
    return 0; // whatever went wrong, the window stays
}};

constexpr LV2UI_Resize resizeInterface{.handle = nullptr,
                                       .ui_resize = [](LV2UI_Feature_Handle handle, int width, int height) {
                                           return answerOr(1, [&] {
                                               ui(handle).editor().setSize({width, height});
                                               return 0;
                                           });
                                       }};

const void* extensionData(const char* uri)
{
    const std::string_view name = uri != nullptr ? uri : "";
    if (name == LV2_UI__idleInterface)
        return &idleInterface;
    if (name == LV2_UI__resize)
        return &resizeInterface;
    return nullptr;
}

} // namespace

const LV2UI_Descriptor& lv2UiDescriptor() noexcept
{
    static constexpr LV2UI_Descriptor descriptor{.URI = lv2UiUri,
                                                 .instantiate = instantiate,
                                                 .cleanup = [](LV2UI_Handle handle) { delete &ui(handle); },
                                                 .port_event = showPort,
                                                 .extension_data = extensionData};
    return descriptor;
}

} // namespace velotrine
