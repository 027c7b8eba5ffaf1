#include "host/DesktopSettings.h"

#include <cstdlib>
#include <memory>

#ifdef __linux__
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#endif

namespace velotrine {

namespace {

#ifdef __linux__
struct CloseDisplay
{
    void operator()(Display* display) const { XCloseDisplay(display); }
};

/// Holds back every other client's requests, so that a window cannot vanish while it is queried: a query of a
/// window that is gone makes Xlib end the program.
class ServerGrab
{
public:
    explicit ServerGrab(Display* grabbed) : display(grabbed) { XGrabServer(display); }

    ~ServerGrab()
    {
        XUngrabServer(display);
        XFlush(display);
    }

    ServerGrab(const ServerGrab&) = delete;
    ServerGrab& operator=(const ServerGrab&) = delete;

private:
    Display* display;
};

std::vector<std::byte> bytesOfProperty(Display* display, Window window, Atom property)
{
    constexpr long mostWords = 16384; // of four bytes; desktops have a few hundred
    constexpr int bitsOfBytes = 8;
    Atom type = None;
    int bits = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display, window, property, 0, mostWords, False, property, &type, &bits, &count, &left,
                       &data);
    const std::unique_ptr<unsigned char, int (*)(void*)> owner(data, XFree);
    if (data == nullptr || bits != bitsOfBytes)
        return {};
    const auto* const bytes = reinterpret_cast<const std::byte*>(data);
    return {bytes, bytes + count};
}

std::vector<std::byte> xSettingsOf(Display* display)
{
    const auto selection = "_XSETTINGS_S" + std::to_string(DefaultScreen(display));
    const auto manager = XInternAtom(display, selection.c_str(), False);
    const auto property = XInternAtom(display, "_XSETTINGS_SETTINGS", False);
    const ServerGrab grab(display);
    const auto window = XGetSelectionOwner(display, manager);
    return window == None ? std::vector<std::byte>() : bytesOfProperty(display, window, property);
}
#endif

} // namespace

DesktopSettings readDesktopSettings()
{
    DesktopSettings settings;
    if (const auto* const scale = std::getenv("GDK_SCALE"))
        settings.gdkScale = scale;
#ifdef __linux__
    const std::unique_ptr<Display, CloseDisplay> display(XOpenDisplay(nullptr));
    if (!display)
        return settings;
    settings.xSettings = xSettingsOf(display.get());
    if (const auto* const resources = XResourceManagerString(display.get()))
        settings.resources = resources;
#endif
    return settings;
}

} // namespace velotrine
