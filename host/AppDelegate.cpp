#include "host/AppDelegate.h"

#include "audiounit/Identity.h"
#include "editor/Colours.h"
#include "host/BundleInformation.h"
#include "host/DesktopScale.h"

#include <iostream>
#include <utility>

namespace velotrine {

namespace {

constexpr int contentWidth = 480;  ///< points, and no less
constexpr int contentHeight = 404; ///< likewise
constexpr int noDisplay = 1;       ///< exit code

} // namespace

AppDelegate::AppDelegate(HostOptions startedWith) : options(std::move(startedWith)) {}

AppDelegate::~AppDelegate() = default;

const juce::String AppDelegate::getApplicationName()
{
    return identity::name;
}

const juce::String AppDelegate::getApplicationVersion()
{
    return mainBundleInformation().shortVersion.value_or("");
}

void AppDelegate::initialise(const juce::String&)
{
    if (juce::Desktop::getInstance().getDisplays().displays.isEmpty()) {
        std::cerr << options.program << ": there is no display to open a window on; is DISPLAY set?\n";
        setApplicationReturnValue(noDisplay);
        quit();
        return;
    }
    applyScale();
    applicationDidFinishLaunching();
}

void AppDelegate::applyScale() const
{
    const auto wanted = options.scale ? options.scale : desktopScale(readDesktopSettings());
    auto& desktop = juce::Desktop::getInstance();
    const auto* const screen = desktop.getDisplays().getPrimaryDisplay();
    if (!wanted || screen == nullptr)
        return;
    // The toolkit scales each screen by itself, by some of the same settings or by its density: only what is
    // left to do is done here.
    const auto done = screen->scale / static_cast<double>(desktop.getGlobalScaleFactor());
    desktop.setGlobalScaleFactor(static_cast<float>(*wanted / done));
}

void AppDelegate::applicationDidFinishLaunching()
{
    look.emplace();
    buildMenu();
    buildWindow();
    window->show();
}

void AppDelegate::buildMenu()
{
    menu = std::make_unique<MainMenu>(MainMenu::Actions{.showAbout = [this] { showAbout(); },
                                                        .hide = [this] { hideAll(); },
                                                        .showAll = [this] { showAll(); },
                                                        .terminate = [] { quit(); },
                                                        .settingsEntry =
                                                            [this](const juce::KeyPress& key) {
                                                                return hostVC ? hostVC->settingsEntry(key)
                                                                              : std::nullopt;
                                                            }});
}

void AppDelegate::buildWindow()
{
    HostSurroundings surroundings;
    const auto here = juce::File::getCurrentWorkingDirectory();
    if (!options.file.empty())
        surroundings.fileToOpen = here.getChildFile(juce::String::fromUTF8(options.file.c_str()));
    if (!options.session.empty())
        surroundings.sessionFile = here.getChildFile(juce::String::fromUTF8(options.session.c_str()));
    hostVC = std::make_shared<HostViewController>(std::move(surroundings));
    hostVC->engine.setDeviceOptions(options.device);
    hostVC->onHelpWindowCreated = [this](HelpWindowController& help) { adopt(help.window()); };

    window = std::make_unique<MainWindow>(identity::name, colours::background, hostVC->view());
    window->onHelpAsked = [this] { showAbout(); };
    window->onKeepingAsked = [this] { hostVC->keepLastTake(); };
#if JUCE_MAC
    juce::MenuBarModel::setMacMainMenu(menu.get());
#else
    window->setMenuBar(menu.get());
#endif
    window->setContentSize(contentWidth, contentHeight);
    window->setMinimumContentSize(contentWidth, contentHeight);
    adopt(*window);
}

void AppDelegate::adopt(HostWindow& newWindow)
{
    newWindow.addKeyListener(menu.get());
    newWindow.onClosed = [this] { windowClosed(); };
}

void AppDelegate::forEachOpenWindow(const std::function<void(HostWindow&)>& action)
{
    if (window->isVisible())
        action(*window);
    if (hostVC->helpWindowController && hostVC->helpWindowController->window().isVisible())
        action(hostVC->helpWindowController->window());
}

void AppDelegate::windowClosed()
{
    int openWindows = 0;
    forEachOpenWindow([&openWindows](HostWindow&) { ++openWindows; });
    if (openWindows == 0 && applicationShouldTerminateAfterLastWindowClosed())
        quit();
}

void AppDelegate::hideAll()
{
    forEachOpenWindow([](HostWindow& open) { open.setMinimised(true); });
}

void AppDelegate::showAll()
{
    forEachOpenWindow([](HostWindow& open) { open.show(); });
}

void AppDelegate::showAbout()
{
    if (hostVC)
        hostVC->showHelp(0);
}

void AppDelegate::shutdown()
{
#if JUCE_MAC
    juce::MenuBarModel::setMacMainMenu(nullptr);
#endif
    window.reset();
    hostVC.reset();
    menu.reset();
    look.reset();
}

} // namespace velotrine
