#include "editor/UnitObserver.h"

#include <utility>

namespace velotrine {

UnitObserver::UnitObserver(std::shared_ptr<AUAudioUnit> observedUnit,
                           const std::function<void(AddressSet)>& onChanged)
    : unit(std::move(observedUnit)), tree(unit->parameterTree())
{
    if (tree)
        parameterToken =
            tree->tokenByAddingParameterObserver([onChanged](AUParameterAddress address, AUValue) {
                if (address < parameterCount)
                    onChanged(AddressSet(address));
            });
    const auto onAllChanged = [onChanged] { onChanged(AddressSet::all()); };
    fullStateToken = unit->addPropertyObserver(AUProperty::fullState, onAllChanged);
    currentPresetToken = unit->addPropertyObserver(AUProperty::currentPreset, onAllChanged);
}

UnitObserver::~UnitObserver()
{
    if (tree)
        tree->removeParameterObserver(parameterToken);
    unit->removePropertyObserver(AUProperty::fullState, fullStateToken);
    unit->removePropertyObserver(AUProperty::currentPreset, currentPresetToken);
}

} // namespace velotrine
