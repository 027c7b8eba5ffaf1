#pragma once

#include "editor/FlippedView.h"
#include "host/RingsMotifViewMac.h"
#include "host/WrappingLabel.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// The help window's title card: emblem, name, version, and what this is, centred.
class HelpAboutPage final : public juce::Component
{
public:
    /// @param versionLine  as it is shown
    explicit HelpAboutPage(const std::string& versionLine);

    void resized() override;

    /// Frame of everything that is on the card.
    [[nodiscard]] juce::Rectangle<int> stack() const noexcept { return stackBounds; }

    [[nodiscard]] const juce::Component& ruleView() const noexcept { return rule; }

    [[nodiscard]] const juce::Component& motifView() const noexcept { return motif; }

private:
    struct Row
    {
        juce::Component* view;
        int width;
        int height;
        int gapAfter;
    };

    [[nodiscard]] std::vector<Row> rowsWithin(int widest);

    RingsMotifViewMac motif;
    WrappingLabel name;
    WrappingLabel version;
    FlippedView rule;
    WrappingLabel tagline;
    WrappingLabel format;
    juce::Rectangle<int> stackBounds;
};

} // namespace velotrine
