#define JUCE_GUI_BASICS_INCLUDE_XHEADERS 1
#include <juce_gui_basics/juce_gui_basics.h>

#include "plugin/X11Connection.h"

#include <array>

namespace velotrine {

Display* x11Connection() noexcept
{
    const auto* const system = juce::XWindowSystem::getInstanceWithoutCreating();
    return system != nullptr ? system->getDisplay() : nullptr;
}

bool prepareX11Server()
{
    auto* const connection = XOpenDisplay(nullptr);
    if (connection == nullptr)
        return false;
    for (const auto* const name :
         {"KWM_WIN_DECORATION", "WM_CHANGE_STATE", "WM_DELETE_WINDOW", "WM_PROTOCOLS", "WM_STATE",
          "WM_TAKE_FOCUS", "_KDE_NET_WM_WINDOW_TYPE_OVERRIDE", "_MOTIF_WM_HINTS", "_NET_FRAME_EXTENTS",
          "_NET_WM_ALLOWED_ACTIONS", "_NET_WM_PING", "_NET_WM_STATE", "_NET_WM_STATE_FULLSCREEN",
          "_NET_WM_STATE_HIDDEN", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_COMBO",
          "_NET_WM_WINDOW_TYPE_NORMAL", "_NET_WORKAREA", "_WIN_HINTS"})
        XInternAtom(connection, name, False);
    XCloseDisplay(connection);
    return true;
}

} // namespace velotrine
