#include "host/AppDelegate.h"
#include "host/HelpWindowController.h"
#include "host/HostWindow.h"
#include "host/MainMenu.h"
#include "tests/host/FakeDevices.h"
#include "tests/host/windows/Desktop.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace velotrine {
namespace {

constexpr double patienceSeconds = 5.0;

TEST(HelpWindow, OpensAtItsSizeAndGetsNoSmallerThan420By480)
{
    HelpWindowController help;
    help.showWindow();
    ASSERT_TRUE(windowAppears("Velotrine Help"));
    const auto window = windowsTitled("Velotrine Help").at(0);
    EXPECT_EQ(boundsOfWindow(window).getWidth(), 560);
    EXPECT_EQ(boundsOfWindow(window).getHeight(), 620);
    runMessagesFor(0.2);
    xdotool({"windowsize", window, "200", "200"});
    EXPECT_TRUE(runMessagesUntil([&] { return help.contentView().getHeight() == 480; }, patienceSeconds));
    EXPECT_EQ(help.contentView().getWidth(), 420);
}

TEST(HelpWindow, TakesKeysAsSoonAsItShows)
{
    HelpWindowController help;
    help.showWindow();
    ASSERT_TRUE(windowHasKeyboard("Velotrine Help"));
    runMessagesFor(0.2);
    pressKey("Right");
    EXPECT_TRUE(runMessagesUntil([&] { return help.segmented->selectedSegment() == 1; }, patienceSeconds));
    pressKey("Escape");
    EXPECT_TRUE(runMessagesUntil([&] { return !help.window().isVisible(); }, patienceSeconds));
}

TEST(HelpWindow, ReopensOnThePageThatItWasClosedOn)
{
    HelpWindowController help;
    help.showPage(3);
    help.showWindow();
    help.window().closeButtonPressed();
    help.showWindow();
    EXPECT_TRUE(help.pages[3]->isShowing());
    EXPECT_FALSE(help.pages[0]->isShowing());
}

TEST(HelpWindow, ItsSegmentsAreRadioButtonsToAssistiveTechnology)
{
    HelpWindowController help;
    help.showWindow();
    auto* knobs = help.segmented->getChildComponent(4)->getAccessibilityHandler();
    ASSERT_NE(knobs, nullptr);
    EXPECT_EQ(knobs->getRole(), juce::AccessibilityRole::radioButton);
    EXPECT_EQ(knobs->getTitle(), "Knobs");
    EXPECT_FALSE(knobs->getCurrentState().isChecked());
    EXPECT_TRUE(knobs->getActions().invoke(juce::AccessibilityActionType::press));
    EXPECT_TRUE(knobs->getCurrentState().isChecked());
    EXPECT_TRUE(help.pages[4]->isVisible());
}

TEST(HostWindow, ShowsTheIconToTheWindowManager)
{
    juce::Component content;
    HostWindow window("With an icon", juce::Colours::black, content);
    window.setContentSize(100, 100);
    window.show();
    ASSERT_TRUE(windowAppears("With an icon"));
    const auto properties =
        runProcess({"/usr/bin/xprop", "-id", windowsTitled("With an icon").at(0), "-notype", "_NET_WM_ICON"});
    EXPECT_THAT(properties.out, testing::HasSubstr("Icon (128 x 128)"));
}

/// A window with the menu and a text field that has the keyboard.
class EditMenuTest : public testing::Test
{
protected:
    EditMenuTest()
    {
        juce::LookAndFeel::setDefaultLookAndFeel(&look);
        content.setSize(300, 200);
        content.addAndMakeVisible(field);
        field.setBounds(10, 10, 200, 30);
        field.setText("velotrine");
        window.addKeyListener(&menu);
        window.setMenuBar(&menu);
        window.setContentSize(300, 200);
        window.show();
        EXPECT_TRUE(windowHasKeyboard("Edit menu"));
        runMessagesFor(0.3); // for the window manager's message, at which the window takes the keyboard
        field.grabKeyboardFocus();
        EXPECT_TRUE(runMessagesUntil([this] { return field.hasKeyboardFocus(false); }, patienceSeconds));
    }

    ~EditMenuTest() override { juce::LookAndFeel::setDefaultLookAndFeel(nullptr); }

