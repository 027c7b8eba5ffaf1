#include "tests/plugin/Vst3Host.h"

#include "tests/plugin/Vst3HostObjects.h"

#include <pluginterfaces/base/ipluginbase.h>
#include <pluginterfaces/gui/iplugview.h>
#include <pluginterfaces/gui/iplugviewcontentscalesupport.h>
#include <pluginterfaces/vst/ivstaudioprocessor.h>
#include <pluginterfaces/vst/ivstcomponent.h>
#include <pluginterfaces/vst/ivsteditcontroller.h>
#include <pluginterfaces/vst/ivstmessage.h>
#include <pluginterfaces/vst/ivstprocesscontext.h>
#include <pluginterfaces/vst/ivstunits.h>

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <poll.h>
#include <stdexcept>

namespace velotrine {

namespace {

using namespace Steinberg;
using namespace vst3;

std::string fromUtf16(const Vst::TChar* text)
{
    std::string ascii;
    for (; *text != 0; ++text)
        ascii += static_cast<char>(*text);
    return ascii;
}

template <typename Interface>
Interface* query(FUnknown* object, const TUID interfaceId)
{
    void* found = nullptr;
    if (object == nullptr || object->queryInterface(interfaceId, &found) != kResultOk)
        throw std::runtime_error("an interface is missing");
    return static_cast<Interface*>(found);
}

} // namespace

struct Vst3Host::Implementation
{
    using Exit = bool (*)();

