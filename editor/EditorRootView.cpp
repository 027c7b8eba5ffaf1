#include "editor/EditorRootView.h"

namespace velotrine {

EditorRootView::EditorRootView()
{
    juce::Desktop::getInstance().addFocusChangeListener(this);
}

EditorRootView::~EditorRootView()
{
    juce::Desktop::getInstance().removeFocusChangeListener(this);
    listenTo(nullptr);
}

bool EditorRootView::keyPressed(const juce::KeyPress& key, juce::Component*)
{
    if (key.isKeyCode(juce::KeyPress::tabKey))
        return goOnFromNowhere(!key.getModifiers().isShiftDown());
    return onUnusedKey && onUnusedKey(key);
}

void EditorRootView::globalFocusChanged(juce::Component* focused)
{
    if (focused != nullptr && window != nullptr && window->isParentOf(focused))
        lastFocused = focused;
}

/// From a control, the toolkit itself goes on to the next.
bool EditorRootView::goOnFromNowhere(bool forward)
{
    if (window == nullptr || window->isParentOf(getCurrentlyFocusedComponent()))
        return false;
    if (lastFocused != nullptr && lastFocused->isShowing() && window->isParentOf(lastFocused)) {
        lastFocused->moveKeyboardFocusToSibling(forward);
        return true;
    }
    // What comes after the window's content is the first thing in it, and before it is the last.
    juce::Component* content = this;
    while (content != window && content->getParentComponent() != window)
        content = content->getParentComponent();
    content->moveKeyboardFocusToSibling(forward);
    return true;
}

void EditorRootView::listenTo(juce::Component* newWindow)
{
    if (window != nullptr)
        window->removeKeyListener(this);
    window = newWindow;
    if (window != nullptr)
        window->addKeyListener(this);
}

} // namespace velotrine
