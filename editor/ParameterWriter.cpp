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
    send(address, value, AUParameterAutomationEventType::value);
    if (!isHeld)
        letGo(address);
}

void ParameterWriter::correct(AUParameterAddress address, float value)
{
    send(address, value, AUParameterAutomationEventType::value);
}

void ParameterWriter::hold(AUParameterAddress address)
{
    held = address;
    send(address, std::nullopt, AUParameterAutomationEventType::touch);
}

void ParameterWriter::letGo(AUParameterAddress address)
{
    held.reset();
    send(address, std::nullopt, AUParameterAutomationEventType::release);
}

/// Without a value, the event carries the present one.
void ParameterWriter::send(AUParameterAddress address, std::optional<float> value,
                           AUParameterAutomationEventType type)
{
    if (const auto parameter = parameterAt(address))
        parameter->setValue(value.value_or(parameter->value()), 0, 0, type);
}

} // namespace velotrine
