#include "host/Preferences.h"

#include "audiounit/Identity.h"

namespace velotrine {

namespace {

constexpr const char* hasShownHelpKey = "VelotrineHasShownHelpMac";

juce::PropertiesFile::Options fileOptions()
{
    juce::PropertiesFile::Options options;
    options.storageFormat = juce::PropertiesFile::storeAsXML;
    options.millisecondsBeforeSaving = 0;
    return options;
}

/// JUCE looks for XDG_CONFIG_HOME in the desktop's files, but not in the environment, where it belongs.
juce::File configurationFolder()
{
    const auto named = juce::SystemStats::getEnvironmentVariable("XDG_CONFIG_HOME", {});
    if (juce::File::isAbsolutePath(named))
        return juce::File(named);
    auto folder = juce::File::getSpecialLocation(juce::File::userApplicationDataDirectory);
#if JUCE_MAC
    return folder.getChildFile("Application Support");
#else
    return folder;
#endif
}

} // namespace

juce::File Preferences::defaultFile()
{
    return configurationFolder()
        .getChildFile(identity::name)
        .getChildFile(juce::String(identity::name) + ".settings");
}

Preferences::Preferences(const juce::File& file) : properties(file, fileOptions()) {}

bool Preferences::hasShownHelp() const
{
    return properties.getBoolValue(hasShownHelpKey);
}

void Preferences::setHasShownHelp(bool hasShown)
{
    properties.setValue(hasShownHelpKey, hasShown);
}

} // namespace velotrine
