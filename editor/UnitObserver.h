#pragma once

#include "engine/AddressSet.h"
#include "platform/AUAudioUnit.h"

#include <functional>
#include <memory>

namespace velotrine {

/// Hears which parameters of an audio unit change, one by one or with a preset or a state, for as long as it
/// lives. Made and destroyed on the main thread.
class UnitObserver
{
public:
    /// @param onChanged  called on whatever thread the change is made
    UnitObserver(std::shared_ptr<AUAudioUnit> observedUnit, const std::function<void(AddressSet)>& onChanged);
    ~UnitObserver();
    UnitObserver(const UnitObserver&) = delete;
    UnitObserver& operator=(const UnitObserver&) = delete;

private:
    std::shared_ptr<AUAudioUnit> unit;
    std::shared_ptr<AUParameterTree> tree; ///< the unit may get another, or has none
    AUParameterObserverToken parameterToken = 0;
    ObserverToken fullStateToken = 0;
    ObserverToken currentPresetToken = 0;
};

} // namespace velotrine
