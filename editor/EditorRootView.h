#pragma once

#include "editor/FileDropView.h"

#include <functional>

namespace velotrine {

/// The editor's whole window content. Hears of every key that nothing in the window uses, whatever has the
/// keyboard's focus there, and lets Tab go on where it left off when the focus is nowhere. Main thread.
class EditorRootView final : public FileDropView, private juce::KeyListener, private juce::FocusChangeListener
{
public:
    EditorRootView();
    ~EditorRootView() override;

    EditorRootView(const EditorRootView&) = delete;
    EditorRootView& operator=(const EditorRootView&) = delete;

    /// Whether it uses the key.
    std::function<bool(const juce::KeyPress&)> onUnusedKey;

    /// Somebody asks for the context menu: Shift-F10, or the key that is there for it.
    std::function<void()> onMenuKey;

    void parentHierarchyChanged() override { listenTo(getTopLevelComponent()); }

private:
    using FileDropView::keyPressed;
    using FileDropView::keyStateChanged;

    bool keyPressed(const juce::KeyPress& key, juce::Component* origin) override;
    bool keyStateChanged(bool isKeyDown, juce::Component* origin) override;
    bool openMenu() const;
    void globalFocusChanged(juce::Component* focused) override;
    bool goOnFromNowhere(bool forward);
    void listenTo(juce::Component* newWindow);

    juce::Component::SafePointer<juce::Component> window;
    juce::Component::SafePointer<juce::Component> lastFocused; ///< in the window
};

} // namespace velotrine
