#include "plugin/lv2/ControlPorts.h"

#include "audiounit/Parameters.h"
#include "plugin/HostValue.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

bool rounds(float port, float value) noexcept
{
    constexpr float precision = 1e-6f;
    return std::abs(port - value) <= precision * std::max(1.0f, std::abs(value));
}

} // namespace

ControlPorts::ControlPorts()
{
    for (const auto& parameter : parameterTable())
        lastValues[parameter.address] = parameter.initialValue;
}

void ControlPorts::applyTo(HostedInstrument& instrument) noexcept VELOTRINE_NONBLOCKING
{
    const auto states = restored.load();
    for (ParameterAddress address = 0; address < parameterCount; ++address)
        if (connected[address] != nullptr)
            apply(address, *connected[address], instrument);
    settled = states;
}

void ControlPorts::apply(ParameterAddress address, float port,
                         HostedInstrument& instrument) noexcept VELOTRINE_NONBLOCKING
{
    if (lastValues[address] == port)
        return;
    lastValues[address] = port;
    const bool isPending = restored != settled;
    if (held.contains(address) || (isPending && rounds(port, instrument.value(address))))
        return;
    instrument.setValue(address, static_cast<double>(port));
}

bool ControlPorts::isStale(ParameterAddress address, float value) const noexcept
{
    return value != valueFromHost(address, static_cast<double>(lastValues[address].load()));
}

} // namespace velotrine
