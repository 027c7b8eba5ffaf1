#include "host/Preferences.h"

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

} // namespace

juce::File Preferences::defaultFile()
{
    return juce::File::getSpecialLocation(juce::File::userApplicationDataDirectory)
#if JUCE_MAC
        .getChildFile("Application Support")
#endif
        .getChildFile("Velotrine")
        .getChildFile("Velotrine.settings");
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