    void perform(const juce::String& title)
    {
        for (const auto& entry : menu.menus().at(1).entries)
            if (entry.title == title) {
                EXPECT_TRUE(entry.isEnabled()) << title;
                entry.perform();
            }
    }

    VelotrineLookAndFeel look; ///< as in the application: it lays the menus into the window
    juce::Component content;
    juce::TextEditor field;
    MainMenu menu{{}};
    HostWindow window{"Edit menu", juce::Colours::black, content};
};

TEST_F(EditMenuTest, ActsOnTheTextFieldWithTheKeyboard)
{
    perform("Select All");
    EXPECT_EQ(field.getHighlightedText(), "velotrine");
    perform("Copy");
    EXPECT_EQ(juce::SystemClipboard::getTextFromClipboard(), "velotrine");
    perform("Cut");
    EXPECT_EQ(field.getText(), "");
    perform("Paste");
    perform("Paste");
    EXPECT_EQ(field.getText(), "velotrinevelotrine");
}

TEST_F(EditMenuTest, UndoesAndRedoes)
{
    perform("Select All");
    perform("Cut");
    perform("Undo");
    EXPECT_EQ(field.getText(), "velotrine");
    perform("Redo");
    EXPECT_EQ(field.getText(), "");
}

TEST_F(EditMenuTest, OpenedByMouseItActsOnTheTextFieldThatHadTheKeyboardBefore)
{
    const auto number = windowsTitled("Edit menu").at(0);
    xdotool({"mousemove", "--window", number, "95", "12", "click", "1"});
    ASSERT_TRUE(runMessagesUntil([] { return juce::Component::getNumCurrentlyModalComponents() > 0; },
                                 patienceSeconds));
    runMessagesFor(0.3);
    xdotool({"key", "Up", "Return"}); // the last item, Select All
    EXPECT_TRUE(
        runMessagesUntil([this] { return field.getHighlightedText() == "velotrine"; }, patienceSeconds));
}

TEST_F(EditMenuTest, IsGreyOnceTheTextFieldHasLostTheKeyboard)
{
    EXPECT_TRUE(menu.menus()[1].entries[0].isEnabled());
    juce::Component::unfocusAllComponents();
    EXPECT_FALSE(menu.menus()[1].entries[0].isEnabled());
}

TEST(HostViewControllerWindow, RemembersThatHelpWasShownBeforeItIs)
{
    const TemporaryFolder folder;
    FakeSound sound;
    HostSurroundings surroundings;
    surroundings.deviceTypes = fakeDeviceTypes({&sound});
    surroundings.preferencesFile = juce::File(folder.file("settings"));
    surroundings.lastSettingsFile = juce::File(folder.file("last.json"));
    const auto controller = std::make_shared<HostViewController>(surroundings);
    bool wasRemembered = false;
    controller->onHelpWindowCreated = [&](HelpWindowController&) {
        wasRemembered = Preferences(surroundings.preferencesFile).hasShownHelp();
    };
    HostWindow window("Host", juce::Colours::black, controller->view());
    window.setContentSize(480, 404);
    window.show();
    EXPECT_TRUE(
        runMessagesUntil([&] { return controller->helpWindowController != nullptr; }, patienceSeconds));
    EXPECT_TRUE(wasRemembered);
}

TEST(HostViewControllerWindow, APresetIsChosenFromThePopupsMenu)
{
    const TemporaryFolder folder;
    FakeSound sound;
    HostSurroundings surroundings;
    surroundings.deviceTypes = fakeDeviceTypes({&sound});
    surroundings.preferencesFile = juce::File(folder.file("settings"));
    surroundings.lastSettingsFile = juce::File(folder.file("last.json"));
    Preferences(surroundings.preferencesFile).setHasShownHelp(true);
    const auto controller = std::make_shared<HostViewController>(surroundings);
    HostWindow window("Host", juce::Colours::black, controller->view());
    window.setContentSize(480, 404);
    window.show();
    ASSERT_TRUE(windowHasKeyboard("Host"));
    runMessagesFor(0.2);
    xdotool({"mousemove", "--window", windowsTitled("Host").at(0), "240", "22", "click", "1"});
    ASSERT_TRUE(runMessagesUntil([] { return juce::Component::getNumCurrentlyModalComponents() > 0; },
                                 patienceSeconds));
    runMessagesFor(0.3);
    xdotool({"key", "Down", "Down", "Return"}); // from the first, which is selected, to the third
    EXPECT_TRUE(runMessagesUntil([&] { return controller->audioUnit->currentPreset()->number == 2; },
                                 patienceSeconds));
    EXPECT_EQ(controller->presetPopup->getSelectedItemIndex(), 2);
}

TEST(HostViewControllerWindow, HelpOpensAtTheRequestedPageInTheSameWindow)
{
    const TemporaryFolder folder;
    FakeSound sound;
    HostSurroundings surroundings;
    surroundings.deviceTypes = fakeDeviceTypes({&sound});
    surroundings.preferencesFile = juce::File(folder.file("settings"));
    surroundings.lastSettingsFile = juce::File(folder.file("last.json"));
    const auto controller = std::make_shared<HostViewController>(surroundings);
    controller->showHelp(5);
    // The audio unit is on its way to the controller, in a message that holds it.
    ASSERT_TRUE(runMessagesUntil([&] { return controller->audioUnit != nullptr; }, patienceSeconds));
    const auto* first = controller->helpWindowController.get();
    EXPECT_TRUE(first->pages[5]->isShowing());
    controller->helpWindowController->window().closeButtonPressed();
    controller->showHelp(0);
    EXPECT_EQ(controller->helpWindowController.get(), first);
    EXPECT_TRUE(first->pages[0]->isShowing());
    controller->showHelp(8);
    EXPECT_TRUE(first->pages[0]->isShowing());
    EXPECT_EQ(controller.use_count(), 1) << "a message that is still under way holds it";
}

class AppDelegateTest : public testing::Test
{
protected:
    AppDelegateTest()
    {
        ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        ::setenv("XDG_STATE_HOME", folder.path().c_str(), 1);
        Preferences().setHasShownHelp(true);
    }

