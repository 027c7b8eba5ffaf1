#include "editor/VelotrineAUViewControllerMac.h"

#include "audiounit/VelotrineComponent.h"
#include "tests/editor/MouseEvents.h"
#include "tests/support/MessageLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace velotrine {
namespace {

using enum AUParameterAutomationEventType;

struct Event
{
    ParameterAddress address;
    float value;
    AUParameterAutomationEventType type;

    bool operator==(const Event&) const = default;
};

class Editor : public testing::Test
{
protected:
    Editor()
    {
        controller = std::make_unique<VelotrineAUViewControllerMac>();
        controller->audioUnit = unit;
        controller->view().setSize(480, 360);
        std::ignore = unit->parameterTree()->tokenByAddingParameterAutomationObserver(
            [this](const AUParameterAutomationEvent& event) {
                if (juce::MessageManager::existsAndIsCurrentThread())
                    events.push_back({event.address, event.value, event.eventType});
            });
    }

    /// Lets what was brought to the main thread happen.
    static void runMessages() { runMessagesFor(0.03); }

    void write(ParameterAddress address, float value)
    {
        unit->parameterTree()->parameterWithAddress(address)->setValue(value);
    }

    float value(ParameterAddress address)
    {
        return unit->parameterTree()->parameterWithAddress(address)->value();
    }

    static std::vector<Event> edit(ParameterAddress address, float before, float after)
    {
        return {{address, before, touch},
                {address, after, AUParameterAutomationEventType::value},
                {address, after, release}};
    }

    void typeTempo(const juce::String& text)
    {
        controller->bpmField->setText(text, false);
        controller->bpmField->keyPressed(juce::KeyPress(juce::KeyPress::returnKey));
    }

