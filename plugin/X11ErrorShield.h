#pragma once

namespace velotrine {

/// While one lives, errors that JUCE's connection to the X server reports are passed over instead of ending
/// the process, which is what Xlib does by itself: a host may destroy the window around an editor at any
/// time, and what the editor then asks of its own window fails. Errors of other connections go where they
/// went before. Main thread; they may nest.
class X11ErrorShield
{
public:
    X11ErrorShield();
    ~X11ErrorShield();
    X11ErrorShield(const X11ErrorShield&) = delete;
    X11ErrorShield& operator=(const X11ErrorShield&) = delete;
};

} // namespace velotrine
