// The window under hands: what a press, a click or a key reaches, whatever was touched before.

#include "host/HostViewController.h"
#include "host/HostWindow.h"
#include "tests/host/FakeDevices.h"
#include "tests/host/MessageLoop.h"
#include "tests/host/windows/Desktop.h"
#include "tests/render/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace velotrine {
namespace {

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

class Hands : public testing::Test
{
protected:
    void SetUp() override
    {
        HostSurroundings surroundings;
        surroundings.deviceTypes = fakeDeviceTypes({&sound});
        surroundings.preferencesFile = juce::File(folder.file("settings"));
        Preferences(surroundings.preferencesFile).setHasShownHelp(true);
        host = std::make_shared<HostViewController>(surroundings);
        window = std::make_unique<HostWindow>("Hands", juce::Colours::black, host->view());
        window->setContentSize(480, 404);
        window->addKeyListener(&unusedKey);
        window->show();
        ASSERT_TRUE(windowHasKeyboard("Hands"));
        ASSERT_TRUE(soon([&] { return host->auViewController != nullptr; }));
        runMessagesFor(0.3);
    }

    [[nodiscard]] VelotrineAUViewControllerMac& editor() const { return *host->auViewController; }

    [[nodiscard]] RingEditorViewMac& panel() const { return *editor().ringEditor; }

    static bool soon(const std::function<bool()>& condition) { return runMessagesUntil(condition, 5.0); }

    /// Until what hands have done has come through the X server, which keeps the order. A menu takes all
    /// keys.
    void settle()
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

    void moveTo(const juce::Component& component, juce::Point<int> at)
    {
        const auto onScreen = component.localPointToGlobal(at);
        xdotool({"mousemove", std::to_string(onScreen.x), std::to_string(onScreen.y)});
        settle();
    }

    void clickIn(const juce::Component& component, juce::Point<int> at, const std::string& button = "1")
    {
        moveTo(component, at);
        xdotool({"click", button});
        settle();
    }

    void click(const juce::Component& component, const std::string& button = "1")
    {
        clickIn(component, component.getLocalBounds().getCentre(), button);
    }

    void press(const juce::Component& component)
    {
        moveTo(component, component.getLocalBounds().getCentre());
        xdotool({"mousedown", "1"});
        settle();
    }

    void moveBy(int x, int y)
    {
        xdotool({"mousemove_relative", "--sync", "--", std::to_string(x), std::to_string(y)});
        settle();
    }

    void letGo()
    {
        xdotool({"mouseup", "1"});
        settle();
    }

    void keys(const std::vector<std::string>& names)
    {
        for (const auto& name : names) {
            pressKey(name);
            settle();
        }
    }

    void type(const std::string& text)
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

