#pragma once

#include "host/HostViewController.h"
#include "host/HostWindow.h"
#include "tests/host/FakeDevices.h"
#include "tests/host/windows/Desktop.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace velotrine {

/// Counts a key that nothing in the window uses.
class UnusedKey final : public juce::KeyListener
{
public:
    static constexpr auto name = "F12";

    bool keyPressed(const juce::KeyPress& key, juce::Component*) override
    {
        count += key.isKeyCode(juce::KeyPress::F12Key) ? 1 : 0;
        return false;
    }

    int count = 0;
};

/// The window with hands on its mouse and keyboard.
class Hands : public testing::Test
{
protected:
    void SetUp() override
    {
        HostSurroundings surroundings;
        surroundings.deviceTypes = fakeDeviceTypes({&sound});
        surroundings.preferencesFile = juce::File(folder.file("settings"));
        surroundings.lastSettingsFile = juce::File(folder.file("last.json"));
        Preferences(surroundings.preferencesFile).setHasShownHelp(true);
        host = std::make_shared<HostViewController>(surroundings);
        window = std::make_unique<HostWindow>("Hands", juce::Colours::black, host->view());
        window->setContentSize(480, 404);
        window->addKeyListener(&unusedKey);
        window->show();
        ASSERT_TRUE(windowHasKeyboard("Hands"));
        ASSERT_TRUE(soon([&] { return host->auViewController != nullptr; }));
        // The window manager's message, at which the window takes the keyboard, must not come later.
        ASSERT_TRUE(hasKeyboard(*window));
        settle();
        runMessagesFor(0.3);
    }

    [[nodiscard]] VelotrineAUViewControllerMac& editor() const { return *host->auViewController; }

    [[nodiscard]] RingEditorViewMac& panel() const { return *editor().ringEditor; }

    static bool soon(const std::function<bool()>& condition) { return runMessagesUntil(condition, 5.0); }

    /// Waits until what the hands did has come through the X server, which keeps the order. A menu takes all
    /// keys.
    void settle() const
    {
        const auto before = unusedKey.count;
        pressKey(UnusedKey::name);
        std::ignore = runMessagesUntil(
            [&] { return unusedKey.count > before || juce::Component::getNumCurrentlyModalComponents() > 0; },
            5.0);
        runMessagesFor(juce::Component::getNumCurrentlyModalComponents() > 0 ? 0.25 : 0.03);
    }

    static bool hasKeyboard(const juce::Component& component)
    {
        return soon([&] { return component.hasKeyboardFocus(true); });
    }

    void moveTo(const juce::Component& component, juce::Point<int> at) const
    {
        const auto onScreen = component.localPointToGlobal(at);
        xdotool({"mousemove", std::to_string(onScreen.x), std::to_string(onScreen.y)});
        settle();
    }

    void clickIn(const juce::Component& component, juce::Point<int> at, const std::string& button = "1") const
    {
        moveTo(component, at);
        xdotool({"click", button});
        settle();
    }

    void click(const juce::Component& component, const std::string& button = "1") const
    {
        clickIn(component, component.getLocalBounds().getCentre(), button);
    }

    void press(const juce::Component& component) const
    {
        moveTo(component, component.getLocalBounds().getCentre());
        xdotool({"mousedown", "1"});
        settle();
    }

    void moveBy(int x, int y) const
    {
        xdotool({"mousemove_relative", "--sync", "--", std::to_string(x), std::to_string(y)});
        settle();
    }

    void letGo() const
    {
        xdotool({"mouseup", "1"});
        settle();
    }

    void keys(const std::vector<std::string>& names) const
    {
        for (const auto& name : names) {
            pressKey(name);
            settle();
        }
    }

    void type(const std::string& text) const
    {
        xdotool({"type", text});
        settle();
    }

    [[nodiscard]] float value(ParameterAddress address) const
    {
        return host->audioUnit->parameterTree()->parameterWithAddress(address)->value();
    }

    [[nodiscard]] juce::Point<int> onRing(int ring) const
    {
        const auto& rings = *editor().circlesView;
        const auto along = rings.cachedRadii()[static_cast<std::size_t>(ring)] * std::sqrt(0.5);
        return (rings.cachedCenter() + juce::Point(along, along)).roundToInt();
    }

    void openRing(int ring) const
    {
        clickIn(*editor().circlesView, onRing(ring));
        ASSERT_TRUE(soon([&] { return panel().isVisible() && panel().ringIndex == ring; }));
    }

    static constexpr auto bpm = addressOf(GlobalParameter::bpm);
    static constexpr auto activity = addressOf(GlobalParameter::activity);

    const TemporaryFolder folder;
    FakeSound sound;
    UnusedKey unusedKey;
    std::shared_ptr<HostViewController> host;
    std::unique_ptr<HostWindow> window;
};

} // namespace velotrine
