#include "plugin/lv2/ControlPorts.h"

#include "audiounit/Parameters.h"
#include "tests/support/RecordingHost.h"

#include <limits>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr auto volume = addressOf(GlobalParameter::volume);
constexpr float stateValue = 0.37123456f;
constexpr float roundedState = 0.371235f; ///< as a session keeps it of a port
constexpr float otherValue = 0.25f;

class ControlPortsOfAnInstrument : public testing::Test
{
protected:
    ControlPortsOfAnInstrument() { ports.connect(volume, &port); }

    void restoreState()
    {
        instrument.setValue(volume, static_cast<double>(stateValue));
        ports.stateRestored();
    }

    /// The value in force after the next run.
    float afterRun()
    {
        ports.applyTo(instrument);
        return instrument.value(volume);
    }

    RecordingHost host;
    HostedInstrument instrument{host};
    ControlPorts ports;
    float port = parameterTable()[volume].initialValue;
};

TEST_F(ControlPortsOfAnInstrument, WinWhenTheyChange)
{
    port = otherValue;
    EXPECT_EQ(afterRun(), otherValue);
}

TEST_F(ControlPortsOfAnInstrument, LeaveTheInstrumentAloneWhileTheyDoNotChange)
{
    for (const bool isPending : {false, true})
        for (const bool isHeld : {false, true}) {
            restoreState();
            if (!isPending)
                afterRun();
            if (isHeld)
                ports.held.insert(volume);
            EXPECT_EQ(afterRun(), stateValue) << isPending << isHeld;
            ports.held.erase(volume);
        }
}

TEST_F(ControlPortsOfAnInstrument, LoseWhileAHandHoldsTheControl)
{
    instrument.setValue(volume, static_cast<double>(stateValue));
    ports.held.insert(volume);
    port = otherValue;
    EXPECT_EQ(afterRun(), stateValue);
    // The same value is no news once the hand is off, the next one is.
    ports.held.erase(volume);
    EXPECT_EQ(afterRun(), stateValue);
    port = 0.5f;
    EXPECT_EQ(afterRun(), 0.5f);
}

TEST_F(ControlPortsOfAnInstrument, LoseToAPendingStateThatTheyRound)
{
    restoreState();
    port = roundedState;
    EXPECT_EQ(afterRun(), stateValue);
}

TEST_F(ControlPortsOfAnInstrument, WinOverAPendingStateThatTheyDoNotRound)
{
    restoreState();
    port = otherValue;
    EXPECT_EQ(afterRun(), otherValue);
}

TEST_F(ControlPortsOfAnInstrument, WinOverAStateThatIsNoLongerPendingEvenWhereTheyRoundIt)
{
    restoreState();
    afterRun();
    port = roundedState;
    EXPECT_EQ(afterRun(), roundedState);
}

TEST_F(ControlPortsOfAnInstrument, SettleAStateWithTheFirstRunAfterIt)
{
    EXPECT_EQ(ports.settledStates(), 0U);
    restoreState();
    ports.apply(volume, roundedState, instrument);
    EXPECT_EQ(ports.settledStates(), 0U);
    EXPECT_EQ(instrument.value(volume), stateValue);
    afterRun();
    EXPECT_EQ(ports.settledStates(), 1U);
    afterRun();
    EXPECT_EQ(ports.settledStates(), 1U);
}

TEST_F(ControlPortsOfAnInstrument, AreStaleWhereTheyDoNotSayWhatTheInstrumentHas)
{
    EXPECT_FALSE(ports.isStale(volume, port));
    EXPECT_TRUE(ports.isStale(volume, otherValue));
    port = otherValue;
    afterRun();
    EXPECT_FALSE(ports.isStale(volume, otherValue));
    port = 7.0f; // out of range, so the instrument has its maximum
    EXPECT_FALSE(ports.isStale(volume, afterRun()));
}

TEST_F(ControlPortsOfAnInstrument, AreNotReadWhereTheHostConnectsThemToNothing)
{
    port = otherValue;
    ports.connect(volume, nullptr);
    EXPECT_EQ(afterRun(), parameterTable()[volume].initialValue);
}

TEST_F(ControlPortsOfAnInstrument, ChangeNothingWhereTheySayNoNumber)
{
    port = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(afterRun(), parameterTable()[volume].initialValue);
    EXPECT_TRUE(ports.isStale(volume, instrument.value(volume)));
}

} // namespace
} // namespace velotrine
