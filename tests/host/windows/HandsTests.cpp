// The window under hands: what a press, a click or a key reaches, whatever was touched before.

#include "tests/host/windows/Hands.h"

namespace velotrine {
namespace {

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

TEST_F(Hands, AClickInTheSliderOfAnEntryActsOnWhatWasTyped)
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

TEST_F(Hands, EscapeUndoesADrag)
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

TEST_F(Hands, AWindowThatComesBackToTheFrontDoesNotReopenAFieldThatWasLeft)
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