    std::shared_ptr<VelotrineAudioUnit> unit = std::make_shared<VelotrineAudioUnit>(
        velotrineComponentDescription(), AudioComponentInstantiationOptions{});
    std::unique_ptr<VelotrineAUViewControllerMac> controller;
    std::vector<Event> events;
};

constexpr auto activity = addressOf(GlobalParameter::activity);
constexpr auto bpm = addressOf(GlobalParameter::bpm);
constexpr auto sync = addressOf(GlobalParameter::sync);

TEST_F(Editor, AValueFromElsewhereMovesTheKnobAndIsNotSentBack)
{
    write(activity, 0.8f);
    write(addressOf(RingParameter::spots, 3), 9.0f);
    events.clear();
    runMessages();
    EXPECT_FLOAT_EQ(controller->activityKnob->value(), 0.8f);
    EXPECT_EQ(controller->circlesView->spotsPerRing[3], 9);
    EXPECT_TRUE(events.empty());
}

TEST_F(Editor, AValueFromElsewhereIsTheOnlyOneReadAgain)
{
    unit->dspKernel->setParameter(addressOf(GlobalParameter::boredom), 0.875f); // and nobody is told
    write(addressOf(GlobalParameter::activity), 0.25f);
    runMessages();
    EXPECT_EQ(controller->activityKnob->value(), 0.25f);
    EXPECT_EQ(controller->boredomKnob->value(), 0.5f);
    controller->refreshControls();
    EXPECT_EQ(controller->boredomKnob->value(), 0.875f);
}

TEST_F(Editor, APresetAndAStateShowThemselves)
{
    unit->setCurrentPreset(unit->factoryPresets()[4]);
    runMessages();
    EXPECT_FLOAT_EQ(controller->boredomKnob->value(), value(addressOf(GlobalParameter::boredom)));
    EXPECT_EQ(controller->circlesView->ringSpotCounts[2],
              static_cast<std::int64_t>(value(addressOf(RingParameter::spots, 2))));
    auto state = unit->fullState();
    write(addressOf(GlobalParameter::calories), 0.9f);
    runMessages();
    unit->setFullState(state);
    runMessages();
    EXPECT_FLOAT_EQ(controller->caloriesKnob->value(), value(addressOf(GlobalParameter::calories)));
}

TEST_F(Editor, AKnobsDragHoldsItsParameterFromBeginningToEnd)
{
    const auto before = value(activity);
    auto& knob = *controller->activityKnob;
    knob.handleDrag(DragState::began, {});
    knob.handleDrag(DragState::changed, {6.0f, 0.0f});
    knob.handleDrag(DragState::changed, {9.0f, 0.0f});
    knob.handleDrag(DragState::ended, {});
    ASSERT_EQ(events.size(), 4u);
    EXPECT_EQ(events[0], (Event{activity, before, touch}));
    EXPECT_EQ(events[1].type, AUParameterAutomationEventType::value);
    EXPECT_GT(events[2].value, events[1].value);
    EXPECT_EQ(events[3], (Event{activity, knob.value(), release}));
}

TEST_F(Editor, AnEditOfOneMomentHoldsItsParameterForThatMoment)
{
    write(activity, 0.1f);
    runMessages();
    events.clear();
    controller->activityKnob->handleDoubleClick();
    EXPECT_EQ(events, edit(activity, 0.1f, 0.5f));
    events.clear();
    const auto root = value(addressOf(GlobalParameter::rootNote));
    controller->pickRoot(6);
    EXPECT_EQ(events, edit(addressOf(GlobalParameter::rootNote), root, 6.0f));
    EXPECT_EQ(controller->rootButton->getButtonText(), "F#");
    events.clear();
    controller->pickScale(3);
    EXPECT_EQ(controller->scaleButton->getButtonText(), "Minor Pentatonic");
    EXPECT_EQ(events.size(), 3u);
}

TEST_F(Editor, ATypedTempoIsBoundedToFortyAndThreeHundred)
{
    for (const auto& [text, tempo, shown] :
         std::vector<std::tuple<const char*, float, const char*>>{{"500", 300.0f, "300.0"},
                                                                  {"12", 40.0f, "40.0"},
                                                                  {"97.26", 97.26f, "97.3"},
                                                                  {"abc", 40.0f, "40.0"},
                                                                  {"nan", 40.0f, "40.0"},
                                                                  {"-inf", 40.0f, "40.0"}}) {
        write(bpm, 100.0f);
        runMessages();
        typeTempo(text);
        EXPECT_EQ(value(bpm), tempo) << text;
        EXPECT_EQ(controller->bpmField->getText(), shown);
        EXPECT_EQ(controller->bpmStepper->value(), static_cast<double>(tempo));
    }
}

TEST_F(Editor, TheStepperMovesTheTempoByOne)
{
    write(bpm, 299.5f);
    runMessages();
    controller->bpmStepper->keyPressed(juce::KeyPress(juce::KeyPress::upKey));
    EXPECT_EQ(value(bpm), 300.0f);
    controller->bpmStepper->keyPressed(juce::KeyPress(juce::KeyPress::downKey));
    EXPECT_EQ(value(bpm), 299.0f);
    EXPECT_EQ(controller->bpmField->getText(), "299.0");
}

TEST_F(Editor, WhatIsBeingTypedStaysWhenAValueArrives)
{
    controller->bpmField->show("120.0");
    EXPECT_EQ(controller->bpmField->getText(), "120.0");
    write(bpm, 90.0f);
    runMessages();
    EXPECT_EQ(controller->bpmField->getText(), "90.0");
}

TEST_F(Editor, WhereTheHostGivesNoTempoSyncIsOffAndDimAndStaysSo)
{
    auto other = std::make_unique<VelotrineAUViewControllerMac>();
    other->audioUnit = unit;
    other->hostProvidesSync = false;
    write(sync, 1.0f);
    std::ignore = other->view();
    EXPECT_EQ(value(sync), 0.0f);
    EXPECT_FALSE(other->syncButton->isEnabled());
    EXPECT_FALSE(other->syncButton->getToggleState());
    EXPECT_NEAR(other->syncButton->getAlpha(), 0.3f, 0.01f);
    EXPECT_NEAR(other->syncTextLabel->getAlpha(), 0.3f, 0.01f);
    EXPECT_TRUE(other->bpmPrefixLabel->isEnabled());
    EXPECT_TRUE(other->bpmField->isEnabled());
    EXPECT_FALSE(other->bpmField->isReadOnly());
    EXPECT_EQ(other->bpmField->getAlpha(), 1.0f);
    EXPECT_TRUE(other->bpmStepper->isEnabled());
    EXPECT_EQ(other->bpmStepper->getAlpha(), 1.0f);
    EXPECT_TRUE(other->playButton->isEnabled());
    write(sync, 1.0f);
    runMessages();
    EXPECT_EQ(value(sync), 0.0f);
}

TEST_F(Editor, WithSyncOnTheTempoIsTheHostsAndPlayWaits)
{
    write(sync, 1.0f);
    runMessages();
    EXPECT_TRUE(controller->syncButton->getToggleState());
    EXPECT_FALSE(controller->bpmPrefixLabel->isEnabled());
    EXPECT_TRUE(controller->bpmField->isEnabled()) << "a tempo for when Sync is off again";
    EXPECT_TRUE(controller->bpmStepper->isEnabled());
    EXPECT_FALSE(controller->playButton->isEnabled());
    controller->syncButton->setToggleState(false, juce::dontSendNotification);
    controller->syncTapped();
    EXPECT_EQ(value(sync), 0.0f);
    EXPECT_TRUE(controller->bpmPrefixLabel->isEnabled());
}

TEST_F(Editor, PlayStartsAndStopsTheInternalClockAndAnEditorOpenedLaterShowsIt)
{
    controller->playTapped();
    EXPECT_TRUE(unit->dspKernel->internalPlaying);
    auto later = std::make_unique<VelotrineAUViewControllerMac>();
    later->audioUnit = unit;
    std::ignore = later->view();
    EXPECT_TRUE(later->isPlaying);
    EXPECT_TRUE(later->playButton->getToggleState());
    controller->playTapped();
    EXPECT_FALSE(unit->dspKernel->internalPlaying);
}

TEST_F(Editor, ASelectedRingOpensItsPanelAndEveryRowWritesItsParameter)
{
    controller->circlesView->onRingSelected(3);
    auto& panel = *controller->ringEditor;
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.title().getText(), "RING 4");
    for (int kind = 0; kind < RingEditorViewMac::kindCount; ++kind) {
        panel.onParamChanged(kind, 3, 1.0f);
        EXPECT_EQ(value(9u + 5u * static_cast<ParameterAddress>(kind) + 3u), 1.0f) << kind;
    }
    runMessages();
    EXPECT_EQ(panel.field(RingEditorViewMac::octave).getText(), "1");
    EXPECT_EQ(panel.field(RingEditorViewMac::luck).getText(), "1.00");
}

