#include "audiounit/VelotrineComponent.h"

#include "audiounit/VelotrineAudioUnit.h"
#include "platform/AudioComponentRegistry.h"

namespace velotrine {

AudioComponentDescription velotrineComponentDescription() noexcept
{
    return {.componentType = identity::componentType,
            .componentSubType = fourCharCode(identity::componentSubType),
            .componentManufacturer = fourCharCode(identity::componentMaker),
            .componentFlags = 0,
            .componentFlagsMask = 0};
}

void registerVelotrineComponent()
{
    const auto description = velotrineComponentDescription();
    if (!AudioComponentRegistry::shared().find(description))
        AUAudioUnit::registerSubclass<VelotrineAudioUnit>(description, velotrineComponentName,
                                                          velotrineComponentVersion);
}

} // namespace velotrine
