#pragma once

#include "editor/VelotrineAUViewControllerMac.h"
#include "plugin/HostedInstrument.h"

#include <string_view>

namespace velotrine {

/// The instrument's editor inside a music host: it follows what the host changes and says why nothing sounds.
/// Main thread, with JUCE's message manager.
class HostedEditor final : private juce::Timer
{
public:
    /// @param instrument  outlives the editor
    explicit HostedEditor(HostedInstrument& instrument);

    /// The editor's contents, at the size that the instrument's state remembers.
    [[nodiscard]] juce::Component& view() { return controller.view(); }

private:
    void timerCallback() override;

    HostedInstrument& hostedInstrument;
    VelotrineAUViewControllerMac controller;
    std::string_view shownNotice;
};

} // namespace velotrine