TEST_F(Editor, DismissingThePanelLetsTheRingGo)
{
    controller->circlesView->onRingSelected(1);
    controller->dismissRingEditor();
    EXPECT_FALSE(controller->ringEditor->isVisible());
    EXPECT_EQ(controller->circlesView->selectedRing, std::nullopt);
}

TEST(ClickOutsidePanel, ClosesOnAClickElsewhereAndNotOnADragOrAClickInside)
{
    juce::Component view;
    juce::Component panel;
    view.setSize(200, 200);
    view.addAndMakeVisible(panel);
    panel.setBounds(50, 50, 50, 50);
    int clicks = 0;
    ClickOutside outside;
    outside.onClick = [&] { ++clicks; };
    outside.mouseUp(clickAt(view, {10.0f, 10.0f}));
    EXPECT_EQ(clicks, 0) << "not enabled";
    outside.enable(panel);
    outside.mouseUp(clickAt(view, {60.0f, 60.0f}));
    outside.mouseUp(clickAt(panel, {5.0f, 5.0f}));
    const auto press = [&](int button) {
        const juce::Point<float> start(10.0f, 10.0f);
        outside.mouseDown(clickAt(view, start, button));
        return [&outside, &view, start, button](juce::Point<float> furthest) {
            outside.mouseDrag(mouseAt(view, furthest, start, true, 0, button));
            outside.mouseUp(mouseAt(view, start, start, true, 0, button));
        };
    };
    press(juce::ModifierKeys::leftButtonModifier)({150.0f, 10.0f});
    press(juce::ModifierKeys::rightButtonModifier)({10.0f, 10.0f});
    EXPECT_EQ(clicks, 0);
    outside.mouseDown(clickAt(view, {10.0f, 10.0f}));
    outside.mouseUp(clickAt(view, {10.0f, 10.0f}));
    EXPECT_EQ(clicks, 1);
    press(juce::ModifierKeys::leftButtonModifier)({12.0f, 10.0f});
    EXPECT_EQ(clicks, 2) << "a slow click, which the toolkit takes for a drag";
}

TEST_F(Editor, AGestureThatChangesNothingWritesNothing)
{
    // What automation sets while a control is held must stay.
    int writes = 0;
    unit->parameterTree()->setImplementorValueObserver([&](const AUParameter&, AUValue) { ++writes; });
    auto& knob = *controller->activityKnob;
    knob.handleDrag(DragState::began, {});
    knob.handleDrag(DragState::ended, {});
    EXPECT_EQ(writes, 0);
    EXPECT_EQ(events.size(), 2u);
    knob.handleDrag(DragState::began, {});
    knob.handleDrag(DragState::changed, {9.0f, 0.0f});
    knob.handleDrag(DragState::ended, {});
    EXPECT_EQ(writes, 1);
}

