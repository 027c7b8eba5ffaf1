#pragma once

#include "platform/AVAudioFormat.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace velotrine {

class AUAudioUnit;

/// One input or output connection of an audio unit. Main thread.
class AUAudioUnitBus
{
public:
    /// Throws AUError for a format that AVAudioFormat::standardFormat would not make.
    explicit AUAudioUnitBus(const AVAudioFormat& format);

    [[nodiscard]] const AVAudioFormat& format() const noexcept { return busFormat; }

    /// A new format takes effect when render resources are allocated next. Throws AUError like the
    /// constructor, and then the old format stays.
    void setFormat(const AVAudioFormat& format);

private:
    AVAudioFormat busFormat;
};

enum class AUAudioUnitBusType
{
    input = 1,
    output = 2,
};

/// The input or the output busses of an audio unit. Main thread.
class AUAudioUnitBusArray
{
public:
    /// @param newOwner  outlives the array
    AUAudioUnitBusArray(AUAudioUnit& newOwner, AUAudioUnitBusType newType,
                        std::vector<std::shared_ptr<AUAudioUnitBus>> newBusses = {})
        : owner(&newOwner), type(newType), busses(std::move(newBusses))
    {}

    [[nodiscard]] AUAudioUnit& ownerAudioUnit() const noexcept { return *owner; }

    [[nodiscard]] AUAudioUnitBusType busType() const noexcept { return type; }

    [[nodiscard]] std::size_t count() const noexcept { return busses.size(); }

    /// Throws AUError for an index that no bus has.
    [[nodiscard]] AUAudioUnitBus& operator[](std::size_t index) const;

private:
    AUAudioUnit* owner;
    AUAudioUnitBusType type;
    std::vector<std::shared_ptr<AUAudioUnitBus>> busses;
};

} // namespace velotrine
