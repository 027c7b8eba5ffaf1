#include "audiounit/UndoHistory.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr auto boredom = addressOf(GlobalParameter::boredom);
constexpr auto bpm = addressOf(GlobalParameter::bpm);

Settings with(Settings settings, ParameterAddress address, float value)
{
    settings.values.at(address) = value;
    return settings;
}

/// Settings and their history, as an editor keeps them.
class UndoHistoryTest : public testing::Test
{
protected:
    void set(const std::string& name, ParameterAddress address, float value)
    {
        const auto before = now;
        now.values.at(address) = value;
        history.add(name, before, now);
    }

    void undo() { now = history.undo(now); }

    void redo() { now = history.redo(now); }

    Settings now;
    UndoHistory history;
};

TEST_F(UndoHistoryTest, HasNothingToUndoAtFirst)
{
    EXPECT_EQ(history.undoName(now), "");
    EXPECT_EQ(history.redoName(now), "");
    EXPECT_EQ(history.undo(now), now);
    EXPECT_EQ(history.redo(now), now);
}

TEST_F(UndoHistoryTest, TakesStepsBackAndDoesThemAgain)
{
    const auto start = now;
    set("Boredom", boredom, 0.3f);
    set("BPM", bpm, 90.0f);
    const auto end = now;
    EXPECT_EQ(history.undoName(now), "BPM");
    undo();
    EXPECT_EQ(now, with(start, boredom, 0.3f));
    EXPECT_EQ(history.undoName(now), "Boredom");
    EXPECT_EQ(history.redoName(now), "BPM");
    undo();
    EXPECT_EQ(now, start);
    EXPECT_EQ(history.undoName(now), "");
    redo();
    redo();
    EXPECT_EQ(now, end);
    EXPECT_EQ(history.redoName(now), "");
}

TEST_F(UndoHistoryTest, ANewStepForgetsWhatWasTakenBack)
{
    set("Boredom", boredom, 0.3f);
    undo();
    set("BPM", bpm, 90.0f);
    EXPECT_EQ(history.redoName(now), "");
    undo();
    EXPECT_EQ(history.undoName(now), "");
    EXPECT_EQ(now, Settings());
}

TEST_F(UndoHistoryTest, WhereNothingDiffersThereIsNoStep)
{
    set("Boredom", boredom, 0.0f);
    EXPECT_EQ(history.undoName(now), "");
    set("BPM", bpm, 1e-5f);
    EXPECT_EQ(history.undoName(now), "") << "less than the last digit that a host keeps";
}

TEST_F(UndoHistoryTest, WhatSomebodyElseHasSetSinceStays)
{
    set("Boredom", boredom, 0.3f);
    const auto before = now;
    now.values.at(boredom) = 0.4f;
    now.values.at(bpm) = 90.0f;
    history.add("Preset Default", before, now);

    now.values.at(boredom) = 0.9f; // by a host's automation
    undo();
    EXPECT_EQ(now, with(Settings(), boredom, 0.9f)) << "the rest of the preset is taken back";
    EXPECT_EQ(history.undoName(now), "") << "nothing is left of what the first step did";
    undo();
    EXPECT_EQ(now, with(Settings(), boredom, 0.9f));
    redo();
    EXPECT_EQ(now, with(with(Settings(), boredom, 0.9f), bpm, 90.0f));
}

TEST_F(UndoHistoryTest, AStepOfWhichNothingIsLeftIsPassedOver)
{
    set("BPM", bpm, 90.0f);
    set("Boredom", boredom, 0.3f);
    now.values.at(boredom) = 0.9f;
    EXPECT_EQ(history.undoName(now), "BPM");
    undo();
    EXPECT_EQ(now, with(Settings(), boredom, 0.9f));
    EXPECT_EQ(history.redoName(now), "BPM");
    redo();
    EXPECT_EQ(now, with(with(Settings(), bpm, 90.0f), boredom, 0.9f));
}

TEST_F(UndoHistoryTest, AValueThatAHostHandsBackWithAnotherLastDigitIsStillTheSame)
{
    set("BPM", bpm, 123.4f);
    now.values.at(bpm) = std::nextafter(123.4f, 200.0f);
    EXPECT_EQ(history.undoName(now), "BPM");
    undo();
    EXPECT_EQ(now.values.at(bpm), 0.0f);
}

TEST_F(UndoHistoryTest, SeedSwitchAndPresetArePartOfAStep)
{
    const Settings after{.preset = AUAudioUnitPreset{3, "Three"}, .seed = 7, .sameMusicAtEveryStart = true};
    history.add("Paste", now, after);
    now = after;
    undo();
    EXPECT_EQ(now, Settings());
    redo();
    EXPECT_EQ(now, after);
}

TEST_F(UndoHistoryTest, KeepsTheLastThousandSteps)
{
    for (int i = 1; i <= 1200; ++i)
        set(std::to_string(i), bpm, static_cast<float>(i));
    for (int i = 1200; i > 200; --i) {
        ASSERT_EQ(history.undoName(now), std::to_string(i));
        undo();
    }
    EXPECT_EQ(now.values.at(bpm), 200.0f);
    EXPECT_EQ(history.undoName(now), "");
    for (int i = 0; i < 1000; ++i)
        redo();
    EXPECT_EQ(now.values.at(bpm), 1200.0f);
}

} // namespace
} // namespace velotrine
