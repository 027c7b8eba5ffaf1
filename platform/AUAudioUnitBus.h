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

    [[nodiscard]] const AVAudioFormat& format() const noexcept { return format_; }

    /// A new format takes effect when render resources are allocated next. Throws AUError like the
    /// constructor, and then the old format stays.
    void setFormat(const AVAudioFormat& format);

private:
    AVAudioFormat format_;
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
    /// @param owner  outlives the array
    AUAudioUnitBusArray(AUAudioUnit& owner, AUAudioUnitBusType type,
                        std::vector<std::shared_ptr<AUAudioUnitBus>> busses = {})
        : owner_(&owner), type_(type), busses_(std::move(busses))
    {}

    [[nodiscard]] AUAudioUnit& ownerAudioUnit() const noexcept { return *owner_; }

    [[nodiscard]] AUAudioUnitBusType busType() const noexcept { return type_; }

    [[nodiscard]] std::size_t count() const noexcept { return busses_.size(); }

    /// Throws AUError for an index that no bus has.
    [[nodiscard]] AUAudioUnitBus& operator[](std::size_t index) const;

private:
    AUAudioUnit* owner_;
    AUAudioUnitBusType type_;
    std::vector<std::shared_ptr<AUAudioUnitBus>> busses_;
};

} // namespace velotrine
