#include "host/HelpContent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace velotrine {

void PrintTo(const HelpContentPage& page, std::ostream* out)
{
    *out << "page " << page.navLabel;
}

namespace {

const std::vector<HelpContentPage>& writtenOutPages()
{
    static const std::vector<HelpContentPage> pages{
        {"Overview",
         "What is going on?",
         {HelpBody{"Velotrine is a generative music plugin for iOS and macOS. 'Generative' means that you "
                   "don't choose the individual notes, instead you choose the parameters that determine "
                   "what gets played."},
          HelpBody{"Notes are generated according to the arrangement of spots on five concentric rings. "
                   "Each ring corresponds to a one-bar loop played by a different musical voice. The spots "
                   "on each loop trigger notes probabilistically. You define how likely a ring is to fire, "
                   "and also how the notes are distributed. The actual sequence is produced by a 'Markov "
                   "chain' — a simple model where the probability of the next note depends on what was "
                   "played before."},
          HelpBody{"When a spot fires, it plays a pitched FM synthesised voice. You can adjust the timbre, "
                   "octave and volume for each ring, as well as the number of spots."},
          HelpBody{"At heart Velotrine is just a glorified metronome. But to liven things up you can also "
                   "make the rings move and wobble. Check out the presets for some examples."},
          HelpBody{"This app is a minimal wrapper that lets you play the plugin through the system audio. "
                   "For more complex uses, load Velotrine in a compatible host like GarageBand, Reaper or "
                   "Logic Pro. (Not all AUv3 hosts support this type of plugin — for example, Ableton Live "
                   "does not.)"}}},
        {"Rings",
         "Rings",
         {HelpBody{"Five concentric rings, one per voice. Each ring has:"},
          HelpParamRow{"Spots",
                       "Evenly-spaced trigger points around the ring (0–16). More spots = denser rhythm."},
          HelpParamRow{
              "Rotation",
              "A sweep hand turns once per bar, crossing each spot in turn. The rings themselves can "
              "also rotate and oscillate according to the global settings Activity and Calories."},
          HelpParamRow{"Firing",
                       "When the sweep hand reaches a spot, it fires with its own probability, allowing for "
                       "rhythmic variation."},
          HelpParamRow{"Pitch",
                       "Each fire pulls the next note from the shared Markov chain, transposed to the ring's "
                       "octave."},
          HelpTip{"Click any ring to open its editor panel and adjust its step count, phase shift, firing "
                  "probability, octave, volume and timbre."}}},
        {"Ring Editor",
         "Ring Editor",
         {HelpBody{"Click a ring to open its editor panel. Six parameters per ring:"},
          HelpParamRow{"Steps", "Number of trigger spots, 0–16. Zero silences the ring."},
          HelpParamRow{
              "Shift",
              "Rotational offset (0–1). Slide spots around the ring to change their timing relative to "
              "other rings."},
          HelpParamRow{
              "Luck",
              "Probability that any given spot actually triggers (0–1). Zero also silences the ring."},
          HelpParamRow{
              "Octave",
              "Transposition, 0–7. Each ring can live in its own register while following the shared "
              "melodic line."},
          HelpParamRow{"Volume", "Per-ring level (0–1, quadratic taper)."},
          HelpParamRow{"Tone", "Sweeps the FM character from soft pad to harsh hit."},
          HelpTip{"Drag the panel's title bar to reposition it, or click outside the panel to dismiss."}}},
        {"Knobs",
         "Knobs",
         {HelpBody{"Four knobs adjust global settings that affect all the rings."},
          HelpParamRow{
              "Activity",
              "Rotation rate for all rings. Alternate rings rotate in opposite directions. For "
              "Activity above 0.5, the rings rotate at different speeds to gradually drift in and out "
              "of alignment."},
          HelpParamRow{"Boredom",
                       "Shapes the note sequence probabilities, based on distributions learned from music by "
                       "Harlwick, Tessorandi and the Essen folk music corpus. Above 0.7 the distribution "
                       "becomes increasingly chromatic and disorderly."},
          HelpParamRow{"Calories",
                       "Adds a sinusoidal oscillation to the ring rotation. The frequency varies per-ring, "
                       "realigning every 8 bars."},
          HelpParamRow{"Drudgery",
                       "FM modulator self-feedback, DX7 style. At zero it's clean; at full, things get "
                       "unstable. Applies globally, but the effect on each ring depends on its timbre."},
          HelpTip{"Double-click any knob to reset it to its default value."}}},
        {"Transport",
         "Transport",
         {HelpBody{"Velotrine can synchronise tempo and playback to the host application. This is usually "
                   "what you want. However, not all hosts provide that information, so the plugin also has "
                   "its own transport control. You could also run it at a different tempo than the host, if "
                   "you're feeling extra polyrhythmic."},
          HelpParamRow{
              "Sync",
              "Enable host sync. You most likely want this on, when it works. This app doesn't provide "
              "tempo, so Sync is forced off here."},
          HelpParamRow{"Play / Stop",
                       "Starts and stops the AU's internal clock. Not available when Sync is enabled."},
          HelpParamRow{
              "BPM",
              "Internal tempo — type a value to set it. (Time signature is always 4/4 for the internal "
              "clock.)"}}},
        {"Scale",
         "Scale",
         {HelpBody{"The Scale controls in the upper left determine what musical key the notes are drawn "
                   "from."},
          HelpParamRow{"Root", "Tonic note for the scale (C–B)."},
          HelpParamRow{
              "Scale",
              "Major, Minor, Major Pentatonic, or Minor Pentatonic. Affects the note distribution and "
              "which notes are available at all. The distinction breaks down at high Boredom, when "
              "everything goes chromatic."}}},
        {"Etc",
         "Etcetera",
         {HelpBody{"The controls at the top are part of this wrapper app, not the plugin itself."},
          HelpParamRow{"Presets", "The popup lets you choose one of the included presets."},
          HelpParamRow{"Help", "Click the ? button at any time to reopen this help."},
          HelpTip{"To dismiss this help, just close the window."}}},
    };
    return pages;
}

class HelpPage : public testing::TestWithParam<std::size_t>
{};

TEST_P(HelpPage, SaysExactlyWhatItShould)
{
    const auto& page = helpContentPages().at(GetParam());
    const auto& expected = writtenOutPages().at(GetParam());
    EXPECT_EQ(page.navLabel, expected.navLabel);
    EXPECT_EQ(page.title, expected.title);
    ASSERT_EQ(page.items.size(), expected.items.size());
    for (std::size_t item = 0; item < expected.items.size(); ++item)
        EXPECT_EQ(page.items[item], expected.items[item]) << "item " << item;
}

INSTANTIATE_TEST_SUITE_P(Each, HelpPage, testing::Range(std::size_t{0}, std::size_t{7}),
                         [](const auto& tested) { return "Number" + std::to_string(tested.param); });

TEST(HelpContent, HasSevenPagesInTheOrderOfTheirSegments)
{
    std::vector<std::string> labels;
    for (const auto& page : helpContentPages())
        labels.push_back(page.navLabel);
    EXPECT_THAT(labels, testing::ElementsAre("Overview", "Rings", "Ring Editor", "Knobs", "Transport",
                                             "Scale", "Etc"));
}

TEST(HelpContent, CountsItsKindsOfItemsBodyParamRowTip)
{
    EXPECT_EQ(HelpContentItem(HelpBody{}).index(), 0u);
    EXPECT_EQ(HelpContentItem(HelpParamRow{}).index(), 1u);
    EXPECT_EQ(HelpContentItem(HelpTip{}).index(), 2u);
}

} // namespace
} // namespace velotrine
