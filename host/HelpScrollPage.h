#pragma once

#include "host/FlippedContentView.h"
#include "host/HelpContent.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// A page of help that scrolls, up and down only, when it is higher than its frame: by the wheel, the scroll
/// bar, the arrow keys, Page Up and Down, Home and End.
class HelpScrollPage final : public juce::Component
{
public:
    explicit HelpScrollPage(const HelpContentPage& page);

    void resized() override;
    bool keyPressed(const juce::KeyPress& key) override;

    [[nodiscard]] juce::Viewport& scrollView() noexcept { return viewport; }

    [[nodiscard]] FlippedContentView& documentView() noexcept { return document; }

private:
    FlippedContentView document;
    juce::Viewport viewport;
};

} // namespace velotrine
