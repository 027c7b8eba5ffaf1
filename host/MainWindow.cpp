#include "host/MainWindow.h"

#include <algorithm>
#include <cmath>

namespace velotrine {

namespace {

constexpr float zoomPerSize = 0.5f;
constexpr float zoomSteps = 4.0f;

/// A tap; held longer, Alt is meant for something else, such as the window manager.
const auto longestTap = juce::RelativeTime::milliseconds(500);

} // namespace

float MainWindow::getDesktopScaleFactor() const
{
    return zoom * HostWindow::getDesktopScaleFactor();
}

float MainWindow::zoomForSize()
{
    const auto* const peer = getPeer();
    if (peer == nullptr)
        return 1.0f;
    const auto size = peer->getBounds().toFloat() / HostWindow::getDesktopScaleFactor();
    const auto smallest = smallestSize().toFloat();
    const auto timesSmallest =
        std::min(size.getWidth() / smallest.getWidth(), size.getHeight() / smallest.getHeight());
    const auto wanted = 1.0f + zoomPerSize * (timesSmallest - 1.0f);
    return std::max(1.0f, std::floor(wanted * zoomSteps) / zoomSteps);
}

void MainWindow::resized()
{
    if (const auto newZoom = zoomForSize(); newZoom != zoom) {
        zoom = newZoom;
        // It has as many pixels as before and thus another size in points, with which it comes here again.
        getPeer()->handleMovedOrResized();
        return;
    }
    HostWindow::resized();
}

bool MainWindow::keyPressed(const juce::KeyPress& key)
{
    const auto modifiers = key.getModifiers();
    const auto isPlain = !modifiers.isCommandDown() && !modifiers.isAltDown();
    if (key == juce::KeyPress(juce::KeyPress::F10Key)) {
        toggleMenuBar();
        return true;
    }
    if (key == juce::KeyPress('k', juce::ModifierKeys::commandModifier, 0)) {
        if (onKeepingAsked)
            onKeepingAsked();
        return true;
    }
    // The character, since every keyboard has it elsewhere.
    if (key == juce::KeyPress(juce::KeyPress::F1Key) || (isPlain && key.getTextCharacter() == '?')) {
        if (onHelpAsked)
            onHelpAsked();
        return true;
    }
    return HostWindow::keyPressed(key);
}

bool MainWindow::keyStateChanged(bool isKeyDown)
{
    altDownSince.reset();
    return HostWindow::keyStateChanged(isKeyDown);
}

void MainWindow::modifierKeysChanged(const juce::ModifierKeys& modifiers)
{
    const auto now = juce::Time::getCurrentTime();
    // The key comes to whatever is under the mouse. The window system knows who has the keyboard; the toolkit
    // finds out up to two seconds later whether a window is active.
    const auto wasTapped = altDownSince && modifiers == juce::ModifierKeys() && getPeer()->isFocused() &&
                           now - *altDownSince < longestTap;
    altDownSince.reset();
    if (modifiers == juce::ModifierKeys(juce::ModifierKeys::altModifier))
        altDownSince = now;
    if (wasTapped)
        toggleMenuBar();
}

void MainWindow::toggleMenuBar()
{
    if (juce::PopupMenu::dismissAllActiveMenus())
        return;
    if (auto* const bar = dynamic_cast<juce::MenuBarComponent*>(getMenuBarComponent()))
        bar->showMenu(0);
}

} // namespace velotrine
