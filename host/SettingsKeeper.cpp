#include "host/SettingsKeeper.h"

#include "commandline/Errors.h"
#include "takes/SettingsFile.h"

#include <utility>

namespace velotrine {

namespace {

constexpr int looksPerSecond = 2;

}

SettingsKeeper::SettingsKeeper(juce::File keptFile, std::function<Settings()> currentSettings,
                               std::optional<Settings> settingsInFile)
    : file(std::move(keptFile)), now(std::move(currentSettings)), written(std::move(settingsInFile))
{
    startTimerHz(looksPerSecond);
}

SettingsKeeper::~SettingsKeeper()
{
    onFailure = nullptr;
    timerCallback();
}

void SettingsKeeper::timerCallback()
{
    if (const auto settings = now(); settings != written)
        write(settings);
}

void SettingsKeeper::write(const Settings& settings)
{
    try {
        file.getParentDirectory().createDirectory();
        writeSettings(settings, file.getFullPathName().toStdString());
        written = settings;
        hasFailed = false;
    } catch (const WorkError& error) {
        if (!std::exchange(hasFailed, true) && onFailure)
            onFailure(juce::String::fromUTF8(error.what()));
    }
}

} // namespace velotrine
