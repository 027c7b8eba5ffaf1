#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// Leaves the keyboard to the host: an embedded editor has it only while somebody uses it there. That begins
/// with a click in a field, or a menu that opens one, and lasts while Tab moves from control to control,
/// until a click on anything else, Escape, or Return where nothing else uses it; or it begins and ends with a
/// menu. Main thread.
class EmbeddedKeyboard final : private juce::FocusChangeListener,
                               private juce::MouseListener,
                               private juce::KeyListener,
                               private juce::AsyncUpdater
{
public:
    /// @param editor  already in a window of its own inside the host's; outlives this
    explicit EmbeddedKeyboard(juce::Component& editor);
    ~EmbeddedKeyboard() override;

private:
    void globalFocusChanged(juce::Component* focused) override;
    void mouseDown(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
    bool keyPressed(const juce::KeyPress& key, juce::Component* target) override;
    void handleAsyncUpdate() override;

    void take(juce::TextEditor& field);
    void takeForMenu(juce::Component& menu);
    void giveBack(bool isAfterMenu);

    [[nodiscard]] unsigned long ownWindow() const;
    void listenToKeys(bool shouldListen) const;

    juce::Component& embeddedEditor;
    bool isOurs = false;            ///< since a click in a field
    bool isEndedByKey = false;      ///< once the key has done its work
    bool mayHaveOpenedMenu = false; ///< the click that has just ended
    bool menuHasEnded = false;

    JUCE_DECLARE_WEAK_REFERENCEABLE(EmbeddedKeyboard)
};

} // namespace velotrine
