#include "tests/real-hosts/JackConductor.h"

#include "audiounit/Parameters.h"
#include "plugin/HostedInstrument.h"
#include "tests/real-hosts/JalvProcess.h"
#include "tests/support/NoteRecorder.h"
#include "tests/support/Onsets.h"
#include "tests/support/PlayedNotes.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/Sound.h"

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// One ring of four spots that stands still and always fires, with notes that die away before the next.
const std::map<std::string, double>& metronome()
{
    static const std::map<std::string, double> values{
        {"activity", 0}, {"calories", 0}, {"spotsR1", 4}, {"spotsR2", 0},  {"spotsR3", 0},
        {"spotsR4", 0},  {"spotsR5", 0},  {"probR1", 1},  {"timbreR1", 1}, {"octaveR1", 4}};
    return values;
}

class Jalv : public testing::TestWithParam<bool>
{
protected:
    JalvProcess jalv{metronome()};
};

/// Where the hand crosses a spot: at every quarter note of the transport, a thousandth of a bar late.
std::vector<int> crossingsIn(const JackTake& take)
{
    constexpr double lateQuarters = 0.004;
    std::vector<int> frames;
    int frame = 0;
    double quarters = 0.0;
    for (const auto& cycle : take.cycles)
        for (int i = 0; i < cycle.frames; ++i, ++frame) {
            if (!cycle.isRolling)
                continue;
            const auto next = quarters + cycle.tempo / (60.0 * jackRate);
            if (std::floor(next - lateQuarters) > std::floor(quarters - lateQuarters))
                frames.push_back(frame);
            quarters = next;
        }
    return frames;
}

/// What came of the same values and the same transport without any host program.
struct Expected
{
    Sound sound;
    std::vector<NoteMessage> notes;
};

Expected expectedOf(const JackTake& take)
{
    RecordingHost host;
    HostedInstrument instrument(host);
    for (const auto& [identifier, value] : metronome())
        instrument.setValue(parameterWithIdentifier(identifier)->address, value);
    EXPECT_TRUE(instrument.prepare(jackRate));
    Sound sound(static_cast<int>(take.left.size()));
    NoteRecorder recorder;
    int done = 0;
    for (const auto& cycle : take.cycles) {
        instrument.setTransport(HostTransport{.tempo = static_cast<double>(static_cast<float>(cycle.tempo)),
                                              .beatsPerBar = 4,
                                              .beatUnit = 4,
                                              .isPlaying = cycle.isRolling});
        instrument.render({sound.left.data() + done, sound.right.data() + done}, cycle.frames,
                          {&recorder, done});
        done += cycle.frames;
    }
    return {sound, recorder.messages};
}

TEST_P(Jalv, PlaysWhileJacksTransportRollsAndFollowsItsTempo)
{
    const JackScore score{.start = cyclesIn(0.3),
                          .tempoChange = cyclesIn(1.7),
                          .stop = cyclesIn(3.6),
                          .end = cyclesIn(4.6),
                          .tempo = 150.0,
                          .laterTempo = 97.0};
    JackConductor conductor;
    ASSERT_TRUE(conductor.listenTo("velotrine"));
    ASSERT_TRUE(conductor.listenToNotesOf("velotrine"));
    const auto take = conductor.perform(score, GetParam());

    const auto crossings = crossingsIn(take);
    const auto actual = onsetsIn(take.left);
    ASSERT_GE(crossings.size(), 6u);
    ASSERT_EQ(actual.size(), crossings.size());
    // A note begins with the render cycle in which its spot is crossed, and a sine with a zero.
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_GT(actual[i], crossings[i] - CycleRenderer::defaultCycleFrames);
        EXPECT_LE(actual[i], crossings[i] + 1);
    }

    const auto expected = expectedOf(take);
    EXPECT_TRUE(take.left == expected.sound.left);
    EXPECT_TRUE(take.right == expected.sound.right);

    // The notes lie where the spots are crossed, and end.
    const auto strikes = strikesIn(take.notes);
    ASSERT_EQ(strikes.size(), crossings.size());
    for (std::size_t i = 0; i < strikes.size(); ++i)
        EXPECT_NEAR(strikes[i].frame, crossings[i], 1);
    EXPECT_EQ(take.notes, expected.notes);
    EXPECT_EQ(mistakeIn(take.notes), "");
}

TEST(JalvWhilePlaying, LoadsAState)
{
    const JalvProcess jalv(metronome(), {}, {stateWithVolume(0.0)});
    JackConductor conductor;
    ASSERT_TRUE(conductor.listenTo("velotrine"));
    const auto isHeard = [&conductor] {
        const auto end = cyclesIn(1.2);
        const JackScore score{.start = 10, .tempoChange = end, .stop = end, .end = end};
        return !onsetsIn(conductor.perform(score, true).left).empty();
    };
    const auto comesToBeHeard = [&isHeard](bool wanted) {
        for (int tries = 0; tries < 50; ++tries)
            if (isHeard() == wanted)
                return true;
        return false;
    };
    EXPECT_TRUE(isHeard());
    jalv.type("preset urn:velotrine:state0");
    EXPECT_TRUE(comesToBeHeard(false));
    jalv.type("volume = 0.5");
    EXPECT_TRUE(comesToBeHeard(true)) << "it only was silent";
}

INSTANTIATE_TEST_SUITE_P(InRealTimeAndFreewheeling, Jalv, testing::Bool(),
                         [](const auto& param) { return param.param ? "Freewheeling" : "InRealTime"; });

} // namespace
} // namespace velotrine
