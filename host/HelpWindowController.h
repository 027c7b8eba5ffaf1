#pragma once

#include "editor/FlippedView.h"
#include "host/HostWindow.h"
#include "host/SegmentedControl.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>
#include <vector>

namespace velotrine {

/// The window that explains the instrument and this application: a title card and pages of text, of which
/// one shows at a time. Built once; closing hides it. Main thread.
class HelpWindowController
{
public:
    HelpWindowController();
    ~HelpWindowController();
    HelpWindowController(const HelpWindowController&) = delete;
    HelpWindowController& operator=(const HelpWindowController&) = delete;

    /// Selects a page and its segment. An index that is no page's leaves everything as it is.
    void showPage(int index);

    /// Brings the window to the front and gives it the keyboard.
    /// @param neighbour  in the window beside which it opens the first time
    void showWindow(const juce::Component* neighbour = nullptr);

    [[nodiscard]] HostWindow& window() noexcept;

    /// All that is in the window.
    [[nodiscard]] juce::Component& contentView() noexcept;

    const juce::Colour bgColor;
    const juce::Colour textColor;
    const juce::Colour dimColor;
    const juce::Colour accentColor;
    std::unique_ptr<SegmentedControl> segmented;
    std::unique_ptr<juce::Component> pageContainer;
    std::vector<std::unique_ptr<juce::Component>> pages; ///< one for each segment, in order

private:
    class ContentView;
    class HelpWindow;

    void buildContent();
    void segmentChanged();

    std::unique_ptr<ContentView> content;
    std::unique_ptr<HelpWindow> helpWindow;
};

} // namespace velotrine
