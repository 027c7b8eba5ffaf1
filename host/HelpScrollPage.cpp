#include "host/HelpScrollPage.h"

namespace velotrine {

namespace {

constexpr int lineStepPoints = 20; ///< one press of an arrow key: about a line of text

} // namespace

HelpScrollPage::HelpScrollPage(const HelpContentPage& page) : document(page)
{
    viewport.setViewedComponent(&document, false);
    viewport.setScrollBarsShown(true, false);
    viewport.setSingleStepSizes(lineStepPoints, lineStepPoints);
    viewport.setWantsKeyboardFocus(false);
    addAndMakeVisible(viewport);
}

void HelpScrollPage::resized()
{
    viewport.setBounds(getLocalBounds());
    auto width = getWidth();
    if (document.heightForWidth(width) > getHeight())
        width -= viewport.getScrollBarThickness();
    document.setSize(width, document.heightForWidth(width));
}

bool HelpScrollPage::keyPressed(const juce::KeyPress& key)
{
    return viewport.keyPressed(key);
}

} // namespace velotrine
