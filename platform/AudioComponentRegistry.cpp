#include "platform/AudioComponentRegistry.h"

#include "platform/AUError.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace velotrine {

namespace {

auto identityOf(const AudioComponentDescription& description)
{
    return std::tuple(description.componentType, description.componentSubType,
                      description.componentManufacturer);
}

} // namespace

AudioComponentRegistry& AudioComponentRegistry::shared()
{
    static AudioComponentRegistry registry;
    return registry;
}

void AudioComponentRegistry::add(Component component)
{
    const std::scoped_lock lock(mutex);
    if (lookUp(component.description) != nullptr)
        throw AUError(kAudioComponentErr_DuplicateDescription,
                      "An audio unit is registered under this description already.");
    components.push_back(std::move(component));
}

std::optional<AudioComponentRegistry::Component> AudioComponentRegistry::find(
    const AudioComponentDescription& description) const
{
    const std::scoped_lock lock(mutex);
    const auto* const component = lookUp(description);
    return component != nullptr ? std::optional(*component) : std::nullopt;
}

const AudioComponentRegistry::Component* AudioComponentRegistry::lookUp(
    const AudioComponentDescription& description) const
{
    const auto found = std::ranges::find_if(components, [&description](const auto& component) {
        return identityOf(component.description) == identityOf(description);
    });
    return found != components.end() ? &*found : nullptr;
}

} // namespace velotrine
