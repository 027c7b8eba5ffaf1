#include "plugin/X11ErrorShield.h"

#include "plugin/X11Connection.h"

#include <atomic>

namespace velotrine {

namespace {

int depth = 0;
std::atomic<XErrorHandler> handlerBefore{nullptr}; // the handler may run on any thread of the host

int ignoreOurs(Display* display, XErrorEvent* error)
{
    const auto before = handlerBefore.load();
    if (display == x11Connection() || before == nullptr)
        return 0;
    return before(display, error);
}

} // namespace

X11ErrorShield::X11ErrorShield()
{
    if (depth++ == 0)
        handlerBefore = XSetErrorHandler(ignoreOurs);
}

X11ErrorShield::~X11ErrorShield()
{
    if (--depth == 0)
        XSetErrorHandler(handlerBefore);
}

} // namespace velotrine
