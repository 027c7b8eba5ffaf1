#include "editor/SettingsTools.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "audiounit/VelotrineComponent.h"
#include "editor/VelotrineAUViewControllerMac.h"
#include "takes/SettingsFile.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velotrine {
namespace {

using juce::KeyPress;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr auto activity = addressOf(GlobalParameter::activity);
constexpr auto boredom = addressOf(GlobalParameter::boredom);
constexpr auto rootNote = addressOf(GlobalParameter::rootNote);
constexpr auto sync = addressOf(GlobalParameter::sync);
constexpr auto bpm = addressOf(GlobalParameter::bpm);

/// The editor of an instrument, and what can be undone in it.
class SettingsToolsTest : public testing::Test
{
protected:
    void SetUp() override { open(true); }

    void open(bool hostProvidesSync)
    {
        controller = std::make_unique<VelotrineAUViewControllerMac>();
        controller->audioUnit = unit;
        controller->hostProvidesSync = hostProvidesSync;
        controller->view().setSize(480, 360);
        runMessages();
    }

    static void runMessages() { runMessagesFor(0.03); }

    [[nodiscard]] SettingsTools& tools() const { return *controller->tools; }

    [[nodiscard]] EditableSettings& settings() const { return tools().settings; }

    void hostSets(ParameterAddress address, float value)
    {
        unit->parameterTree()->parameterWithAddress(address)->setValue(value);
        runMessages();
    }

    [[nodiscard]] float value(ParameterAddress address) const
    {
        return unit->parameterTree()->parameterWithAddress(address)->value();
    }

    void press(int key, int modifiers) const { tools().keyPressed(KeyPress(key, modifiers, 0)); }

    void pressUndo() const { press('z', juce::ModifierKeys::commandModifier); }

    void pressRedo() const
    {
        press('z', juce::ModifierKeys::commandModifier | juce::ModifierKeys::shiftModifier);
    }

    /// "Title | keys"; in brackets when greyed out, with a star when ticked.
    [[nodiscard]] std::vector<std::string> shown() const
    {
        std::vector<std::string> lines;
        for (const auto& entry : tools().menu.entries()) {
            auto line = entry.title.isEmpty() ? juce::String("-") : entry.title;
            if (entry.key.isValid())
                line << " | " << keyText(entry.key);
            if (entry.isTicked)
                line << " *";
            lines.push_back((entry.isEnabled ? line : "[" + line + "]").toStdString());
        }
        return lines;
    }

    void choose(const juce::String& title) const
    {
        for (const auto& entry : tools().menu.entries())
            if (entry.title == title && entry.isEnabled)
                return entry.perform();
        FAIL() << "no entry " << title;
    }

    void dragKnob(AURotaryControl& knob, std::initializer_list<float> ways)
    {
        knob.handleDrag(DragState::began, {});
        for (const auto way : ways)
            knob.handleDrag(DragState::changed, {way, 0.0f});
        knob.handleDrag(DragState::ended, {});
    }

