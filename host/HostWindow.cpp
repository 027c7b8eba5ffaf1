#include "host/HostWindow.h"

#include "IconData.h"

namespace velotrine {

namespace {

constexpr int largestSidePoints = 0x3fff; ///< as far as window systems count

} // namespace

HostWindow::HostWindow(const juce::String& title, juce::Colour background, juce::Component& content)
    : DocumentWindow(title, background, allButtons, false)
{
    setUsingNativeTitleBar(true);
    setResizable(true, false);
    setConstrainer(&bounds);
    setContentNonOwned(&content, false);
}

HostWindow::~HostWindow()
{
    setConstrainer(nullptr);
}

void HostWindow::setContentSize(int width, int height)
{
    setContentComponentSize(width, height);
}

void HostWindow::setMinimumContentSize(int width, int height)
{
    minimumContentWidth = width;
    minimumContentHeight = height;
    boundSize();
}

void HostWindow::boundSize()
{
    // The limits count the window manager's frame, which is known only some time after the window has
    // appeared.
    auto extra = getContentComponentBorder();
    if (const auto* peer = getPeer())
        if (const auto frame = peer->getFrameSizeIfPresent())
            extra = {extra.getTop() + frame->getTop(), extra.getLeft() + frame->getLeft(),
                     extra.getBottom() + frame->getBottom(), extra.getRight() + frame->getRight()};
    bounds.setSizeLimits(minimumContentWidth + extra.getLeftAndRight(),
                         minimumContentHeight + extra.getTopAndBottom(), largestSidePoints,
                         largestSidePoints);
}

void HostWindow::show()
{
    if (!isOnDesktop()) {
        centreWithSize(getWidth(), getHeight());
        addToDesktop();
        getPeer()->setIcon(
            juce::ImageCache::getFromMemory(IconData::velotrine128_png, IconData::velotrine128_pngSize));
    }
    if (isMinimised())
        setMinimised(false);
    setVisible(true);
    toFront(true);
}

void HostWindow::closeButtonPressed()
{
    setVisible(false);
    if (onClosed)
        onClosed();
}

bool HostWindow::keyPressed(const juce::KeyPress& key)
{
    if (key == juce::KeyPress('w', juce::ModifierKeys::commandModifier, 0)) {
        closeButtonPressed();
        return true;
    }
    return DocumentWindow::keyPressed(key);
}

void HostWindow::resized()
{
    boundSize();
    DocumentWindow::resized();
}

void HostWindow::moved()
{
    boundSize();
    DocumentWindow::moved();
}

} // namespace velotrine
