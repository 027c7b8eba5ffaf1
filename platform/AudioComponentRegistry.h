#pragma once

#include "platform/AudioComponentDescription.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace velotrine {

class AUAudioUnit;

/// The audio-unit classes that this process knows. Any thread.
class AudioComponentRegistry
{
public:
    struct Component
    {
        AudioComponentDescription description;
        std::string name;
        std::uint32_t version = 0; ///< major, minor and bugfix in 16, 8 and 8 bits
        std::function<std::shared_ptr<AUAudioUnit>(const AudioComponentDescription&,
                                                   AudioComponentInstantiationOptions)>
            factory;
    };

    [[nodiscard]] static AudioComponentRegistry& shared();

    /// Throws AUError when a component of the same type, subtype and manufacturer is there already.
    void add(Component component);

    /// The component of the same type, subtype and manufacturer, if there is one.
    [[nodiscard]] std::optional<Component> find(const AudioComponentDescription& description) const;

private:
    const Component* lookUp(const AudioComponentDescription& description) const;

    mutable std::mutex mutex;
    std::vector<Component> components;
};

} // namespace velotrine
