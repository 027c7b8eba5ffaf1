#pragma once

#include "editor/EditableSettings.h"
#include "editor/FileDialog.h"
#include "editor/NoticeView.h"
#include "editor/SeedPanel.h"
#include "editor/SettingsMenu.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <memory>
#include <vector>

namespace velotrine {

/// What the window has for the settings as a whole, and no room for: the context menu and its keys, the
/// clipboard, files, a panel for the seed, and a notice that says what has come of it. Main thread.
class SettingsTools final : private juce::MouseListener
{
public:
    /// @param windowContents  what it lies over; outlives this
    SettingsTools(juce::Component& windowContents, SettingsAccess access,
                  std::shared_ptr<UndoHistory> history);
    ~SettingsTools() override;

    SettingsTools(const SettingsTools&) = delete;
    SettingsTools& operator=(const SettingsTools&) = delete;

    /// From now on the secondary button opens the context menu on this component, though not on what lies in
    /// it.
    /// @param ground  outlives this
    void opensOn(juce::Component& ground);

    /// Opens the context menu in the middle of a component.
    void openByKey(juce::Component& owner);

    /// Whether it uses the key, which nothing else in the window has used.
    bool keyPressed(const juce::KeyPress& key) const;

    /// Applies a state, or the beginning of a take. Says in the window why it cannot.
    void openFile(const juce::File& file);

    /// The contents have another size.
    void layOut();

    EditableSettings settings;
    SettingsMenu menu;
    NoticeView notice;

    /// Whether somebody holds a control just now. Nothing else is edited meanwhile.
    std::function<bool()> isControlHeld;

private:
    void mouseDown(const juce::MouseEvent& event) override;
    [[nodiscard]] bool isBlocked() const;

    void copy();
    void paste();
    void chooseFileToOpen();
    void chooseFileToSave();
    void saveFile(const juce::File& file);
    void askForSeed();

    juce::Component& contents;
    SeedPanel seedPanel;
    FileDialog dialog;
    std::vector<juce::Component::SafePointer<juce::Component>> grounds;
};

} // namespace velotrine
