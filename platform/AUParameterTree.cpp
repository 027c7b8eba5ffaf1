#include "platform/AUParameterTree.h"

#include "platform/AUError.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

namespace velotrine {

std::shared_ptr<AUParameter> AUParameterTree::createParameter(AUParameterDefinition definition)
{
    return std::make_shared<AUParameter>(std::move(definition));
}

std::shared_ptr<AUParameterTree> AUParameterTree::createTree(
    std::vector<std::shared_ptr<AUParameter>> children)
{
    std::set<AUParameterAddress> addresses;
    for (const auto& child : children)
        if (!addresses.insert(child->address()).second)
            throw AUError(kAudioUnitErr_InvalidParameter,
                          "Two parameters share the address " + std::to_string(child->address()) + ".");
    return std::shared_ptr<AUParameterTree>(new AUParameterTree(std::move(children)));
}

AUParameterTree::AUParameterTree(std::vector<std::shared_ptr<AUParameter>> newChildren)
    : children(std::move(newChildren))
{
    for (const auto& child : children) {
        child->closures = closures;
        child->hasHadTree = true;
    }
}

void AUParameterTree::setImplementorValueObserver(AUImplementorValueObserver observer)
{
    closures->implementorValueObserver = std::move(observer);
}

void AUParameterTree::setImplementorValueProvider(AUImplementorValueProvider provider)
{
    closures->implementorValueProvider = std::move(provider);
}

std::shared_ptr<AUParameter> AUParameterTree::parameterWithAddress(AUParameterAddress address) const noexcept
{
    const auto found =
        std::ranges::find_if(children, [address](const auto& child) { return child->address() == address; });
    return found != children.end() ? *found : nullptr;
}

void AUParameterTree::tellObserversOf(AUParameterAddress address, AUParameterObserverToken originator) const
{
    if (const auto parameter = parameterWithAddress(address))
        closures->observers.notify(originator,
                                   {0, address, parameter->value(), AUParameterAutomationEventType::value});
}

AUParameterObserverToken AUParameterTree::tokenByAddingParameterObserver(AUParameterObserver observer)
{
    return closures->observers.add([observer = std::move(observer)](const AUParameterAutomationEvent& event) {
        if (event.eventType == AUParameterAutomationEventType::value)
            observer(event.address, event.value);
    });
}

AUParameterObserverToken AUParameterTree::tokenByAddingParameterAutomationObserver(
    AUParameterAutomationObserver observer)
{
    return closures->observers.add(std::move(observer));
}

void AUParameterTree::removeParameterObserver(AUParameterObserverToken token)
{
    closures->observers.remove(token);
}

} // namespace velotrine
