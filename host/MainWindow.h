#pragma once

#include "host/HostWindow.h"

#include <functional>
#include <optional>

namespace velotrine {

/// The application's main window. When it is enlarged, everything in it grows, even what has a fixed size in
/// points, and so do the menus that open from it: half as fast as the window, and in quarters, at which the
/// controls' edges lie on whole pixels.
///
/// F10, or Alt by itself, opens the menu bar; F1 and "?" ask for help. Main thread.
class MainWindow final : public HostWindow
{
public:
    using HostWindow::HostWindow;

    std::function<void()> onHelpAsked;

    float getDesktopScaleFactor() const override;
    void resized() override;
    bool keyPressed(const juce::KeyPress& key) override;
    bool keyStateChanged(bool isKeyDown) override;
    void modifierKeysChanged(const juce::ModifierKeys& modifiers) override;

private:
    [[nodiscard]] float zoomForSize();
    void toggleMenuBar();

    float zoom = 1.0f;                      ///< 1 at the smallest size
    std::optional<juce::Time> altDownSince; ///< while no other key is down with it
};

} // namespace velotrine
