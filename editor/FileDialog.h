#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace velotrine {

/// Asks for a file in a dialog that lies inside a view. Main thread.
class FileDialog
{
public:
    using Done = std::function<void(const juce::File&)>;

    FileDialog();

    /// Closes it, and asks no more.
    ~FileDialog();

    FileDialog(const FileDialog&) = delete;
    FileDialog& operator=(const FileDialog&) = delete;

    /// @param parent   over which it lies
    /// @param pattern  of the names to be seen, such as "*.json"
    /// @param done     told the file; nothing where somebody has cancelled
    void open(juce::Component& parent, const juce::String& pattern, Done done);

    /// The same for a file that is to be written; asks before one is replaced.
    /// @param name  to begin with
    void save(juce::Component& parent, const juce::String& pattern, const juce::String& name, Done done);

    [[nodiscard]] bool isOpen() const noexcept { return dialog != nullptr; }

private:
    class Box;

    void show(juce::Component& parent, const juce::String& title, const juce::File& start, int flags,
              const juce::String& pattern, Done done);

    std::unique_ptr<Box> dialog;
    juce::File folder = juce::File::getSpecialLocation(juce::File::userHomeDirectory);
};

} // namespace velotrine
