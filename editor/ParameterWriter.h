#pragma once

#include "engine/ParameterAddress.h"
#include "platform/AUParameterTree.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace velotrine {

/// The value of a parameter that counts something. One that is beyond whole numbers, or none, got past all
/// checks and stops the program.
[[nodiscard]] std::int64_t wholeNumber(float value);

/// An index into names, for a value that may lie outside.
/// @param count  of the names, 1 or more
[[nodiscard]] int boundedIndex(float value, std::size_t count);

/// Reads and writes the parameters of a tree for an editor's controls. Every edit is a gesture: its beginning
/// and its end are announced, as hosts that record automation expect. Main thread.
class ParameterWriter
{
public:
    using TreeProvider = std::function<std::shared_ptr<AUParameterTree>()>;

    /// @param provider  the current tree, or none
    explicit ParameterWriter(TreeProvider provider) : treeNow(std::move(provider)) {}

    /// Ends the gesture of a control that goes while it is held: a host would wait for its end.
    ~ParameterWriter();

    ParameterWriter(const ParameterWriter&) = delete;
    ParameterWriter& operator=(const ParameterWriter&) = delete;

    /// Told of each gesture that has written something, once it has ended: the value before it, and the last
    /// that it wrote.
    std::function<void(AUParameterAddress address, float before, float after)> onEdited;

    [[nodiscard]] bool isInGesture() const noexcept { return gesture.has_value(); }

    /// @param missing  returned if the tree has no such parameter
    [[nodiscard]] float value(AUParameterAddress address, float missing) const;

    /// A parameter's value, or its initial one if the tree does not have it.
    /// @param address  one that the table of parameters has
    [[nodiscard]] float value(ParameterAddress address) const;

    /// Writes a value. Outside a gesture, the write is a gesture of its own.
    void write(AUParameterAddress address, float value);

    /// Writes a value that is no edit of the user's.
    void correct(AUParameterAddress address, float value);

    /// Announce a gesture on a control; one at a time. Neither writes anything.
    void beginGesture(AUParameterAddress address);
    void endGesture(AUParameterAddress address);

private:
    [[nodiscard]] std::shared_ptr<AUParameter> parameterAt(AUParameterAddress address) const;
    void announce(AUParameterAddress address, AUParameterAutomationEventType type);

    TreeProvider treeNow;
    std::optional<AUParameterAddress> gesture;
    float valueBefore = 0.0f;            ///< the gesture
    std::optional<float> valueWritten{}; ///< by the gesture, the last one
};

} // namespace velotrine