    void* library = nullptr;
    IPluginFactory* factory = nullptr;
    HostApplication application;
    ComponentHandler handler;
    PlugFrame frame;
    Vst::IComponent* component = nullptr;
    Vst::IAudioProcessor* processor = nullptr;
    Vst::IEditController* controller = nullptr;
    Vst::IUnitInfo* units = nullptr;
    IPlugView* view = nullptr;
    bool isActive = false;
};

Vst3Host::Vst3Host() : self(std::make_unique<Implementation>())
{
    self->library = dlopen(VELOTRINE_VST3, RTLD_NOW | RTLD_LOCAL);
    if (self->library == nullptr)
        throw std::runtime_error(dlerror());
    using Entry = bool (*)(void*);
    using GetFactory = IPluginFactory*(PLUGIN_API*)();
    reinterpret_cast<Entry>(dlsym(self->library, "ModuleEntry"))(self->library);
    self->factory = reinterpret_cast<GetFactory>(dlsym(self->library, "GetPluginFactory"))();

    for (int32 i = 0; i < self->factory->countClasses(); ++i) {
        PClassInfo info;
        self->factory->getClassInfo(i, &info);
        void* made = nullptr;
        if (std::strcmp(info.category, kVstAudioEffectClass) == 0) {
            self->factory->createInstance(info.cid, Vst::IComponent_iid, &made);
            self->component = static_cast<Vst::IComponent*>(made);
        }
    }
    if (self->component == nullptr || self->component->initialize(&self->application) != kResultOk)
        throw std::runtime_error("the plug-in cannot be created");
    self->processor = query<Vst::IAudioProcessor>(self->component, Vst::IAudioProcessor_iid);

    TUID controllerId;
    void* made = nullptr;
    self->component->getControllerClassId(controllerId);
    self->factory->createInstance(controllerId, Vst::IEditController_iid, &made);
    self->controller = static_cast<Vst::IEditController*>(made);
    self->controller->initialize(&self->application);
    auto* const one = query<Vst::IConnectionPoint>(self->component, Vst::IConnectionPoint_iid);
    auto* const other = query<Vst::IConnectionPoint>(self->controller, Vst::IConnectionPoint_iid);
    one->connect(other);
    other->connect(one);
    one->release();
    other->release();
    self->units = query<Vst::IUnitInfo>(self->controller, Vst::IUnitInfo_iid);
    int index = 0;
    for (const auto& parameter : parameters())
        self->handler.indices[parameter.id] = index++;
    self->controller->setComponentHandler(&self->handler);
}

Vst3Host::~Vst3Host()
{
    close();
    stop();
    stopListening();
    self->units->release();
    self->controller->terminate();
    self->controller->release();
    self->processor->release();
    self->component->terminate();
    self->component->release();
    self->factory->release();
    reinterpret_cast<Implementation::Exit>(dlsym(self->library, "ModuleExit"))();
    dlclose(self->library);
}

std::string Vst3Host::category() const
{
    auto* const factory = query<IPluginFactory2>(self->factory, IPluginFactory2_iid);
    PClassInfo2 info;
    factory->getClassInfo2(0, &info);
    factory->release();
    return info.subCategories;
}

std::string Vst3Host::vendor() const
{
    PFactoryInfo info;
    self->factory->getFactoryInfo(&info);
    return info.vendor;
}

int Vst3Host::audioInputs() const
{
    return self->component->getBusCount(Vst::kAudio, Vst::kInput);
}

int Vst3Host::audioOutputs() const
{
    return self->component->getBusCount(Vst::kAudio, Vst::kOutput);
}

int Vst3Host::eventInputs() const
{
    return self->component->getBusCount(Vst::kEvent, Vst::kInput);
}

int Vst3Host::eventOutputs() const
{
    return self->component->getBusCount(Vst::kEvent, Vst::kOutput);
}

std::vector<Vst3Parameter> Vst3Host::parameters() const
{
    std::vector<Vst3Parameter> all;
    for (int32 i = 0; i < self->controller->getParameterCount(); ++i) {
        Vst::ParameterInfo info{};
        self->controller->getParameterInfo(i, info);
        all.push_back(
            {info.id, fromUtf16(info.title), info.stepCount, info.defaultNormalizedValue, info.flags});
    }
    return all;
}

double Vst3Host::value(std::uint32_t id) const
{
    return self->controller->getParamNormalized(id);
}

void Vst3Host::setValue(std::uint32_t id, double value) const
{
    self->controller->setParamNormalized(id, value);
}

std::string Vst3Host::text(std::uint32_t id, double value) const
{
    Vst::String128 text{};
    self->controller->getParamStringByValue(id, value, text);
    return fromUtf16(text);
}

std::optional<double> Vst3Host::valueOf(std::uint32_t id, const std::string& text) const
{
    Vst::String128 wide{};
    std::copy(text.begin(), text.end(), wide);
    Vst::ParamValue value = 0.0;
    if (self->controller->getParamValueByString(id, wide, value) != kResultOk)
        return std::nullopt;
    return value;
}

std::vector<std::string> Vst3Host::programs() const
{
    std::vector<std::string> names;
    Vst::ProgramListInfo list{};
    if (self->units->getProgramListInfo(0, list) != kResultOk)
        return names;
    for (int32 i = 0; i < list.programCount; ++i) {
        Vst::String128 name{};
        self->units->getProgramName(list.id, i, name);
        names.push_back(fromUtf16(name));
    }
    return names;
}

std::uint32_t Vst3Host::programParameter() const
{
    for (const auto& parameter : parameters())
        if ((parameter.flags & Vst::ParameterInfo::kIsProgramChange) != 0)
            return parameter.id;
    throw std::runtime_error("no program parameter");
}

bool Vst3Host::announce(double sampleRate, int maxFrames, bool isDouble) const
{
    Vst::ProcessSetup setup{Vst::kRealtime, isDouble ? Vst::kSample64 : Vst::kSample32, maxFrames,
                            sampleRate};
    return self->processor->setupProcessing(setup) == kResultOk;
}

bool Vst3Host::start(double sampleRate, int maxFrames)
{
    stop();
    if (!announce(sampleRate, maxFrames))
        return false;
    self->component->activateBus(Vst::kAudio, Vst::kOutput, 0, 1);
    self->isActive = self->component->setActive(1) == kResultOk;
    self->processor->setProcessing(1);
    return self->isActive;
}

void Vst3Host::stop()
{
    if (!self->isActive)
        return;
    self->processor->setProcessing(0);
    self->component->setActive(0);
    self->isActive = false;
}

void Vst3Host::setActive(bool isOn)
{
    self->component->setActive(isOn ? 1 : 0);
}

void Vst3Host::setProcessing(bool isOn)
{
    self->processor->setProcessing(isOn ? 1 : 0);
}

bool Vst3Host::process(float* left, float* right, int frames, const std::optional<HostTransport>& transport,
                       const std::vector<Vst3Automation>& automation)
{
    return process({.channels = {left, right}, .frames = frames}, transport, automation);
}

bool Vst3Host::process(const Vst3Block& block, const std::optional<HostTransport>& transport,
                       const std::vector<Vst3Automation>& automation)
{
    Call call;
    call.setOutput(block);
    call.setTransport(transport);
    for (const auto& change : automation)
        call.add(change);
    const auto isDone = process(call);
    lastNotes = call.notes();
    return isDone;
}

bool Vst3Host::process(Call& call)
{
    call.forgetNotes();
    const auto isDone = self->processor->process(call.data()) == kResultOk;
    call.clear();
    return isDone;
}

bool Vst3Host::takesStereo(bool hasList) const
{
    auto stereo = Vst::SpeakerArr::kStereo;
    return self->processor->setBusArrangements(nullptr, 0, hasList ? &stereo : nullptr, 1) == kResultOk;
}

std::string Vst3Host::save() const
{
    ByteStream stream;
    if (self->component->getState(&stream) != kResultOk)
        return {};
    return std::move(stream.bytes);
}

bool Vst3Host::load(const std::string& state) const
{
    ByteStream stream;
    stream.bytes = state;
    const auto isTaken = self->component->setState(&stream) == kResultOk;
    stream.position = 0;
    self->controller->setComponentState(&stream);
    return isTaken;
}

bool Vst3Host::open(unsigned long parentWindow, double scale)
{
    close();
    self->view = self->controller->createView(Vst::ViewType::kEditor);
    if (self->view == nullptr)
        return false;
    self->view->setFrame(&self->frame);
    auto* const scaling = query<IPlugViewContentScaleSupport>(self->view, IPlugViewContentScaleSupport_iid);
    scaling->setContentScaleFactor(static_cast<float>(scale));
    scaling->release();
    auto* const window =
        reinterpret_cast<void*>(parentWindow); // NOLINT(performance-no-int-to-ptr): the format's way
    return self->view->attached(window, kPlatformTypeX11EmbedWindowID) == kResultOk;
}

void Vst3Host::close()
{
    if (self->view == nullptr)
        return;
    self->view->removed();
    self->view->setFrame(nullptr);
    self->view->release();
    self->view = nullptr;
}

bool Vst3Host::resize(int width, int height) const
{
    ViewRect rect(0, 0, width, height);
    self->view->checkSizeConstraint(&rect);
    return self->view->onSize(&rect) == kResultOk;
}

std::pair<int, int> Vst3Host::size() const
{
    ViewRect rect;
    self->view->getSize(&rect);
    return {rect.getWidth(), rect.getHeight()};
}

void Vst3Host::runLoop(std::chrono::milliseconds duration)
{
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
        const auto handlers = self->frame.loop.handlers;
        std::vector<pollfd> watched;
        watched.reserve(handlers.size());
        for (const auto& [descriptor, each] : handlers)
            watched.push_back({.fd = descriptor, .events = POLLIN, .revents = 0});
        poll(watched.data(), watched.size(), 5);
        for (const auto& each : watched)
            if (each.revents != 0 && self->frame.loop.handlers.contains(each.fd))
                self->frame.loop.handlers.at(each.fd)->onFDIsSet(each.fd);
    }
}

void Vst3Host::onRestart(std::function<void()> action)
{
    self->handler.onRestart = std::move(action);
}

void Vst3Host::stopListening()
{
    self->controller->setComponentHandler(nullptr);
}

const std::vector<std::string>& Vst3Host::told() const
{
    return self->handler.told;
}

} // namespace velotrine
