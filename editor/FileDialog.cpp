#include "editor/FileDialog.h"

#include "editor/Colours.h"

#include <utility>

namespace velotrine {

namespace {

constexpr int margin = 8; // points

}

/// The toolkit's dialog and what is in it.
class FileDialog::Box
{
public:
    Box(juce::Component& parent, const juce::String& title, const juce::File& start, int flags,
        const juce::String& pattern)
        : filter(pattern, "*", {}), browser(flags, start, &filter, nullptr),
          window(title, {}, browser, (flags & juce::FileBrowserComponent::saveMode) != 0, colours::panel,
                 &parent)
    {
        window.setResizable(false, false);
        window.setBounds(parent.getLocalBounds().reduced(margin));
        window.toFront(false);
    }

    /// Whoever comes by key types the name, whoever comes by mouse clicks.
    void giveKeyboardToName()
    {
        for (auto* const child : browser.getChildren())
            if (auto* const name = dynamic_cast<juce::TextEditor*>(child)) {
                name->grabKeyboardFocus();
                name->selectAll();
            }
    }

    [[nodiscard]] juce::File file() const { return browser.getSelectedFile(0); }

    juce::WildcardFileFilter filter;
    juce::FileBrowserComponent browser;
    juce::FileChooserDialogBox window;
};

FileDialog::FileDialog() = default;
FileDialog::~FileDialog() = default;

void FileDialog::open(juce::Component& parent, const juce::String& pattern, Done done)
{
    using Browser = juce::FileBrowserComponent;
    show(parent, "Open", folder, Browser::openMode | Browser::canSelectFiles, pattern, std::move(done));
}

void FileDialog::save(juce::Component& parent, const juce::String& pattern, const juce::String& name,
                      Done done)
{
    using Browser = juce::FileBrowserComponent;
    show(parent, "Save", folder.getChildFile(name), Browser::saveMode | Browser::canSelectFiles, pattern,
         std::move(done));
}

void FileDialog::show(juce::Component& parent, const juce::String& title, const juce::File& start, int flags,
                      const juce::String& pattern, Done done)
{
    dialog = std::make_unique<Box>(parent, title, start, flags, pattern);
    const auto onEnd = [this, done = std::move(done),
                        shown = juce::Component::SafePointer(&dialog->window)](int result) {
        if (shown == nullptr)
            return;
        const auto file = dialog->file();
        dialog.reset();
        if (result == 0 || file == juce::File())
            return;
        folder = file.getParentDirectory();
        done(file);
    };
    dialog->window.enterModalState(true, juce::ModalCallbackFunction::create(onEnd), false);
    dialog->giveKeyboardToName();
}

} // namespace velotrine
