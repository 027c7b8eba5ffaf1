#pragma once

#include <juce_data_structures/juce_data_structures.h>

namespace velotrine {

/// What the application remembers from one run to the next, in a small file. Where that cannot be read it
/// counts as empty, and where it cannot be written nothing is remembered; neither is an error. Message
/// thread.
class Preferences
{
public:
    /// A file in the folder "Velotrine" of the user's configuration folder, which is XDG_CONFIG_HOME where
    /// that names one.
    [[nodiscard]] static juce::File defaultFile();

    explicit Preferences(const juce::File& file = defaultFile());

    /// False unless true is stored.
    [[nodiscard]] bool hasShownHelp() const;

    /// Stored when this returns.
    void setHasShownHelp(bool hasShown);

private:
    juce::PropertiesFile properties;
};

} // namespace velotrine
