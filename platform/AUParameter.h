#pragma once

#include "platform/AudioTypes.h"
#include "platform/ObserverList.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velotrine {

class AUParameter;

enum class AudioUnitParameterUnit : std::uint32_t
{
    generic = 0,
    indexed = 1,
    boolean = 2,
    bpm = 22,
};

using AudioUnitParameterOptions = std::uint32_t;

inline constexpr AudioUnitParameterOptions kAudioUnitParameterFlag_CanRamp = 0x02000000;
inline constexpr AudioUnitParameterOptions kAudioUnitParameterFlag_IsReadable = 0x40000000;
inline constexpr AudioUnitParameterOptions kAudioUnitParameterFlag_IsWritable = 0x80000000;

/// What an automation event says: a value, or that a gesture on the control begins (touch) or ends (release).
enum class AUParameterAutomationEventType : std::uint32_t
{
    value = 0,
    touch = 1,
    release = 2,
};

struct AUParameterAutomationEvent
{
    std::uint64_t hostTime = 0; ///< HostClock ticks; 0 is now
    AUParameterAddress address = 0;
    AUValue value = 0.0f;
    AUParameterAutomationEventType eventType = AUParameterAutomationEventType::value;
};

using AUParameterObserverToken = ObserverToken;
using AUParameterAutomationObserver = std::function<void(const AUParameterAutomationEvent&)>;
using AUParameterObserver = std::function<void(AUParameterAddress, AUValue)>;
using AUImplementorValueObserver = std::function<void(const AUParameter&, AUValue)>;
using AUImplementorValueProvider = std::function<AUValue(const AUParameter&)>;

/// What a parameter is, fixed for its life.
struct AUParameterDefinition
{
    std::string identifier;
    std::string name;
    AUParameterAddress address = 0;
    AUValue minValue = 0.0f;
    AUValue maxValue = 1.0f;
    AudioUnitParameterUnit unit = AudioUnitParameterUnit::generic;
    std::string unitName;
    AudioUnitParameterOptions flags = 0;
    std::vector<std::string> valueStrings;
    std::vector<AUParameterAddress> dependentParameters;
};

/// What the parameters of one tree share with it.
struct AUParameterClosures
{
    AUImplementorValueObserver implementorValueObserver;
    AUImplementorValueProvider implementorValueProvider;
    ObserverList<const AUParameterAutomationEvent&> observers;
};

/// One setting of an audio unit. Reading and writing: any thread but the render thread, for which there are
/// events.
class AUParameter
{
public:
    explicit AUParameter(AUParameterDefinition definition) : definition_(std::move(definition)) {}

    [[nodiscard]] const std::string& identifier() const noexcept { return definition_.identifier; }

    [[nodiscard]] const std::string& displayName() const noexcept { return definition_.name; }

    [[nodiscard]] AUParameterAddress address() const noexcept { return definition_.address; }

    [[nodiscard]] AUValue minValue() const noexcept { return definition_.minValue; }

    [[nodiscard]] AUValue maxValue() const noexcept { return definition_.maxValue; }

    [[nodiscard]] AudioUnitParameterUnit unit() const noexcept { return definition_.unit; }

    [[nodiscard]] const std::string& unitName() const noexcept { return definition_.unitName; }

    [[nodiscard]] AudioUnitParameterOptions flags() const noexcept { return definition_.flags; }

    [[nodiscard]] const std::vector<std::string>& valueStrings() const noexcept
    {
        return definition_.valueStrings;
    }

    [[nodiscard]] const std::vector<AUParameterAddress>& dependentParameters() const noexcept
    {
        return definition_.dependentParameters;
    }

    /// What the tree's value provider says. The value last set while there is no tree yet, or no provider. 0
    /// once the tree is gone, and its audio unit with it.
    [[nodiscard]] AUValue value() const;

    /// Hands the value, as it is, to the tree's value observer, then tells the tree's other observers, except
    /// the one whose token the writer passes. Does nothing once the tree is gone.
    void setValue(AUValue value, AUParameterObserverToken originator = 0);

    /// The same, saying since when and why. A gesture is touch, then values, then release; automation
    /// observers are told of all three, the others of the values.
    void setValue(AUValue value, AUParameterObserverToken originator, std::uint64_t hostTime,
                  AUParameterAutomationEventType eventType);

    /// Tells the automation observers that a gesture begins or ends, with the parameter's current value.
    /// Nothing is written, so what automation has set in the meantime stays.
    /// @param eventType  touch or release
    void announce(AUParameterAutomationEventType eventType);

private:
    friend class AUParameterTree;

    AUParameterDefinition definition_;
    std::atomic<AUValue> ownValue{0.0f};
    bool hasHadTree = false;
    std::weak_ptr<AUParameterClosures> closures;
};

} // namespace velotrine
