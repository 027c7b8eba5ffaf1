#pragma once

#include "editor/VelotrineLookAndFeel.h"
#include "host/HostOptions.h"
#include "host/HostViewController.h"
#include "host/MainMenu.h"
#include "host/MainWindow.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>
#include <optional>

namespace velotrine {

/// The desktop application: its menu and its main window, from launch until the last window closes or the
/// user quits. Main thread.
class AppDelegate final : public juce::JUCEApplication
{
public:
    explicit AppDelegate(HostOptions options);
    ~AppDelegate() override;

    std::unique_ptr<MainWindow> window;
    std::shared_ptr<HostViewController> hostVC;

    void applicationDidFinishLaunching();

    [[nodiscard]] bool applicationShouldTerminateAfterLastWindowClosed() const noexcept { return true; }

    [[nodiscard]] bool applicationSupportsSecureRestorableState() const noexcept { return true; }

    /// Help, at its title card.
    void showAbout();

    const juce::String getApplicationName() override;
    const juce::String getApplicationVersion() override;
    void initialise(const juce::String& commandLine) override;
    void shutdown() override;

private:
    void applyScale() const;
    void buildMenu();
    void buildWindow();
    void adopt(HostWindow& newWindow);
    void windowClosed();
    void hideAll();
    void showAll();
    void forEachOpenWindow(const std::function<void(HostWindow&)>& action);

    const HostOptions options;
    std::optional<juce::SharedResourcePointer<DefaultLook>> look; ///< from the start to the shutdown
    std::unique_ptr<MainMenu> menu;
};

} // namespace velotrine