TEST_F(Editor, APanelDraggedOutOfSightOpensWhereTheLayoutPutsIt)
{
    auto& panel = *controller->ringEditor;
    controller->showRingEditor(0);
    const auto place = panel.getPosition();
    for (const auto& [x, y] :
         {std::pair(470, 10), std::pair(-300, 10), std::pair(10, -40), std::pair(10, 350)}) {
        panel.setTopLeftPosition(x, y);
        controller->dismissRingEditor();
        controller->showRingEditor(1);
        EXPECT_EQ(panel.getPosition(), place) << x << ' ' << y;
    }
    const auto inside = place.translated(3, 5);
    panel.setTopLeftPosition(inside);
    controller->dismissRingEditor();
    controller->showRingEditor(2);
    EXPECT_EQ(panel.getPosition(), inside);
}

TEST_F(Editor, TheUpperEdgeOfAPanelBeyondTheWindowsLowerEdgeIsEnoughToDragItBack)
{
    auto& panel = *controller->ringEditor;
    controller->showRingEditor(0);
    const auto lowest = 360 - static_cast<int>(std::ceil(panel.titleArea().getBottom()));
    panel.setTopLeftPosition(40, lowest);
    controller->dismissRingEditor();
    controller->showRingEditor(0);
    EXPECT_EQ(panel.getY(), lowest);
}

TEST_F(Editor, AKnobsValueIsTypedInPercentOrFromZeroToOne)
{
    auto& knob = *controller->activityKnob;
    const auto typed = [&](const juce::String& text) {
        write(activity, 0.3f);
        runMessages();
        knob.keyPressed(juce::KeyPress('0', {}, '0'));
        knob.entryField()->setText(text, false);
        knob.entryField()->keyPressed(juce::KeyPress(juce::KeyPress::returnKey));
        return value(activity);
    };
    EXPECT_EQ(typed("70"), 0.7f);
    EXPECT_EQ(typed(" 12.5 % "), 0.125f);
    EXPECT_EQ(typed(".25"), 0.25f);
    EXPECT_EQ(typed("1"), 1.0f);
    EXPECT_EQ(typed("900"), 1.0f);
    EXPECT_EQ(typed("-3"), 0.0f);
    EXPECT_EQ(typed("loud"), 0.3f) << "no number changes nothing";
}

TEST_F(Editor, MissingUnitsLeaveTheControlsAsTheyAre)
{
    VelotrineAUViewControllerMac alone;
    std::ignore = alone.view();
    alone.refreshControls();
    alone.playTapped();
    EXPECT_EQ(alone.activityKnob->value(), 0.5f);
    EXPECT_EQ(alone.bpmField->getText(), "120.0");
}

TEST_F(Editor, AUnitMadeForAViewThatIsThereIsConnectedAtOnce)
{
    VelotrineAUViewControllerMac alone;
    std::ignore = alone.view();
    const auto made = alone.createAudioUnit(velotrineComponentDescription());
    EXPECT_EQ(alone.circlesView->clockPhase, &made->dspKernel->clockPhaseBuf);
    made->parameterTree()->parameterWithAddress(activity)->setValue(0.9f);
    runMessages();
    EXPECT_FLOAT_EQ(alone.activityKnob->value(), 0.9f);
}

TEST_F(Editor, AnotherUnitsEditorDoesNotHearOfTheOneBefore)
{
    VelotrineAUViewControllerMac alone;
    std::ignore = alone.view();
    const auto first = alone.createAudioUnit(velotrineComponentDescription());
    const auto second = alone.createAudioUnit(velotrineComponentDescription());
    // Nobody is told of this, so the knob shows it only once the editor looks.
    second->dspKernel->activity = 0.9f;
    first->parameterTree()->parameterWithAddress(activity)->setValue(0.3f);
    first->setCurrentPreset(first->factoryPresets()[2]);
    runMessages();
    EXPECT_EQ(alone.activityKnob->value(), 0.5f);
    second->parameterTree()->parameterWithAddress(activity)->setValue(0.7f);
    runMessages();
    EXPECT_EQ(alone.activityKnob->value(), 0.7f);
}

TEST_F(Editor, GoesAwayWhileAnotherThreadWritesParameters)
{
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (int i = 0; !stop; ++i)
            write(activity, static_cast<float>(i % 100) / 100.0f);
    });
    for (int i = 0; i < 10; ++i) {
        controller = std::make_unique<VelotrineAUViewControllerMac>();
        controller->audioUnit = unit;
        std::ignore = controller->view();
        runMessagesFor(0.005);
    }
    controller.reset();
    stop = true;
    writer.join();
    runMessages();
}

} // namespace
} // namespace velotrine
