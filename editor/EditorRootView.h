#pragma once

#include "editor/FlippedView.h"

#include <functional>

namespace velotrine {

/// The editor's whole window content. Hears of every key that nothing in the window uses, whatever has the
/// keyboard's focus there, and lets Tab go on where it left off when the focus is nowhere. Main thread.
class EditorRootView final : public FlippedView, private juce::KeyListener, private juce::FocusChangeListener
{
public:
    EditorRootView();
    ~EditorRootView() override;

    EditorRootView(const EditorRootView&) = delete;
    EditorRootView& operator=(const EditorRootView&) = delete;

    /// Whether it uses the key.
    std::function<bool(const juce::KeyPress&)> onUnusedKey;

    void parentHierarchyChanged() override { listenTo(getTopLevelComponent()); }

private:
    using FlippedView::keyPressed;

    bool keyPressed(const juce::KeyPress& key, juce::Component* origin) override;
    void globalFocusChanged(juce::Component* focused) override;
    bool goOnFromNowhere(bool forward);
    void listenTo(juce::Component* newWindow);

    juce::Component::SafePointer<juce::Component> window;
    juce::Component::SafePointer<juce::Component> lastFocused; ///< in the window
};

} // namespace velotrine
