#include "audiounit/MidiNote.h"

#include <cmath>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

std::optional<MidiNote> played(int note, float gain)
{
    return midiNote({.frame = 0, .ring = 3, .spot = 0, .note = note, .gain = gain, .decaySeconds = 0.625f});
}

TEST(MidiNote, HasItsRingsChannelAndLastsWhileTheNoteFallsBySixtyDecibels)
{
    const auto note = played(60, 1.0f);
    ASSERT_TRUE(note);
    EXPECT_EQ(note->channel, 3);
    EXPECT_EQ(note->key, 60);
    EXPECT_EQ(note->seconds, 0.625);
}

TEST(MidiNote, TakesTheSquareRootOfTheGainForTheVelocity)
{
    EXPECT_EQ(played(60, 1.0f)->velocity, 127);
    EXPECT_EQ(played(60, 0.25f)->velocity, 64); // 63.5
    EXPECT_EQ(played(60, 0.49f)->velocity, 89); // 88.9
    EXPECT_EQ(played(60, 1.0e-9f)->velocity, 1);
    EXPECT_EQ(played(60, 4.0f)->velocity, 127);
}

TEST(MidiNote, IsNoneForSilentNotes)
{
    for (const float gain : {0.0f, -0.0f, -1.0f, std::nanf("")})
        EXPECT_FALSE(played(60, gain));
}

TEST(MidiNote, IsNoneForKeysThatMidiDoesNotHave)
{
    EXPECT_FALSE(played(-1, 1.0f));
    EXPECT_FALSE(played(128, 1.0f));
    EXPECT_EQ(played(0, 1.0f)->key, 0);
    EXPECT_EQ(played(127, 1.0f)->key, 127);
}

} // namespace
} // namespace velotrine
