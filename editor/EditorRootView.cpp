#include "editor/EditorRootView.h"

namespace velotrine {

namespace {

/// The toolkit has no name for the menu key, whose number on X11 is 0xff67, and reports no press of it.
constexpr int menuKey = 0x67 | 0x10000000;

} // namespace

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
    if (key == juce::KeyPress(juce::KeyPress::F10Key, juce::ModifierKeys::shiftModifier, 0))
        return openMenu();
    return onUnusedKey && onUnusedKey(key);
}

bool EditorRootView::keyStateChanged(bool isKeyDown, juce::Component*)
{
    return isKeyDown && juce::KeyPress::isKeyCurrentlyDown(menuKey) && openMenu();
}

/// In a field, the key would be for the text.
bool EditorRootView::openMenu() const
{
    if (!onMenuKey || dynamic_cast<juce::TextEditor*>(getCurrentlyFocusedComponent()) != nullptr)
        return false;
    onMenuKey();
    return true;
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