    std::shared_ptr<VelotrineAudioUnit> unit = std::make_shared<VelotrineAudioUnit>(
        velotrineComponentDescription(), AudioComponentInstantiationOptions::none);
    std::unique_ptr<VelotrineAUViewControllerMac> controller;
};

TEST_F(SettingsToolsTest, ADragOfAKnobIsOneStepThatNamesTheKnob)
{
    dragKnob(*controller->boredomKnob, {3.0f, 6.0f, 9.0f});
    const auto after = value(boredom);
    EXPECT_GT(after, 0.5f);
    EXPECT_EQ(settings().undoName(), "Boredom");
    pressUndo();
    EXPECT_EQ(value(boredom), 0.5f);
    EXPECT_EQ(settings().undoName(), "");
    EXPECT_EQ(settings().redoName(), "Boredom");
    pressRedo();
    EXPECT_EQ(value(boredom), after);
    pressUndo();
    press('y', juce::ModifierKeys::commandModifier);
    EXPECT_EQ(value(boredom), after) << "Ctrl+Y, too";
    runMessages();
    EXPECT_EQ(controller->boredomKnob->value(), after);
}

TEST_F(SettingsToolsTest, ADragThatIsTakenBackIsNoStep)
{
    auto& knob = *controller->boredomKnob;
    hostSets(boredom, 0.123f);
    knob.handleDrag(DragState::began, {});
    knob.handleDrag(DragState::changed, {9.0f, 0.0f});
    knob.handleDrag(DragState::cancelled, {});
    EXPECT_EQ(settings().undoName(), "");
}

TEST_F(SettingsToolsTest, EveryControlMakesSteps)
{
    const auto start = settings().now();
    controller->activityKnob->keyPressed(KeyPress(KeyPress::upKey));
    controller->drudgeryKnob->handleDoubleClick(); // it is in the middle: no step
    controller->caloriesKnob->keyPressed(KeyPress(KeyPress::homeKey));
    controller->pickRoot(3);
    controller->pickScale(2);
    controller->bpmEntryEnded("99");
    controller->bpmStepper->keyPressed(KeyPress(KeyPress::upKey));
    controller->syncButton->setToggleState(false, juce::dontSendNotification);
    controller->syncTapped();
    controller->showRingEditor(1);
    controller->ringEditor->slider(RingEditorViewMac::luck).keyPressed(KeyPress(KeyPress::endKey));
    controller->ringEditor->field(RingEditorViewMac::octave).onEntryEnded("6");
    settings().choosePreset(4);
    const auto end = settings().now();

    std::vector<std::string> undone;
    while (!settings().undoName().empty()) {
        undone.push_back(settings().undoName());
        settings().undo();
    }
    EXPECT_THAT(undone, ElementsAre("Preset Precession", "Octave R2", "Probability R2", "Sync", "BPM", "BPM",
                                    "Scale", "Root Note", "Calories", "Activity"));
    EXPECT_EQ(settings().now(), start);
    for (std::size_t i = 0; i < undone.size(); ++i)
        settings().redo();
    EXPECT_EQ(settings().now(), end);
}

TEST_F(SettingsToolsTest, WhatAHostSetsIsNoStepAndStays)
{
    hostSets(activity, 0.9f);
    EXPECT_EQ(settings().undoName(), "");
    controller->pickRoot(3);
    hostSets(bpm, 66.0f);
    settings().undo();
    EXPECT_EQ(value(rootNote), 0.0f);
    EXPECT_EQ(value(activity), 0.9f);
    EXPECT_EQ(value(bpm), 66.0f);

    settings().redo();
    hostSets(rootNote, 7.0f);
    EXPECT_EQ(settings().undoName(), "") << "the host has put its own in the place of what was picked";
    settings().undo();
    EXPECT_EQ(value(rootNote), 7.0f);
}

TEST_F(SettingsToolsTest, AnUndoWritesOnlyWhatItChanges)
{
    controller->pickRoot(3);
    std::vector<AUParameterAddress> written;
    std::ignore = unit->parameterTree()->tokenByAddingParameterObserver(
        [&](AUParameterAddress address, AUValue) { written.push_back(address); });
    settings().undo();
    EXPECT_THAT(written, ElementsAre(rootNote));
}

TEST_F(SettingsToolsTest, NothingIsUndoneWhileAControlIsHeld)
{
    controller->pickRoot(3);
    controller->boredomKnob->handleDrag(DragState::began, {});
    pressUndo();
    EXPECT_EQ(value(rootNote), 3.0f);
    controller->boredomKnob->handleDrag(DragState::ended, {});
    pressUndo();
    EXPECT_EQ(value(rootNote), 0.0f);
}

TEST_F(SettingsToolsTest, TheHistoryOutlivesTheEditor)
{
    controller->pickRoot(3);
    const auto history = controller->history;
    controller = std::make_unique<VelotrineAUViewControllerMac>();
    controller->audioUnit = unit;
    controller->history = history;
    std::ignore = controller->view();
    EXPECT_EQ(settings().undoName(), "Root Note");
    settings().undo();
    EXPECT_EQ(value(rootNote), 0.0f);
}

TEST_F(SettingsToolsTest, CopiedTextIsAStateThatPastesAsTheSameSettings)
{
    settings().choosePreset(7);
    settings().setSeed(5);
    settings().setSameMusicAtEveryStart(true);
    const auto copied = settings().now();
    const auto text = settings().text();
    settings().choosePreset(2);
    settings().setSeed(6);
    EXPECT_EQ(settings().paste(text), "");
    EXPECT_EQ(settings().now(), copied);
    EXPECT_EQ(settings().undoName(), "Paste");
    settings().undo();
    EXPECT_EQ(settings().now().seed, 6u);
    EXPECT_EQ(settings().now().preset->name, "Phase 4");
}

TEST_F(SettingsToolsTest, TextThatIsNoStateChangesNothingAndSaysWhy)
{
    const auto before = settings().now();
    for (const auto* text : {"good morning", "{}", "[1]", R"({"version": 2})", "{\"version\": 1, \"para"}) {
        const auto error = settings().paste(text);
        EXPECT_THAT(error, testing::StartsWith("The clipboard holds no settings: ")) << text;
        EXPECT_THAT(error, testing::EndsWith(".")) << text;
    }
    EXPECT_EQ(settings().now(), before);
    EXPECT_EQ(settings().undoName(), "");
}

TEST_F(SettingsToolsTest, WhereNoHostGivesTheTempoSyncIsNotPasted)
{
    const auto withSync = settings().text();
    open(false);
    EXPECT_EQ(value(sync), 0.0f);
    EXPECT_EQ(settings().paste(withSync), "");
    EXPECT_EQ(value(sync), 0.0f);
    settings().choosePreset(0);
    EXPECT_EQ(value(sync), 0.0f);
    while (!settings().undoName().empty())
        settings().undo();
    EXPECT_EQ(value(sync), 0.0f);
}

TEST_F(SettingsToolsTest, TheMenuSaysWhatCanBeDone)
{
    EXPECT_THAT(shown(),
                ElementsAre("[Undo | Ctrl+Z]", "[Redo | Ctrl+Shift+Z]", "-", "Copy Settings | Ctrl+C",
                            "Paste Settings | Ctrl+V", "Open…", "Save…", "-", "Seed 12345…", "Throw the Dice",
                            "Same Music at Every Start", "-", "Presets"));
    choose("Same Music at Every Start");
    controller->pickRoot(3);
    settings().undo();
    const auto now = shown();
    EXPECT_EQ(now.at(0), "Undo Same Music at Every Start | Ctrl+Z");
    EXPECT_EQ(now.at(1), "Redo Root Note | Ctrl+Shift+Z");
    EXPECT_EQ(now.at(10), "Same Music at Every Start *");
    EXPECT_TRUE(unit->dspKernel->sameMusicAtEveryStart);
}

TEST_F(SettingsToolsTest, ThrownDiceAreAnotherSeedThatCanBeTakenBack)
{
    choose("Throw the Dice");
    const std::uint32_t first = unit->dspKernel->seed;
    choose("Throw the Dice");
    EXPECT_NE(unit->dspKernel->seed, first) << "once in four thousand million times";
    choose("Undo Throw the Dice");
    EXPECT_EQ(unit->dspKernel->seed, first);
    choose("Undo Throw the Dice");
    EXPECT_EQ(unit->dspKernel->seed, defaultSeed);
}

TEST_F(SettingsToolsTest, ThePresetsAreInTheMenuAndTheChosenOneIsTicked)
{
    const auto presets = tools().menu.entries().back();
    ASSERT_EQ(presets.below.size(), presetCount);
    presets.below[5].perform();
    EXPECT_EQ(unit->currentPreset()->number, 5);
    EXPECT_EQ(unit->fullState().parameters,
              stateFromSettings({.values = presetTable()[5].values}).parameters);
    const auto chosen = tools().menu.entries().back().below;
    for (std::size_t i = 0; i < chosen.size(); ++i)
        EXPECT_EQ(chosen[i].isTicked, i == 5);
}

TEST_F(SettingsToolsTest, AStateFileIsApplied)
{
    const TemporaryFolder folder;
    auto wanted = settings().now();
    wanted.values[boredom] = 0.75f;
    writeSettings(wanted, folder.file("some.json"));
    tools().openFile(juce::File(folder.file("some.json")));
    EXPECT_EQ(value(boredom), 0.75f);
    EXPECT_EQ(settings().undoName(), "Open");
    EXPECT_FALSE(tools().notice.isVisible());
}

TEST_F(SettingsToolsTest, ATakesBeginningIsAppliedAndTheWindowSaysSo)
{
    const TemporaryFolder folder;
    std::ofstream(folder.file("some.velotrine-take"))
        << R"({"version": 1, "start": {"parameters": {"boredom": 0.25}}, "changes": []})";
    tools().openFile(juce::File(folder.file("some.velotrine-take")));
    EXPECT_EQ(value(boredom), 0.25f);
    EXPECT_TRUE(tools().notice.isVisible());
    EXPECT_EQ(tools().notice.text(),
              "These are the settings with which the take \"some.velotrine-take\" begins.");
}

TEST_F(SettingsToolsTest, ABadFileChangesNothingAndTheWindowSaysWhy)
{
    const TemporaryFolder folder;
    std::ofstream(folder.file("bad.json")) << "good morning";
    const auto before = settings().now();
    tools().openFile(juce::File(folder.file("bad.json")));
    EXPECT_EQ(settings().now(), before);
    EXPECT_EQ(settings().undoName(), "");
    EXPECT_THAT(tools().notice.text().toStdString(), testing::StartsWith("\"bad.json\" is not opened: "));
    tools().openFile(juce::File(folder.file("missing.json")));
    EXPECT_THAT(tools().notice.text().toStdString(), HasSubstr("No such file"));
}

} // namespace
} // namespace velotrine
