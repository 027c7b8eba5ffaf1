#include "host/HostWindow.h"

#include "host/WindowPlacement.h"

#include "IconData.h"

namespace velotrine {

namespace {

constexpr int largestSidePoints = 0x3fff; ///< as far as window systems count

/// Where a window's own is not known yet; in points.
const juce::BorderSize<int> usualFrame(28, 1, 1, 1);

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

juce::Rectangle<int> HostWindow::smallestSize()
{
    return getContentComponentBorder().addedTo({minimumContentWidth, minimumContentHeight});
}

void HostWindow::boundSize()
{
    // The limits are the window system's: at its scale, and with the window manager's frame, which is known
    // only some time after the window has appeared, and which the toolkit counts in pixels.
    const auto smallest =
        smallestSize() * static_cast<double>(juce::Desktop::getInstance().getGlobalScaleFactor());
    juce::BorderSize<int> frame;
    if (const auto* peer = getPeer())
        if (const auto known = peer->getFrameSizeIfPresent())
            frame = known->multipliedBy(1.0 / peer->getPlatformScaleFactor());
    bounds.setSizeLimits(smallest.getWidth() + frame.getLeftAndRight(),
                         smallest.getHeight() + frame.getTopAndBottom(), largestSidePoints,
                         largestSidePoints);
}

void HostWindow::place(const juce::Component* neighbour)
{
    const auto* const peer = neighbour == nullptr ? nullptr : neighbour->getPeer();
    if (peer == nullptr)
        return centreWithSize(getWidth(), getHeight());

    // This window will have the frame that the other one has. Until that is known, the other one takes its
    // frame's position for its own.
    const auto& desktop = juce::Desktop::getInstance();
    const auto known = peer->getFrameSizeIfPresent();
    const auto frame =
        known ? known->multipliedBy(1.0 / static_cast<double>(desktop.getGlobalScaleFactor())) : usualFrame;
    const auto bare = neighbour->getTopLevelComponent()->getScreenBounds();
    const auto framed = frame.addedTo(bare);
    const auto framedNeighbour = known ? framed : framed.withPosition(bare.getPosition());
    const auto* const screen = desktop.getDisplays().getDisplayForRect(framedNeighbour);
    const auto place = placedBeside(framedNeighbour, frame.addedTo(getLocalBounds()), screen->userArea);
    // The window manager takes the position for that of the frame.
    setBounds(frame.subtractedFrom(place).withPosition(place.getPosition()));
}

void HostWindow::show(const juce::Component* neighbour)
{
    if (!isOnDesktop()) {
        place(neighbour);
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
