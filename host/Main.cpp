#include "host/AppDelegate.h"
#include "host/HostOptions.h"
#include "host/Manual.h"

#include <iostream>
#include <span>
#include <variant>

namespace {

using namespace velotrine;

int finish(const ProgramEnd& end)
{
    std::cout << end.out;
    std::cerr << end.err;
    return end.exitCode;
}

HostOptions& applicationOptions()
{
    static HostOptions options;
    return options;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<const char*> arguments(argv, argv + argc);
    const auto understood = parseHostOptions(arguments);
    if (const auto* end = std::get_if<ProgramEnd>(&understood))
        return finish(*end);

    const auto& options = std::get<HostOptions>(understood);
    if (options.manual)
        return finish(openManual(options, installedManual()));
    if (options.listDevices || options.device.deviceName) {
        const auto devices = outputDevices(systemDeviceTypes());
        if (options.listDevices)
            return finish(deviceListing(options, devices));
        if (const auto end = refuseUnknownDevice(options, devices))
            return finish(*end);
    }

    if (const auto end = refuseSession(options))
        return finish(*end);

    applicationOptions() = options;
    juce::JUCEApplicationBase::createInstance = []() -> juce::JUCEApplicationBase* {
        return new AppDelegate(applicationOptions());
    };
    return juce::JUCEApplicationBase::main(argc, const_cast<const char**>(argv));
}
