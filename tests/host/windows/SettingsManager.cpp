#include "tests/host/windows/SettingsManager.h"

#include <X11/Xlib.h>

namespace velotrine {

struct SettingsManager::Connection
{
    Connection() : display(XOpenDisplay(nullptr)) {}

    ~Connection() { XCloseDisplay(display); } // which takes the window and what it owns with it

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Display* display;
};

SettingsManager::SettingsManager(std::span<const std::byte> settings)
    : connection(std::make_unique<Connection>())
{
    auto* const display = connection->display;
    const auto window = XCreateSimpleWindow(display, DefaultRootWindow(display), -1, -1, 1, 1, 0, 0, 0);
    const auto property = XInternAtom(display, "_XSETTINGS_SETTINGS", False);
    constexpr int bitsOfBytes = 8;
    XChangeProperty(display, window, property, property, bitsOfBytes, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(settings.data()),
                    static_cast<int>(settings.size()));
    XSetSelectionOwner(display, XInternAtom(display, "_XSETTINGS_S0", False), window, CurrentTime);
    XSync(display, False);
}

SettingsManager::~SettingsManager() = default;

} // namespace velotrine
