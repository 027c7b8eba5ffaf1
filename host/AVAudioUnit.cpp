#include "host/AVAudioUnit.h"

#include "engine/FatalError.h"

#include <utility>

namespace velotrine {

void AVAudioUnit::instantiate(const AudioComponentDescription& description,
                              AudioComponentInstantiationOptions options, const Completion& completion)
{
    AUAudioUnit::instantiate(
        description, options,
        [&completion](std::shared_ptr<AUAudioUnit> unit, const std::optional<AUError>& error) {
            completion(unit ? std::make_shared<AVAudioUnit>(std::move(unit)) : nullptr, error);
        });
}

AVAudioUnit::AVAudioUnit(std::shared_ptr<AUAudioUnit> unit) : unit_(std::move(unit))
{
    if (!unit_)
        fatalError("AVAudioUnit: a node without an audio unit");
}

} // namespace velotrine
