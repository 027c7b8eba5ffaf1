#include "plugin/EmbeddedKeyboard.h"

#include "plugin/X11Connection.h"
#include "plugin/X11ErrorShield.h"

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

} // namespace

EmbeddedKeyboard::EmbeddedKeyboard(juce::Component& editor) : embeddedEditor(editor)
{
    juce::Desktop::getInstance().addFocusChangeListener(this);
    embeddedEditor.addMouseListener(this, true);
    listenToKeys(false);
}

EmbeddedKeyboard::~EmbeddedKeyboard()
{
    cancelPendingUpdate();
    embeddedEditor.removeMouseListener(this);
    juce::Desktop::getInstance().removeFocusChangeListener(this);
}

void EmbeddedKeyboard::globalFocusChanged(juce::Component*)
{
    triggerAsyncUpdate();
}

// JUCE takes the keyboard with every click, whatever is clicked, and a menu leaves it to nobody.

void EmbeddedKeyboard::mouseEnter(const juce::MouseEvent&)
{
    triggerAsyncUpdate();
}

void EmbeddedKeyboard::mouseDown(const juce::MouseEvent&)
{
    triggerAsyncUpdate();
}

void EmbeddedKeyboard::mouseUp(const juce::MouseEvent&)
{
    triggerAsyncUpdate();
}

void EmbeddedKeyboard::handleAsyncUpdate()
{
    const X11ErrorShield shield;
    auto* const focused = juce::Component::getCurrentlyFocusedComponent();
    const auto isTyping =
        dynamic_cast<juce::TextEditor*>(focused) != nullptr && embeddedEditor.isParentOf(focused);
    listenToKeys(isTyping);
    const auto isChoosing = juce::Component::getCurrentlyModalComponent() != nullptr;
    if (!isTyping && !isChoosing)
        giveFocusToHost();
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

/// Takes nothing from anybody: only what is with the editor, or lost with a menu of the editor's, goes back.
void EmbeddedKeyboard::giveFocusToHost() const
{
    auto* const display = x11Connection();
    if (display == nullptr)
        return;
    ::Window focused = 0;
    int revertsTo = 0;
    XGetInputFocus(display, &focused, &revertsTo);
    const auto isWithEditor = focused != 0 && focused == ownWindow();
    if (!isWithEditor && focused != DefaultRootWindow(display) && focused != PointerRoot && focused != 0)
        return;
    if (const auto topLevel = topLevelOf(display, ownWindow()))
        XSetInputFocus(display, topLevel, RevertToParent, CurrentTime);
}

} // namespace velotrine
