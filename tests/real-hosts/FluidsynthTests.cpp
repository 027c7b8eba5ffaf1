#include "tests/real-hosts/JackConductor.h"
#include "tests/real-hosts/JalvProcess.h"
#include "tests/support/ChildProcess.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

float peakOf(std::span<const float> sound)
{
    float peak = 0.0f;
    for (const float sample : sound)
        peak = std::max(peak, std::abs(sample));
    return peak;
}

TEST(Fluidsynth, PlaysTheNotesOfAnInstrumentAtVolumeZero)
{
    const JalvProcess jalv{{{"volume", 0.0}}};
    const ChildProcess synthesizer({"fluidsynth", "--server", "--no-shell", "--audio-driver=jack",
                                    "--midi-driver=jack", "/usr/share/sounds/sf2/TimGM6mb.sf2"},
                                   {});
    const JackScore score{.start = cyclesIn(0.5),
                          .tempoChange = cyclesIn(1.0),
                          .stop = cyclesIn(3.0),
                          .end = cyclesIn(6.0),
                          .tempo = 120.0,
                          .laterTempo = 150.0};
    JackConductor conductor;
    ASSERT_TRUE(conductor.connect("velotrine:notes", "fluidsynth-midi:midi_00"));
    ASSERT_TRUE(conductor.listenTo("fluidsynth-midi"));
    ASSERT_TRUE(conductor.listenToNotesOf("velotrine"));
    const auto take = conductor.perform(score, false);

    ASSERT_FALSE(take.notes.empty());
    // The synthesizer begins a note with JACK's cycle.
    const auto firstCycle = take.notes.front().frame / jackCycleFrames;
    const auto firstNote = static_cast<std::size_t>(firstCycle) * std::size_t{jackCycleFrames};
    const auto lastNote = static_cast<std::size_t>(take.notes.back().frame);
    const std::span sound(take.left);
    constexpr std::size_t second = jackRate;
    EXPECT_LT(peakOf(sound.first(firstNote)), 0.001f) << "nothing before the first note";
    EXPECT_GT(peakOf(sound.subspan(firstNote, second)), 0.01f) << "the first notes are heard";
    ASSERT_LT(lastNote + second, sound.size());
    EXPECT_LT(peakOf(sound.subspan(lastNote + second)), 0.02f * peakOf(sound)) << "no note hangs";
}

} // namespace
} // namespace velotrine