    ~AppDelegateTest() override
    {
        ::unsetenv("XDG_CONFIG_HOME");
        ::unsetenv("XDG_STATE_HOME");
    }

    TemporaryFolder folder;
    AppDelegate delegate{{}};
};

TEST_F(AppDelegateTest, AboutBeforeTheWindowExistsDoesNothing)
{
    delegate.showAbout();
    EXPECT_EQ(delegate.hostVC, nullptr);
}

TEST_F(AppDelegateTest, ItsSavedStateMayBeReadSecurely)
{
    EXPECT_TRUE(delegate.applicationSupportsSecureRestorableState());
}

TEST_F(AppDelegateTest, AboutLeadsToTheTitleCardFromAnyPage)
{
    delegate.applicationDidFinishLaunching();
    delegate.hostVC->showHelp(6);
    EXPECT_EQ(delegate.hostVC->helpWindowController->segmented->selectedSegment(), 6);
    delegate.showAbout();
    EXPECT_EQ(delegate.hostVC->helpWindowController->segmented->selectedSegment(), 0);
    EXPECT_TRUE(delegate.hostVC->helpWindowController->window().isVisible());
    delegate.shutdown();
}

TEST_F(AppDelegateTest, ShutsDownWholeEvenBeforeTheInstrumentHasArrived)
{
    delegate.applicationDidFinishLaunching();
    const std::weak_ptr<HostViewController> controller = delegate.hostVC;
    delegate.shutdown();
    EXPECT_TRUE(controller.expired());
}

TEST_F(AppDelegateTest, HidesAllWindowsAndShowsThemAgain)
{
    delegate.applicationDidFinishLaunching();
    delegate.hostVC->showHelp(0);
    ASSERT_TRUE(windowAppears("Velotrine"));
    ASSERT_TRUE(windowAppears("Velotrine Help"));
    auto* bar = dynamic_cast<juce::MenuBarComponent*>(delegate.window->getMenuBarComponent());
    ASSERT_NE(bar, nullptr);
    const auto& entries = dynamic_cast<MainMenu*>(bar->getModel())->menus().front().entries;
    ASSERT_EQ(entries[2].title, "Hide Velotrine");
    ASSERT_EQ(entries[4].title, "Show All");
    entries[2].perform();
    EXPECT_TRUE(windowGoes("Velotrine"));
    EXPECT_TRUE(windowGoes("Velotrine Help"));
    entries[4].perform();
    EXPECT_TRUE(windowAppears("Velotrine"));
    EXPECT_TRUE(windowAppears("Velotrine Help"));
    delegate.shutdown();
}

} // namespace
} // namespace velotrine
