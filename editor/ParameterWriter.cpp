#include "editor/ParameterWriter.h"

namespace velotrine {

std::shared_ptr<AUParameter> ParameterWriter::parameterAt(AUParameterAddress address) const
{
    const auto tree = treeNow();
    return tree ? tree->parameterWithAddress(address) : nullptr;
}

float ParameterWriter::value(AUParameterAddress address, float missing) const
{
    const auto parameter = parameterAt(address);
    return parameter ? parameter->value() : missing;
}

void ParameterWriter::write(AUParameterAddress address, float value)
{
    const auto isHeld = held == address;
    if (!isHeld)
        hold(address);
    correct(address, value);
    if (!isHeld)
        letGo(address);
}

void ParameterWriter::correct(AUParameterAddress address, float value)
{
    if (const auto parameter = parameterAt(address))
        parameter->setValue(value);
}

void ParameterWriter::hold(AUParameterAddress address)
{
    held = address;
    announce(address, AUParameterAutomationEventType::touch);
}

void ParameterWriter::letGo(AUParameterAddress address)
{
    held.reset();
    announce(address, AUParameterAutomationEventType::release);
}

void ParameterWriter::announce(AUParameterAddress address, AUParameterAutomationEventType type)
{
    if (const auto parameter = parameterAt(address))
        parameter->announce(type);
}

} // namespace velotrine
