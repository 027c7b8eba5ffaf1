#pragma once

namespace velotrine {

/// While one lives, X errors on JUCE's connection are ignored. Xlib would end the process: a host may destroy
/// the window around an editor at any time, and what the editor then asks of its own window fails. Errors on
/// other connections go where they went before. Main thread; they may nest.
class X11ErrorShield
{
public:
    X11ErrorShield();
    ~X11ErrorShield();
    X11ErrorShield(const X11ErrorShield&) = delete;
    X11ErrorShield& operator=(const X11ErrorShield&) = delete;
};

} // namespace velotrine
