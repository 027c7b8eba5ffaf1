#include "plugin/HostedInstrument.h"

#include "audiounit/Parameters.h"
#include "audiounit/Presets.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TestInstrument.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr auto activity = addressOf(GlobalParameter::activity);
constexpr auto rootNote = addressOf(GlobalParameter::rootNote);
constexpr auto sync = addressOf(GlobalParameter::sync);
const auto spotsOfRing1 = addressOf(RingParameter::spots, 0);

using Told = std::vector<std::string>;

class HostedInstrumentWithoutSound : public testing::Test
{
protected:
    HostedInstrumentWithoutSound()
    {
        std::ignore = tree->tokenByAddingParameterObserver([this](AUParameterAddress address, AUValue value) {
            shown.push_back(std::to_string(address) + " = " + std::to_string(value));
        });
    }

    RecordingHost host;
    HostedInstrument instrument{host};
    const std::shared_ptr<AUParameterTree> tree = instrument.audioUnit()->parameterTree();
    Told shown; ///< what an editor is told
};

TEST_F(HostedInstrumentWithoutSound, BoundsAValueToItsRange)
{
    EXPECT_TRUE(instrument.setValue(activity, 1e30));
    EXPECT_EQ(instrument.value(activity), 1.0f);
    EXPECT_TRUE(instrument.setValue(activity, -1e300));
    EXPECT_EQ(instrument.value(activity), 0.0f);
    EXPECT_TRUE(instrument.setValue(addressOf(GlobalParameter::bpm), 0.0));
    EXPECT_EQ(instrument.value(addressOf(GlobalParameter::bpm)), 40.0f);
}

TEST_F(HostedInstrumentWithoutSound, KeepsAValueWhereTheHostSendsNaN)
{
    instrument.setValue(spotsOfRing1, 7.0);
    for (const auto value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(instrument.setValue(spotsOfRing1, value));
        EXPECT_EQ(instrument.value(spotsOfRing1), 7.0f);
    }
}

TEST_F(HostedInstrumentWithoutSound, IgnoresAnAddressThatNoParameterHas)
{
    EXPECT_FALSE(instrument.setValue(parameterCount, 0.5));
    EXPECT_FALSE(instrument.setValue(std::numeric_limits<ParameterAddress>::max(), 0.5));
    EXPECT_EQ(instrument.value(parameterCount), 0.0f);
}

TEST_F(HostedInstrumentWithoutSound, AnEditOfTheWholeTellsTheHostOfWhatItChangesAndNoMore)
{
    const auto from = instrument.settings();
    auto to = from;
    to.values[activity] = 0.25f;
    to.values[rootNote] = 3.0f;
    instrument.edit(from, to);
    EXPECT_EQ(instrument.settings(), to);
    EXPECT_EQ(host.told, (Told{"begin 0", "0 = 0.25", "end 0", "begin 4", "4 = 3.", "end 4"}));
    EXPECT_EQ(shown.size(), 2u) << "the editor follows";
}

TEST_F(HostedInstrumentWithoutSound, AnEditOfTheSeedTellsTheHostThatTheStateIsAnother)
{
    const auto from = instrument.settings();
    auto to = from;
    to.seed = 7;
    instrument.edit(from, to);
    EXPECT_EQ(host.told, Told{"state"});
    EXPECT_EQ(instrument.settings().seed, 7u);
    instrument.edit(to, to);
    EXPECT_EQ(host.told, Told{"state"});
}

TEST_F(HostedInstrumentWithoutSound, AnEditLeavesAloneWhatTheHostHasSetMeanwhile)
{
    const auto from = instrument.settings();
    auto to = from;
    to.values[rootNote] = 3.0f;
    instrument.setValue(activity, 0.75);
    instrument.edit(from, to);
    EXPECT_EQ(instrument.value(activity), 0.75f);
    EXPECT_EQ(instrument.value(rootNote), 3.0f);
}

TEST_F(HostedInstrumentWithoutSound, RoundsWhereAParameterHasSteps)
{
    // A normalised 7/16 comes back from a host as a little less than 7 spots.
    instrument.setValue(spotsOfRing1, 6.9999995);
    EXPECT_EQ(instrument.value(spotsOfRing1), 7.0f);
    instrument.setValue(rootNote, 4.4);
    EXPECT_EQ(instrument.value(rootNote), 4.0f);
    instrument.setValue(sync, 0.51);
    EXPECT_EQ(instrument.value(sync), 1.0f);
}

TEST_F(HostedInstrumentWithoutSound, ShowsTheEditorWhatTheHostSetAndDoesNotEchoIt)
{
    instrument.setValue(activity, 0.25);
    EXPECT_EQ(shown, Told{});
    instrument.followValues();
    instrument.followValues();
    EXPECT_EQ(shown, Told{"0 = 0.250000"});
    EXPECT_EQ(host.told, Told{});
}

