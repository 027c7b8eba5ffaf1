#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// Three rings with their spots: the instrument's emblem, as large as fits, centred.
class RingsMotifViewMac final : public juce::Component
{
public:
    RingsMotifViewMac();

    void paint(juce::Graphics& graphics) override;
};

} // namespace velotrine
