// How long the application takes to show itself: application_benchmark PROGRAM. Wants a display whose windows
// nobody touches, and the user's settings in a folder to write to.

#include "tests/support/ChildProcess.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace velotrine {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::duration;

constexpr double patienceSeconds = 20.0;

/// Where the editor is in the window, and has nothing but its background. Points.
constexpr int quietX = 20;
constexpr int quietY = 200;
constexpr unsigned long background = 0x404040;

double secondsSince(Clock::time_point start)
{
    return duration<double>(Clock::now() - start).count();
}

bool isTitled(Display* display, Window window, const std::string& title)
{
    XTextProperty name{};
    const bool found = XGetWMName(display, window, &name) != 0 && name.value != nullptr &&
                       title == reinterpret_cast<const char*>(name.value);
    if (name.value != nullptr)
        XFree(name.value);
    return found;
}

/// The window of a title at or below another; None when there is none.
Window windowTitled(Display* display, Window below, const std::string& title)
{
    if (isTitled(display, below, title))
        return below;
    Window ignored = None;
    Window* children = nullptr;
    unsigned int count = 0;
    if (XQueryTree(display, below, &ignored, &ignored, &children, &count) == 0)
        return None;
    Window window = None;
    for (unsigned int i = 0; i < count && window == None; ++i)
        window = windowTitled(display, children[i], title);
    if (children != nullptr)
        XFree(children);
    return window;
}

bool showsEditor(Display* display)
{
    const auto window = windowTitled(display, DefaultRootWindow(display), "Velotrine");
    XWindowAttributes attributes{};
    if (window == None || XGetWindowAttributes(display, window, &attributes) == 0 ||
        attributes.map_state != IsViewable || attributes.height <= quietY)
        return false;
    auto* const image = XGetImage(display, window, quietX, quietY, 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr)
        return false;
    const auto pixel = XGetPixel(image, 0, 0) & 0xffffff;
    XDestroyImage(image);
    return pixel == background;
}

/// The application, as long as this lives.
class Application
{
public:
    explicit Application(const std::string& program) : process({program}, {}) {}

    ~Application()
    {
        process.send(SIGTERM);
        static_cast<void>(process.finish());
    }

    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    ChildProcess process;
};

/// Help comes but once, and in front of the editor.
bool showsHelp(Display* display)
{
    return windowTitled(display, DefaultRootWindow(display), "Velotrine Help") != None;
}

template <typename Condition>
std::optional<double> secondsUntil(Clock::time_point start, Condition&& holds)
{
    while (secondsSince(start) < patienceSeconds) {
        if (holds())
            return secondsSince(start);
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    return std::nullopt;
}

int measure(const std::string& program)
{
    auto* const display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fputs("application_benchmark: there is no display\n", stderr);
        return 1;
    }
    // A window may go away between being found and being looked at.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });

    constexpr int runs = 7;
    std::vector<double> seconds;
    for (int run = 0; run <= runs; ++run) {
        const auto start = Clock::now();
        const Application application(program);
        const auto painted =
            secondsUntil(start, [&] { return run == 0 ? showsHelp(display) : showsEditor(display); });
        if (!painted) {
            std::fputs("application_benchmark: no window\n", stderr);
            return 1;
        }
        // The first run warms the machine.
        if (run > 0)
            seconds.push_back(*painted);
    }
    std::ranges::sort(seconds);
    std::printf("first painted frame after process start: %.0f ms (%.0f to %.0f)\n",
                1000.0 * seconds[runs / 2], 1000.0 * seconds.front(), 1000.0 * seconds.back());
    XCloseDisplay(display);
    return 0;
}

} // namespace
} // namespace velotrine

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2) {
        std::fputs("usage: application_benchmark PROGRAM\n", stderr);
        return 2;
    }
    return velotrine::measure(arguments[1]);
}
