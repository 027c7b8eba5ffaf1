#include "editor/ParameterWriter.h"

#include "audiounit/Parameters.h"
#include "engine/FatalError.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace velotrine {

ParameterWriter::~ParameterWriter()
{
    if (gesture)
        endGesture(*gesture);
}

std::int64_t wholeNumber(float value)
{
    if (!(std::abs(value) < static_cast<float>(std::numeric_limits<std::int64_t>::max())))
        fatalError("a parameter that counts something holds no whole number");
    return static_cast<std::int64_t>(value);
}

int boundedIndex(float value, std::size_t count)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(wholeNumber(value), 0, static_cast<std::int64_t>(count) - 1));
}

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

float ParameterWriter::value(ParameterAddress address) const
{
    return value(address, parameterTable().at(address).initialValue);
}

void ParameterWriter::write(AUParameterAddress address, float value)
{
    if (gesture == address) {
        valueWritten = value;
        correct(address, value);
        return;
    }
    const auto before = this->value(address, value);
    announce(address, AUParameterAutomationEventType::touch);
    correct(address, value);
    announce(address, AUParameterAutomationEventType::release);
    if (onEdited)
        onEdited(address, before, value);
}

void ParameterWriter::correct(AUParameterAddress address, float value)
{
    if (const auto parameter = parameterAt(address))
        parameter->setValue(value);
}

void ParameterWriter::beginGesture(AUParameterAddress address)
{
    gesture = address;
    valueBefore = value(address, 0.0f);
    valueWritten.reset();
    announce(address, AUParameterAutomationEventType::touch);
}

void ParameterWriter::endGesture(AUParameterAddress address)
{
    gesture.reset();
    announce(address, AUParameterAutomationEventType::release);
    if (const auto after = std::exchange(valueWritten, std::nullopt); after && onEdited)
        onEdited(address, valueBefore, *after);
}

void ParameterWriter::announce(AUParameterAddress address, AUParameterAutomationEventType type)
{
    if (const auto parameter = parameterAt(address))
        parameter->announce(type);
}

} // namespace velotrine
