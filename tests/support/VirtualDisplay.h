#pragma once

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

// Xlib's own name; its header would define macros of common names.
struct _XDisplay; // NOLINT(bugprone-reserved-identifier)

namespace velotrine {

using XWindow = unsigned long;

/// The test's own X server, without a window manager; this process uses it while it lives. Fails by throwing.
class VirtualDisplay
{
public:
    VirtualDisplay();
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    /// One for all tests of this process, from the first that asks for it.
    [[nodiscard]] static const VirtualDisplay& shared();

    /// A visible window at the screen's top left.
    [[nodiscard]] XWindow makeWindow(unsigned width, unsigned height) const;
    void destroyWindow(XWindow window) const;
    void resizeWindow(XWindow window, unsigned width, unsigned height) const;

    /// The only window inside another; 0 for none.
    [[nodiscard]] XWindow childOf(XWindow window) const;

    [[nodiscard]] std::pair<int, int> sizeOf(XWindow window) const;

    /// The window's pixels as the screen shows them, from a column on.
    [[nodiscard]] std::vector<unsigned long> pixelsOf(XWindow window, int firstColumn = 0) const;

    /// One of them.
    /// @param place  from the window's left and top, as xdotool wants it
    [[nodiscard]] unsigned long pixelOf(XWindow window, const std::string& place) const;

    /// How many colours there are to see.
    [[nodiscard]] int coloursIn(XWindow window) const;

    void giveKeyboardTo(XWindow window) const;
    [[nodiscard]] XWindow keyboardOwner() const;

    /// Whether the window takes keys that are pressed with the mouse above it, whoever owns the keyboard.
    [[nodiscard]] bool listensToKeys(XWindow window) const;

    /// Whether a key has been pressed for this window, and was not taken by another.
    [[nodiscard]] bool takeKeyPress(XWindow window) const;

    /// Moves the mouse, presses keys and buttons: xdotool's own words.
    void act(const std::string& commands) const;

private:
    pid_t server = -1;
    _XDisplay* display = nullptr;
};

} // namespace velotrine
