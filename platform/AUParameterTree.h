#pragma once

#include "platform/AUParameter.h"

#include <memory>
#include <span>
#include <vector>

namespace velotrine {

/// All parameters of an audio unit, a flat list in the order given.
class AUParameterTree
{
public:
    [[nodiscard]] static std::shared_ptr<AUParameter> createParameter(AUParameterDefinition definition);

    /// Two parameters of one address throw AUError.
    [[nodiscard]] static std::shared_ptr<AUParameterTree> createTree(
        std::vector<std::shared_ptr<AUParameter>> children);

    /// Where written values go, and where read ones come from. Set both before another thread sees the tree.
    void setImplementorValueObserver(AUImplementorValueObserver observer);
    void setImplementorValueProvider(AUImplementorValueProvider provider);

    [[nodiscard]] std::span<const std::shared_ptr<AUParameter>> allParameters() const noexcept
    {
        return children_;
    }

    /// None for an address that no parameter has.
    [[nodiscard]] std::shared_ptr<AUParameter> parameterWithAddress(
        AUParameterAddress address) const noexcept;

    /// Tells the observers, except the originator, the value that a parameter has now. For a value that a
    /// render event has changed, of which they could not be told at the time. Nothing is written: a newer
    /// value stays. Nothing happens for an address that no parameter has.
    void tellObserversOf(AUParameterAddress address, AUParameterObserverToken originator = 0) const;

    /// The observer is told of every write but its own, on the writer's thread.
    [[nodiscard]] AUParameterObserverToken tokenByAddingParameterObserver(AUParameterObserver observer);

    /// The same, told also when a gesture begins and ends.
    [[nodiscard]] AUParameterObserverToken tokenByAddingParameterAutomationObserver(
        AUParameterAutomationObserver observer);

    /// Removes either kind.
    void removeParameterObserver(AUParameterObserverToken token);

private:
    explicit AUParameterTree(std::vector<std::shared_ptr<AUParameter>> children);

    std::vector<std::shared_ptr<AUParameter>> children_;
    std::shared_ptr<AUParameterClosures> closures = std::make_shared<AUParameterClosures>();
};

} // namespace velotrine
