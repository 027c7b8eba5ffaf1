#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace velotrine {

/// Leaves the keyboard to the host: an embedded editor has it only while somebody types into one of its
/// fields or chooses from one of its menus. Main thread.
class EmbeddedKeyboard final : private juce::FocusChangeListener,
                               private juce::MouseListener,
                               private juce::AsyncUpdater
{
public:
    /// @param editor  in a window of its own inside the host's already; outlives this
    explicit EmbeddedKeyboard(juce::Component& editor);
    ~EmbeddedKeyboard() override;

private:
    void globalFocusChanged(juce::Component* focused) override;
    void mouseEnter(const juce::MouseEvent& event) override;
    void mouseDown(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
    void handleAsyncUpdate() override;
    [[nodiscard]] unsigned long ownWindow() const;
    void listenToKeys(bool shouldListen) const;
    void giveFocusToHost() const;

    juce::Component& embeddedEditor;
};

} // namespace velotrine
