#pragma once

#include "editor/FlippedView.h"
#include "editor/ValueField.h"

#include <cstdint>
#include <functional>

namespace velotrine {

/// Asks for a seed, in a small panel over the middle of a view, until the field in it is left. Main thread.
class SeedPanel final : public FlippedView
{
public:
    /// @param parent  it is hidden in it, and in its middle once it is opened
    explicit SeedPanel(juce::Component& parent);

    /// Told the seed that somebody has typed. What is no seed is passed over.
    std::function<void(std::uint32_t)> onSeed;

    /// Opens it with the keyboard in its field.
    void open(std::uint32_t seed);

    void resized() override;

    ValueField field;

private:
    juce::Label label;
};

} // namespace velotrine
