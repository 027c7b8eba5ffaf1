#pragma once

#include "audiounit/Settings.h"

#include <juce_events/juce_events.h>

#include <functional>
#include <optional>

namespace velotrine {

/// Keeps a file up to date with the settings in force: half a second behind them while they change, and to
/// the last when it goes. At every moment the file is whole, though the program be killed. Main thread.
class SettingsKeeper final : private juce::Timer
{
public:
    /// @param keptFile         its folder is made with it
    /// @param currentSettings  outlives this
    /// @param settingsInFile   those which need not be written; none to write at once
    SettingsKeeper(juce::File keptFile, std::function<Settings()> currentSettings,
                   std::optional<Settings> settingsInFile);
    ~SettingsKeeper() override;
    SettingsKeeper(const SettingsKeeper&) = delete;
    SettingsKeeper& operator=(const SettingsKeeper&) = delete;

    /// Told why the file cannot be written, once until it can.
    std::function<void(const juce::String& reason)> onFailure;

private:
    void timerCallback() override;
    void write(const Settings& settings);

    juce::File file;
    std::function<Settings()> now;
    std::optional<Settings> written;
    bool hasFailed = false;
};

} // namespace velotrine
