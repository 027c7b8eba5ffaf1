#pragma once

#include "platform/AUAudioUnit.h"

#include <functional>
#include <memory>
#include <optional>

namespace velotrine {

/// An audio unit as a node of an AVAudioEngine.
class AVAudioUnit
{
public:
    using Completion = std::function<void(std::shared_ptr<AVAudioUnit>, std::optional<AUError>)>;

    /// Makes the unit that is registered under the description and hands a node around it to the completion,
    /// before it returns and on the caller's thread; on failure no node and the error.
    static void instantiate(const AudioComponentDescription& description,
                            AudioComponentInstantiationOptions options, const Completion& completion);

    /// @param unit  not empty
    explicit AVAudioUnit(std::shared_ptr<AUAudioUnit> unit);

    /// Never empty.
    [[nodiscard]] const std::shared_ptr<AUAudioUnit>& audioUnit() const noexcept { return unit_; }

private:
    std::shared_ptr<AUAudioUnit> unit_;
};

} // namespace velotrine
