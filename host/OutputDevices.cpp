#include "host/OutputDevices.h"

#include <algorithm>

#if JUCE_LINUX
#include <dlfcn.h>
#endif

namespace velotrine {

namespace {

#if JUCE_LINUX
/// Without this, libjack complains on standard error at each look that no server runs.
void silenceJackMessages()
{
    using MessageFunction = void (*)(const char*);
    using Setter = void (*)(MessageFunction);
    auto* const library = ::dlopen("libjack.so.0", RTLD_LAZY);
    if (library == nullptr)
        return;
    for (const auto* const name : {"jack_set_error_function", "jack_set_info_function"})
        if (const auto set = reinterpret_cast<Setter>(::dlsym(library, name)))
            set([](const char*) {});
}
#endif

} // namespace

DeviceTypes systemDeviceTypes()
{
#if JUCE_LINUX
    silenceJackMessages();
#endif
    DeviceTypes types;
    for (auto* const type : {juce::AudioIODeviceType::createAudioIODeviceType_JACK(),
                             juce::AudioIODeviceType::createAudioIODeviceType_ALSA(),
                             juce::AudioIODeviceType::createAudioIODeviceType_CoreAudio()})
        if (type != nullptr)
            types.emplace_back(type);
    return types;
}

std::vector<OutputDevice> outputDevices(const DeviceTypes& types)
{
    std::vector<OutputDevice> devices;
    for (const auto& type : types) {
        type->scanForDevices();
        const auto names = type->getDeviceNames(false);
        const auto defaultIndex = type->getDefaultDeviceIndex(false);
        const auto firstOfType = devices.size();
        for (int index = 0; index < names.size(); ++index) {
            OutputDevice device{type->getTypeName().toStdString(), names[index].toStdString()};
            const auto place = index == defaultIndex ? firstOfType : devices.size();
            devices.insert(devices.begin() + static_cast<std::ptrdiff_t>(place), std::move(device));
        }
    }
    return devices;
}

} // namespace velotrine
