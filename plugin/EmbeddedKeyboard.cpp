#include "plugin/EmbeddedKeyboard.h"

#include "plugin/X11Connection.h"
#include "plugin/X11ErrorShield.h"

#include <utility>

#undef KeyPress // X11's name for an event, JUCE's for a key that is pressed

namespace velotrine {

namespace {

bool hasProperty(Display* display, ::Window window, const char* name)
{
    const auto property = XInternAtom(display, name, False);
    Atom type = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long bytesLeft = 0;
    unsigned char* data = nullptr;
    const auto status = XGetWindowProperty(display, window, property, 0, 0, False, AnyPropertyType, &type,
                                           &format, &items, &bytesLeft, &data);
    if (data != nullptr)
        XFree(data);
    return status == Success && type != 0;
}

/// The window to which a window manager would give the keyboard: the one that it manages, or, without a
/// window manager, the outermost.
::Window topLevelOf(Display* display, ::Window window)
{
    while (!hasProperty(display, window, "WM_STATE")) {
        ::Window root = 0;
        ::Window parent = 0;
        ::Window* children = nullptr;
        unsigned int childCount = 0;
        if (XQueryTree(display, window, &root, &parent, &children, &childCount) == 0)
            return 0;
        if (children != nullptr)
            XFree(children);
        if (parent == root)
            break;
        window = parent;
    }
    return window;
}

juce::TextEditor* fieldAt(juce::Component& component)
{
    if (auto* const field = dynamic_cast<juce::TextEditor*>(&component))
        return field;
    return component.findParentComponentOfClass<juce::TextEditor>();
}

} // namespace

EmbeddedKeyboard::EmbeddedKeyboard(juce::Component& editor) : embeddedEditor(editor)
{
    juce::Desktop::getInstance().addFocusChangeListener(this);
    embeddedEditor.addMouseListener(this, true);
    embeddedEditor.addKeyListener(this);
    listenToKeys(false);
}

EmbeddedKeyboard::~EmbeddedKeyboard()
{
    cancelPendingUpdate();
    embeddedEditor.removeKeyListener(this);
    embeddedEditor.removeMouseListener(this);
    juce::Desktop::getInstance().removeFocusChangeListener(this);
}

/// JUCE takes the X server's focus at every click, whatever is clicked. Unless that is a field, the focus
/// goes back at once: when the server confirms it, JUCE would give the keyboard to whatever had it last.
void EmbeddedKeyboard::mouseDown(const juce::MouseEvent& event)
{
    const X11ErrorShield shield;
    auto* const field = fieldAt(*event.eventComponent);
    if (field != nullptr && field->hasKeyboardFocus(true))
        take(*field);
    else
        giveBack(false);
}

void EmbeddedKeyboard::mouseUp(const juce::MouseEvent&)
{
    mayHaveOpenedMenu = true;
    triggerAsyncUpdate();
}

void EmbeddedKeyboard::globalFocusChanged(juce::Component*)
{
    triggerAsyncUpdate();
}

/// A key that nothing in the editor uses.
bool EmbeddedKeyboard::keyPressed(const juce::KeyPress& key, juce::Component*)
{
    if (key.isKeyCode(juce::KeyPress::escapeKey) || key.isKeyCode(juce::KeyPress::returnKey)) {
        isEndedByKey = true;
        triggerAsyncUpdate();
    }
    return false;
}

void EmbeddedKeyboard::handleAsyncUpdate()
{
    const X11ErrorShield shield;
    const auto isEnded = std::exchange(isEndedByKey, false);
    const auto isAfterMenu = std::exchange(menuHasEnded, false);
    const auto isAfterClick = std::exchange(mayHaveOpenedMenu, false);
    auto* const focused = juce::Component::getCurrentlyFocusedComponent();
    auto* const menu = juce::Component::getCurrentlyModalComponent();
    if (isOurs && !isEnded && embeddedEditor.isParentOf(focused))
        return;
    auto* const field = isAfterMenu && embeddedEditor.isParentOf(focused) ? fieldAt(*focused) : nullptr;
    if (menu == nullptr && field != nullptr)
        take(*field);
    else if (menu == nullptr)
        giveBack(isAfterMenu);
    else if (isAfterClick)
        takeForMenu(*menu);
}

void EmbeddedKeyboard::take(juce::TextEditor& field)
{
    isOurs = true;
    // Once the server says that the window has the focus, JUCE gives it to whatever had it when the window
    // lost it.
    auto* const peer = embeddedEditor.getPeer();
    if (peer != nullptr && peer->getLastFocusedSubcomponent() != &field) {
        peer->handleFocusLoss();
        peer->handleFocusGain();
    }
    listenToKeys(true);
}

/// A click on a button has opened it, and its keys come through the editor's window.
void EmbeddedKeyboard::takeForMenu(juce::Component& menu)
{
    if (auto* const peer = embeddedEditor.getPeer())
        peer->grabFocus();
    listenToKeys(true);
    const auto onEnd = [weak = juce::WeakReference(this)](int) {
        if (weak == nullptr)
            return;
        weak->menuHasEnded = true;
        weak->triggerAsyncUpdate();
    };
    juce::ModalComponentManager::getInstance()->attachCallback(&menu,
                                                               juce::ModalCallbackFunction::create(onEnd));
}

/// Takes the focus from nobody else: it goes back only if the editor has it, or lost it with one of its
/// menus.
void EmbeddedKeyboard::giveBack(bool isAfterMenu)
{
    isOurs = false;
    if (auto* const focused = juce::Component::getCurrentlyFocusedComponent())
        if (embeddedEditor.isParentOf(focused))
            focused->giveAwayKeyboardFocus();
    listenToKeys(false);
    auto* const display = x11Connection();
    if (display == nullptr)
        return;
    ::Window focused = 0;
    int revertsTo = 0;
    XGetInputFocus(display, &focused, &revertsTo);
    const auto isWithEditor = focused != 0 && focused == ownWindow();
    const auto isNowhere = focused == DefaultRootWindow(display) || focused == PointerRoot || focused == 0;
    if (!isWithEditor && !(isNowhere && isAfterMenu))
        return;
    if (const auto topLevel = topLevelOf(display, ownWindow()))
        XSetInputFocus(display, topLevel, RevertToParent, CurrentTime);
}

unsigned long EmbeddedKeyboard::ownWindow() const
{
    const auto* const peer = embeddedEditor.getPeer();
    return peer != nullptr ? reinterpret_cast<::Window>(peer->getNativeHandle()) : 0;
}

/// A window that does not listen lets keys through to the host's around it, wherever the mouse is.
void EmbeddedKeyboard::listenToKeys(bool shouldListen) const
{
    XWindowAttributes attributes{};
    auto* const display = x11Connection();
    const auto window = ownWindow();
    if (display == nullptr || window == 0 || XGetWindowAttributes(display, window, &attributes) == 0)
        return;
    constexpr long keys = KeyPressMask | KeyReleaseMask;
    XSelectInput(display, window,
                 shouldListen ? attributes.your_event_mask | keys : attributes.your_event_mask & ~keys);
}

} // namespace velotrine
