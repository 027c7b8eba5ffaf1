#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// Leaves the keyboard to the host: an embedded editor has it only while somebody uses it there. That begins
/// with a click into a field and goes on while Tab moves from control to control, until a click on anything
/// else, Escape, or Return where nothing else uses it; or it begins and ends with a menu. Main thread.
class EmbeddedKeyboard final : private juce::FocusChangeListener,
                               private juce::MouseListener,
                               private juce::KeyListener,
                               private juce::AsyncUpdater
{
public:
    /// @param editor  in a window of its own inside the host's already; outlives this
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
    bool isOurs = false;            ///< from a click into a field on
    bool isEndedByKey = false;      ///< as soon as the key has done what it does
    bool mayHaveOpenedMenu = false; ///< the click that has just ended
    bool menuHasEnded = false;

    JUCE_DECLARE_WEAK_REFERENCEABLE(EmbeddedKeyboard)
};

} // namespace velotrine