    void openRing(int ring)
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

TEST_F(Hands, ReturnAndEscapeLeaveAFieldAndThenTheSpaceBarPlays)
{
    for (const auto* leaving : {"Return", "Escape"}) {
        click(*editor().bpmField);
        type("130");
        keys({leaving, "space"});
        EXPECT_TRUE(soon([&] { return editor().isPlaying; })) << leaving;
        clickIn(editor().view(), {5, 100});
        EXPECT_EQ(value(bpm), 130.0f) << leaving;
        keys({"space"});
        EXPECT_FALSE(editor().isPlaying);
    }
}

TEST_F(Hands, StepsTypedIntoTheRingsPanelStayWhenTheSpaceBarPlays)
{
    openRing(2);
    click(panel().field(RingEditorViewMac::steps));
    type("7");
    keys({"Return", "space"});
    EXPECT_TRUE(editor().isPlaying);
    clickIn(editor().view(), {5, 100});
    EXPECT_EQ(value(addressOf(RingParameter::spots, 2)), 7.0f);
}

TEST_F(Hands, AnEntryEndsBeforeTheClickThatEndsItActs)
{
    auto& stepper = *editor().bpmStepper;
    click(*editor().bpmField);
    type("150");
    EXPECT_EQ(editor().bpmField->getText(), "150");
    clickIn(stepper, {stepper.getWidth() / 2, 4});
    EXPECT_EQ(value(bpm), 151.0f);

    click(*editor().bpmField);
    type("90");
    click(*editor().playButton);
    EXPECT_EQ(value(bpm), 90.0f);
    EXPECT_TRUE(editor().isPlaying);

    click(*editor().bpmField);
    type("75");
    click(*host->presetPopup);
    EXPECT_TRUE(soon([&] { return value(bpm) == 75.0f; }));
    keys({"Escape"});

    click(*editor().bpmField);
    type("76");
    click(*editor().rootButton);
    EXPECT_EQ(value(bpm), 76.0f);
    keys({"Escape"});

    openRing(1);
    click(panel().field(RingEditorViewMac::octave));
    type("5");
    click(panel().slider(RingEditorViewMac::luck));
    EXPECT_EQ(value(addressOf(RingParameter::octave, 1)), 5.0f);
    EXPECT_NEAR(value(addressOf(RingParameter::probability, 1)), 0.5f, 0.1f);

    click(panel().field(RingEditorViewMac::octave));
    type("6");
    clickIn(panel(), {panel().getWidth() / 2, panel().getHeight() - 4});
    EXPECT_EQ(value(addressOf(RingParameter::octave, 1)), 6.0f) << "the bare panel";
}

TEST_F(Hands, AClickInTheVerySliderOfAnEntryActsOnItsResult)
{
    openRing(1);
    click(panel().field(RingEditorViewMac::luck));
    type("0.1");
    auto& slider = panel().slider(RingEditorViewMac::luck);
    clickIn(slider, {slider.getWidth() * 3 / 4, slider.getHeight() / 2});
    EXPECT_NEAR(value(addressOf(RingParameter::probability, 1)), 0.77f, 0.06f);
    EXPECT_EQ(panel().field(RingEditorViewMac::luck).getText().getFloatValue(),
              std::round(100.0f * value(addressOf(RingParameter::probability, 1))) / 100.0f);
}

TEST_F(Hands, APressedKnobHasTheKeysThoughAPresetWasChosenBefore)
{
    click(*host->presetPopup);
    keys({"Down", "Return"});
    ASSERT_TRUE(soon([&] { return host->audioUnit->currentPreset()->number == 1; }));
    press(*editor().activityKnob);
    moveBy(0, -20);
    letGo();
    const auto turned = value(activity);
    keys({"Down"});
    EXPECT_EQ(host->audioUnit->currentPreset()->number, 1);
    EXPECT_NEAR(value(activity), turned - 0.01f, 1e-5f);
}

TEST_F(Hands, EscapeTakesADragBack)
{
    const auto before = value(activity);
    press(*editor().activityKnob);
    moveBy(0, -15);
    EXPECT_NE(value(activity), before);
    keys({"Escape"});
    EXPECT_EQ(value(activity), before);
    moveBy(0, -15);
    letGo();
    EXPECT_EQ(value(activity), before);
}

TEST_F(Hands, OnlyThePrimaryButtonPresses)
{
    for (const auto* button : {"2", "3"}) {
        clickIn(*editor().circlesView, onRing(3), button);
        EXPECT_FALSE(panel().isVisible()) << button;
        click(*editor().playButton, button);
        EXPECT_FALSE(editor().isPlaying) << button;
        clickIn(*editor().bpmStepper, {9, 4}, button);
        EXPECT_EQ(value(bpm), 120.0f) << button;
        for (auto* opener :
             std::initializer_list<juce::Component*>{editor().rootButton.get(), host->presetPopup.get()}) {
            click(*opener, button);
            EXPECT_EQ(juce::Component::getNumCurrentlyModalComponents(), 0) << button;
        }
        click(*host->helpButton, button);
        EXPECT_EQ(host->helpWindowController, nullptr) << button;
    }
}

TEST_F(Hands, ASlowClickElsewhereClosesThePanelAndADragDoesNot)
{
    openRing(0);
    press(*editor().activityKnob);
    moveBy(0, -12);
    letGo();
    EXPECT_TRUE(panel().isVisible());
    moveTo(editor().view(), {4, 150});
    xdotool({"mousedown", "1"});
    runMessagesFor(0.7);
    letGo();
    EXPECT_FALSE(panel().isVisible());
}

TEST_F(Hands, APanelDraggedOutOfSightOpensInSight)
{
    openRing(0);
    const auto place = panel().getPosition();
    moveTo(panel(), {20, 8});
    xdotool({"mousedown", "1"});
    moveBy(-400, 0);
    letGo();
    EXPECT_LT(panel().getX(), -100);
    keys({"Escape"});
    openRing(3);
    EXPECT_EQ(panel().getPosition(), place);
}

TEST_F(Hands, AMenuPickedFromByMouseLeavesTheSpaceBarToPlay)
{
    click(*editor().scaleButton);
    ASSERT_TRUE(soon([] { return juce::Component::getNumCurrentlyModalComponents() > 0; }));
    keys({"Down", "Return"});
    EXPECT_TRUE(soon([&] { return value(addressOf(GlobalParameter::scaleType)) == 1.0f; }));
    keys({"space"});
    EXPECT_TRUE(editor().isPlaying);
    EXPECT_EQ(juce::Component::getNumCurrentlyModalComponents(), 0);
}

TEST_F(Hands, TabWalksThroughEverythingInReadingOrderAndShiftTabBack)
{
    auto& e = editor();
    const std::vector<juce::Component*> order{
        host->presetPopup.get(), host->helpButton.get(), e.rootButton.get(),   e.scaleButton.get(),
        e.bpmField.get(),        e.bpmStepper.get(),     e.playButton.get(),   e.circlesView.get(),
        e.activityKnob.get(),    e.boredomKnob.get(),    e.caloriesKnob.get(), e.drudgeryKnob.get()};
    for (int round = 0; round < 2; ++round)
        for (auto* next : order) {
            keys({"Tab"});
            EXPECT_TRUE(next->hasKeyboardFocus(false)) << next->getTitle();
        }
    for (std::size_t i = order.size() - 1; i-- > 0;) {
        keys({"shift+Tab"});
        EXPECT_TRUE(order[i]->hasKeyboardFocus(false)) << order[i]->getTitle();
    }
}

TEST_F(Hands, TabGoesOnFromAFieldThatReturnHasLeft)
{
    click(*editor().bpmField);
    keys({"Return", "Tab"});
    EXPECT_TRUE(editor().bpmStepper->hasKeyboardFocus(false));
}

TEST_F(Hands, ShiftTabInANewWindowBeginsAtTheEnd)
{
    keys({"shift+Tab"});
    EXPECT_TRUE(editor().drudgeryKnob->hasKeyboardFocus(false));
}

TEST_F(Hands, WhatTheKeyboardIsOnLooksDifferent)
{
    const auto pictureOf = [&](juce::Component& component) {
        return window->createComponentSnapshot(window->getLocalArea(&component, component.getLocalBounds()));
    };
    const auto differs = [](const juce::Image& one, const juce::Image& other) {
        int pixels = 0;
        for (int y = 0; y < one.getHeight(); ++y)
            for (int x = 0; x < one.getWidth(); ++x) {
                const auto change =
                    one.getPixelAt(x, y).getBrightness() - other.getPixelAt(x, y).getBrightness();
                pixels += std::abs(change) > 0.15f ? 1 : 0;
            }
        return pixels;
    };
    auto& e = editor();
    for (auto* control : std::initializer_list<juce::Component*>{
             host->presetPopup.get(), host->helpButton.get(), e.rootButton.get(), e.scaleButton.get(),
             e.bpmField.get(), e.bpmStepper.get(), e.playButton.get(), e.circlesView.get(),
             e.activityKnob.get()}) {
        const auto before = pictureOf(*control);
        keys({"Tab"});
        ASSERT_TRUE(control->hasKeyboardFocus(false)) << control->getTitle();
        EXPECT_GT(differs(before, pictureOf(*control)), 40) << control->getTitle();
    }
}

TEST_F(Hands, SpaceAndReturnPressWhatTabHasReached)
{
    editor().rootButton->grabKeyboardFocus();
    keys({"shift+Tab", "Tab", "Tab"}); // back, and by key to the scale
    ASSERT_TRUE(editor().scaleButton->hasKeyboardFocus(false));
    for (const auto* key : {"space", "Return"}) {
        keys({key});
        EXPECT_TRUE(soon([] { return juce::Component::getNumCurrentlyModalComponents() == 1; })) << key;
        keys({"Escape"});
        EXPECT_TRUE(soon([] { return juce::Component::getNumCurrentlyModalComponents() == 0; })) << key;
        EXPECT_TRUE(hasKeyboard(*editor().scaleButton)) << key;
    }
    EXPECT_FALSE(editor().isPlaying);
}

TEST_F(Hands, ArrowsPagesAndEndsChooseAndTurn)
{
    keys({"Tab", "Down", "Down", "Up"});
    EXPECT_EQ(host->audioUnit->currentPreset()->number, 1);
    keys({"End"});
    EXPECT_EQ(host->audioUnit->currentPreset()->number, 9);
    const auto root = value(addressOf(GlobalParameter::rootNote));
    keys({"Tab", "Tab", "Down", "Page_Down"});
    EXPECT_EQ(value(addressOf(GlobalParameter::rootNote)), root + 5.0f);
    keys({"Home", "Tab", "End"});
    EXPECT_EQ(value(addressOf(GlobalParameter::rootNote)), 0.0f);
    EXPECT_EQ(value(addressOf(GlobalParameter::scaleType)), 3.0f);
    const auto before = value(bpm);
    keys({"Tab", "Tab", "Up", "Page_Up"});
    EXPECT_EQ(value(bpm), before + 11.0f);
    keys({"Tab", "Tab", "Tab", "Home", "Page_Up", "Up"});
    EXPECT_NEAR(value(activity), 0.11f, 1e-6f);
}

TEST_F(Hands, ARingIsReachedOpenedAndLeftByKeysAlone)
{
    auto& rings = *editor().circlesView;
    rings.grabKeyboardFocus();
    keys({"Up", "Up", "Return"});
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(panel().ringIndex, 2);
    EXPECT_TRUE(hasKeyboard(panel().field(RingEditorViewMac::steps)));
    type("11");
    keys({"Tab"});
    EXPECT_EQ(value(addressOf(RingParameter::spots, 2)), 11.0f);
    EXPECT_TRUE(panel().slider(RingEditorViewMac::shift).hasKeyboardFocus(false));
    keys({"Right"});
    EXPECT_NEAR(value(addressOf(RingParameter::phase, 2)), 0.01f, 1e-6f);
    type("0.5");
    keys({"Return"});
    EXPECT_EQ(value(addressOf(RingParameter::phase, 2)), 0.5f);
    EXPECT_TRUE(hasKeyboard(panel().slider(RingEditorViewMac::shift))) << "where the entry began";
    keys({"Escape"});
    EXPECT_FALSE(panel().isVisible());
    EXPECT_TRUE(hasKeyboard(rings));
    EXPECT_TRUE(rings.isMarked());
    keys({"Up", "Return"});
    EXPECT_EQ(panel().ringIndex, 3);
}

TEST_F(Hands, OneEscapeTakesAnEntryBackAndTheNextClosesThePanel)
{
    openRing(2);
    click(panel().field(RingEditorViewMac::steps));
    type("9");
    keys({"Escape"});
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(panel().field(RingEditorViewMac::steps).getText(), "4");
    keys({"Escape"});
    EXPECT_FALSE(panel().isVisible());
    EXPECT_EQ(value(addressOf(RingParameter::spots, 2)), 4.0f);
}

TEST_F(Hands, DigitsOnAKnobAreItsValue)
{
    auto& knob = *editor().boredomKnob;
    click(knob);
    type("70");
    ASSERT_NE(knob.entryField(), nullptr);
    EXPECT_TRUE(knob.entryField()->isVisible());
    EXPECT_EQ(knob.entryField()->getText(), "70");
    keys({"Return"});
    EXPECT_EQ(value(addressOf(GlobalParameter::boredom)), 0.7f);
    EXPECT_FALSE(knob.entryField()->isVisible());
    EXPECT_TRUE(knob.hasKeyboardFocus(false));
    type("9");
    keys({"Escape", "Up"});
    EXPECT_NEAR(value(addressOf(GlobalParameter::boredom)), 0.71f, 1e-5f);
    type("0.2");
    click(*editor().playButton);
    EXPECT_EQ(value(addressOf(GlobalParameter::boredom)), 0.2f);
}

/// What a screen reader reads as an element's value; empty for none.
juce::String valueRead(const juce::AccessibilityHandler& element)
{
    if (const auto* text = element.getTextInterface())
        return text->getText({0, text->getTotalNumCharacters()});
    const auto* value = element.getValueInterface();
    return value != nullptr ? value->getCurrentValueAsString() : juce::String();
}

void collectElements(const juce::AccessibilityHandler& element,
                     std::map<juce::Component*, juce::String>& values,
                     std::map<juce::Component*, juce::String>& names)
{
    names[&const_cast<juce::Component&>(element.getComponent())] = element.getTitle();
    values[&const_cast<juce::Component&>(element.getComponent())] = valueRead(element);
    for (const auto* child : element.getChildren())
        collectElements(*child, values, names);
}

TEST_F(Hands, EveryControlHasANameAndItsValueAsTextForAScreenReader)
{
    openRing(2);
    std::map<juce::Component*, juce::String> values;
    std::map<juce::Component*, juce::String> names;
    collectElements(*window->getAccessibilityHandler(), values, names);
    auto& e = editor();
    const std::vector<std::tuple<juce::Component*, const char*, const char*>> expected{
        {host->presetPopup.get(), "Preset", "Default"},
        {e.rootButton.get(), "Root", "E"},
        {e.scaleButton.get(), "Scale", "Major"},
        {e.bpmField.get(), "BPM", "120.0"},
        {e.bpmStepper.get(), "BPM", "120.0"},
        {e.playButton.get(), "Play", "Stopped"},
        {e.circlesView.get(), "Rings", "Ring 3, 4 spots"},
        {e.activityKnob.get(), "ACTIVITY", "0 %"},
        {&panel().slider(RingEditorViewMac::steps), "STEPS", "4"},
        {&panel().field(RingEditorViewMac::steps), "STEPS", "4"},
        {&panel().slider(RingEditorViewMac::ringVol), "VOLUME", "0.70"},
        {&panel().field(RingEditorViewMac::ringVol), "VOLUME", "0.70"},
    };
    for (const auto& [control, name, value] : expected) {
        EXPECT_EQ(names[control], name);
        EXPECT_EQ(values[control], value) << name;
    }
    EXPECT_EQ(names[host->helpButton.get()], "Help");
    const auto everyControl = [&](const auto& self, juce::Component& parent) -> void {
        for (auto* child : parent.getChildren()) {
            if (child->isShowing() && child->getWantsKeyboardFocus()) {
                EXPECT_TRUE(names[child].isNotEmpty()) << child->getName();
                if (child != host->helpButton.get()) {
                    EXPECT_TRUE(values[child].isNotEmpty()) << names[child];
                }
            }
            self(self, *child);
        }
    };
    everyControl(everyControl, *window);
}

TEST_F(Hands, AWindowThatComesBackToTheFrontDoesNotPutAFieldThatWasLeftInUseAgain)
{
    click(*editor().bpmField);
    type("99");
    keys({"Return"});
    juce::Component content;
    HostWindow another("Another", juce::Colours::black, content);
    another.setContentSize(80, 80);
    another.show();
    ASSERT_TRUE(windowHasKeyboard("Another"));
    another.setVisible(false);
    xdotool({"windowactivate", "--sync", windowsTitled("Hands").at(0)});
    ASSERT_TRUE(windowHasKeyboard("Hands"));
    runMessagesFor(0.3);
    keys({"space"});
    EXPECT_TRUE(editor().isPlaying);
    EXPECT_EQ(value(bpm), 99.0f);
}

} // namespace
} // namespace velotrine
