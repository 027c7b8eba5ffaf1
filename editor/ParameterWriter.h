#pragma once

#include "platform/AUParameterTree.h"

#include <functional>
#include <memory>
#include <optional>

namespace velotrine {

/// Reads and writes the parameters of a tree for the controls of an editor. Every edit takes hold of its
/// parameter before, and lets it go after, as music hosts that record automation want it. Main thread.
class ParameterWriter
{
public:
    using TreeProvider = std::function<std::shared_ptr<AUParameterTree>()>;

    /// @param provider  the tree of the moment, or none
    explicit ParameterWriter(TreeProvider provider) : treeNow(std::move(provider)) {}

    /// @param missing  the answer where there is no such parameter
    [[nodiscard]] float value(AUParameterAddress address, float missing) const;

    /// Writes a value; one that nobody holds is held for just this moment.
    void write(AUParameterAddress address, float value);

    /// Writes a value that is no edit of the user's.
    void correct(AUParameterAddress address, float value);

    /// A gesture begins on a control, and ends; one at a time. Neither writes anything.
    void hold(AUParameterAddress address);
    void letGo(AUParameterAddress address);

private:
    [[nodiscard]] std::shared_ptr<AUParameter> parameterAt(AUParameterAddress address) const;
    void announce(AUParameterAddress address, AUParameterAutomationEventType type);

    TreeProvider treeNow;
    std::optional<AUParameterAddress> held;
};

} // namespace velotrine