TEST_F(HostedInstrumentWithoutSound, TellsTheHostOfAGestureFromTouchToRelease)
{
    const auto parameter = tree->parameterWithAddress(activity);
    using enum AUParameterAutomationEventType;
    parameter->setValue(0.5f, 0, 0, touch);
    parameter->setValue(0.625f, 0, 0, value);
    parameter->setValue(0.75f, 0, 0, value);
    parameter->setValue(0.75f, 0, 0, release);
    EXPECT_EQ(host.told, (Told{"begin 0", "0 = 0.625", "0 = 0.75", "end 0"}));
    EXPECT_EQ(instrument.value(activity), 0.75f);
}

TEST_F(HostedInstrumentWithoutSound, WrapsAnEditWithoutAGestureInOne)
{
    tree->parameterWithAddress(sync)->setValue(0.0f);
    EXPECT_EQ(host.told, (Told{"begin 8", "8 = 0.", "end 8"}));
}

TEST_F(HostedInstrumentWithoutSound, ShowsTheEditorOnceWhatTheHostSetManyTimes)
{
    instrument.setValue(spotsOfRing1, 3.0);
    instrument.setValue(activity, 0.25);
    instrument.setValue(activity, 0.75);
    instrument.followValues();
    EXPECT_EQ(shown, (Told{"0 = 0.750000", "9 = 3.000000"}));
}

TEST_F(HostedInstrumentWithoutSound, DoesNotShowTheEditorWhatTheHostWasRefused)
{
    instrument.setValue(activity, std::numeric_limits<double>::quiet_NaN());
    instrument.followValues();
    EXPECT_EQ(shown, Told{});
}

TEST_F(HostedInstrumentWithoutSound, DoesNotShowTheEditorItsOwnEditAgain)
{
    tree->parameterWithAddress(activity)->setValue(0.25f);
    EXPECT_EQ(shown.size(), 1u);
    instrument.followValues();
    EXPECT_EQ(shown.size(), 1u);
}

TEST_F(HostedInstrumentWithoutSound, ReportsTheValuesThatAPresetChanges)
{
    ASSERT_TRUE(instrument.choosePreset(3));
    EXPECT_EQ(valuesOf(*instrument.audioUnit()->dspKernel), presetTable()[3].values);
    EXPECT_EQ(instrument.presetNumber(), 3u);

    std::size_t changed = 0;
    for (const auto& info : parameterTable())
        if (makeInstrument()->dspKernel->parameter(info.address) != presetTable()[3].values[info.address])
            ++changed;
    EXPECT_GT(changed, 0u);
    EXPECT_EQ(host.told.size(), 3 * changed);

    host.told.clear();
    instrument.choosePreset(3);
    EXPECT_EQ(host.told, Told{});
}

TEST_F(HostedInstrumentWithoutSound, IgnoresAPresetThatDoesNotExist)
{
    EXPECT_FALSE(instrument.choosePreset(presetCount));
    EXPECT_EQ(host.told, Told{});
    EXPECT_EQ(instrument.presetNumber(), 0u);
}

TEST_F(HostedInstrumentWithoutSound, SavesTheSameBytesAfterLoadingThem)
{
    instrument.choosePreset(5);
    instrument.setValue(activity, 0.1);
    instrument.setEditorSize({700, 500});
    const auto saved = instrument.saveState();

    HostedInstrument other(host);
    EXPECT_EQ(other.restoreState(saved), std::nullopt);
    EXPECT_EQ(other.saveState(), saved);
    EXPECT_EQ(other.editorSize(), (EditorSize{700, 500}));
    EXPECT_EQ(other.presetNumber(), 5u);
}

TEST_F(HostedInstrumentWithoutSound, ShowsTheEditorARestoredStateAndDoesNotTellTheHost)
{
    HostedInstrument other(host);
    other.setValue(activity, 0.25);
    ASSERT_EQ(instrument.restoreState(other.saveState()), std::nullopt);
    EXPECT_NE(std::ranges::find(shown, "0 = 0.250000"), shown.end());
    EXPECT_EQ(host.told, Told{});
}

TEST_F(HostedInstrumentWithoutSound, ARefusedStateLeavesEverythingAsItWasAndSaysWhy)
{
    instrument.choosePreset(2);
    instrument.setEditorSize({700, 500});
    const auto before = instrument.saveState();
    for (const std::string& text :
         {std::string(), std::string("junk"), std::string(4, '\0'), before.substr(0, before.size() / 2),
          std::string(R"({"version": 1, "parameters": {"activity": 0.9}, "editor": 3})")}) {
        const auto error = instrument.restoreState(text);
        ASSERT_TRUE(error);
        EXPECT_TRUE(error->starts_with("The state is refused: ")) << *error;
        EXPECT_EQ(instrument.saveState(), before);
    }
}

