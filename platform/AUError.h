#pragma once

#include "platform/AudioTypes.h"

#include <stdexcept>
#include <string>

namespace velotrine {

/// The one exception of the audio-unit framework: making, allocating or registering a unit did not work. Its
/// text is a sentence for a person. Nothing on the render path throws.
class AUError : public std::runtime_error
{
public:
    AUError(AUAudioUnitStatus status, const std::string& message) : std::runtime_error(message), code(status)
    {}

    [[nodiscard]] AUAudioUnitStatus status() const noexcept { return code; }

private:
    AUAudioUnitStatus code;
};

} // namespace velotrine
