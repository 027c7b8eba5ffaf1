#pragma once

#include "editor/FlippedView.h"

#include <functional>

namespace velotrine {

/// The editor's whole window content. Hears of every key that nothing in the window uses, whatever has the
/// keyboard's focus there. Main thread.
class EditorRootView final : public FlippedView, private juce::KeyListener
{
public:
    EditorRootView() = default;

    ~EditorRootView() override { listenTo(nullptr); }

    EditorRootView(const EditorRootView&) = delete;
    EditorRootView& operator=(const EditorRootView&) = delete;

    /// Whether it uses the key.
    std::function<bool(const juce::KeyPress&)> onUnusedKey;

    void parentHierarchyChanged() override { listenTo(getTopLevelComponent()); }

private:
    using FlippedView::keyPressed;

    bool keyPressed(const juce::KeyPress& key, juce::Component*) override
    {
        return onUnusedKey && onUnusedKey(key);
    }

    void listenTo(juce::Component* newWindow)
    {
        if (window != nullptr)
            window->removeKeyListener(this);
        window = newWindow;
        if (window != nullptr)
            window->addKeyListener(this);
    }

    juce::Component::SafePointer<juce::Component> window;
};

} // namespace velotrine