TEST_F(HostedInstrumentWithoutSound, AStateOutlastsTheProgramThatAHostSendsAfterIt)
{
    HostedInstrument other(host);
    other.choosePreset(4);
    other.setValue(activity, 0.25);
    const auto saved = other.saveState();
    ASSERT_EQ(instrument.restoreState(saved), std::nullopt);
    EXPECT_FALSE(instrument.chooseProgram(0));
    EXPECT_FALSE(instrument.chooseProgram(4));
    EXPECT_EQ(instrument.saveState(), saved);
}

TEST_F(HostedInstrumentWithoutSound, AProgramChosenLaterIsApplied)
{
    ASSERT_EQ(instrument.restoreState(instrument.saveState()), std::nullopt);
    std::this_thread::sleep_for(std::chrono::duration<double>(HostedInstrument::programHoldSeconds + 0.05));
    EXPECT_TRUE(instrument.chooseProgram(4));
    EXPECT_EQ(instrument.presetNumber(), 4u);
}

TEST_F(HostedInstrumentWithoutSound, SaysWhyNothingSounds)
{
    EXPECT_FALSE(instrument.hostHasTransport());
    EXPECT_EQ(instrument.transportNotice(), "waiting for the host to play");
    instrument.setTransport(HostTransport{.tempo = 120.0, .isPlaying = true});
    EXPECT_TRUE(instrument.hostHasTransport());
    EXPECT_EQ(instrument.transportNotice(), "");
    instrument.setTransport(HostTransport{.tempo = 120.0});
    EXPECT_EQ(instrument.transportNotice(), "waiting for the host to play");
    instrument.setValue(sync, 0.0);
    EXPECT_EQ(instrument.transportNotice(), "");
}

TEST_F(HostedInstrumentWithoutSound, SaysThatTheHostPlaysWithoutATempo)
{
    for (const double none : {0.0, -120.0, 0.5, 1e9, std::nan("")}) {
        instrument.setTransport(HostTransport{.tempo = none, .isPlaying = true});
        EXPECT_EQ(instrument.transportNotice(), "no tempo from the host") << none;
    }
    instrument.setTransport(HostTransport{});
    EXPECT_EQ(instrument.transportNotice(), "waiting for the host to play");
    instrument.setTransport(HostTransport{.isPlaying = true});
    instrument.setValue(sync, 0.0);
    EXPECT_EQ(instrument.transportNotice(), "");
}

TEST_F(HostedInstrumentWithoutSound, SaysNothingAtATempoThatItsOwnClockCannotHave)
{
    for (const double tempo : {1.0, 20.0, 999.0}) {
        instrument.setTransport(HostTransport{.tempo = tempo, .isPlaying = true});
        EXPECT_EQ(instrument.transportNotice(), "") << tempo;
    }
}

TEST_F(HostedInstrumentWithoutSound, SaysNothingWhileAnEarlierTempoIsInForce)
{
    ASSERT_TRUE(instrument.prepare(48000.0));
    instrument.setTransport(HostTransport{.tempo = 120.0, .isPlaying = true});
    instrument.render({}, 64);
    instrument.setTransport(HostTransport{.isPlaying = true});
    EXPECT_EQ(instrument.transportNotice(), "");
}

TEST_F(HostedInstrumentWithoutSound, SaysThatATempoIsMissingIfTheHostSentItOnlyWhileSyncWasOff)
{
    ASSERT_TRUE(instrument.prepare(48000.0));
    instrument.setValue(sync, 0.0);
    instrument.setTransport(HostTransport{.tempo = 120.0, .isPlaying = true});
    instrument.render({}, 64);
    instrument.setTransport(HostTransport{.isPlaying = true});
    instrument.setValue(sync, 1.0);
    EXPECT_EQ(instrument.transportNotice(), "no tempo from the host");
}

TEST_F(HostedInstrumentWithoutSound, TakesSampleRatesThatDevicesHaveAndRefusesOthers)
{
    for (const double rate : {8000.0, 11025.0, 44100.0, 44056.25, 48000.0, 96000.0, 192000.0, 768000.0}) {
        EXPECT_TRUE(instrument.prepare(rate)) << rate;
        EXPECT_EQ(instrument.audioUnit()->dspKernel->sampleRate, rate);
    }
    for (const double rate : {0.0, -44100.0, 7999.9, 768000.1, 1e300, std::nan(""), HUGE_VAL}) {
        EXPECT_FALSE(instrument.prepare(rate)) << rate;
        EXPECT_FALSE(instrument.audioUnit()->renderResourcesAllocated());
    }
}

} // namespace
} // namespace velotrine
