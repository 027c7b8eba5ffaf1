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
    ownValue = value;
    const auto tree = closures.lock();
    if (!tree)
        return;
    if (tree->implementorValueObserver)
        tree->implementorValueObserver(*this, value);
    tree->observers.notify(originator, address(), value);
}

} // namespace velotrine
