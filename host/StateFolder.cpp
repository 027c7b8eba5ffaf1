#include "host/StateFolder.h"

#include "audiounit/Identity.h"

namespace velotrine {

namespace {

/// JUCE looks for XDG_STATE_HOME nowhere.
juce::File usersStates()
{
    const auto named = juce::SystemStats::getEnvironmentVariable("XDG_STATE_HOME", {});
    if (juce::File::isAbsolutePath(named))
        return juce::File(named);
    return juce::File::getSpecialLocation(juce::File::userHomeDirectory).getChildFile(".local/state");
}

} // namespace

juce::File stateFolder()
{
    return usersStates().getChildFile(identity::name);
}

} // namespace velotrine
