#include "platform/AUParameter.h"

namespace velotrine {

AUValue AUParameter::value() const
{
    const auto tree = closures.lock();
    if (!tree && hasHadTree)
        return 0.0f;
    if (tree && tree->implementorValueProvider)
        return tree->implementorValueProvider(*this);
    return ownValue;
}

void AUParameter::setValue(AUValue value, AUParameterObserverToken originator)
{
    setValue(value, originator, 0, AUParameterAutomationEventType::value);
}

void AUParameter::setValue(AUValue value, AUParameterObserverToken originator, std::uint64_t hostTime,
                           AUParameterAutomationEventType eventType)
{
    ownValue = value;
    const auto tree = closures.lock();
    if (!tree)
        return;
    if (tree->implementorValueObserver)
        tree->implementorValueObserver(*this, value);
    tree->observers.notify(originator, {hostTime, address(), value, eventType});
}

void AUParameter::announce(AUParameterAutomationEventType eventType)
{
    if (const auto tree = closures.lock())
        tree->observers.notify(0, {0, address(), value(), eventType});
}

} // namespace velotrine
