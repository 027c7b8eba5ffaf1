#include "tests/support/VirtualDisplay.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <set>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velotrine {

namespace {

/// The number that the server writes once it is ready.
std::string readLine(int descriptor)
{
    std::string line;
    char character = 0;
    while (read(descriptor, &character, 1) == 1 && character != '\n')
        line += character;
    return line;
}

} // namespace

VirtualDisplay::VirtualDisplay()
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        throw std::runtime_error("no pipe");
    server = fork();
    if (server == 0) {
        close(ends[0]);
        const auto silence = open("/dev/null", O_WRONLY);
        dup2(silence, STDOUT_FILENO);
        dup2(silence, STDERR_FILENO);
        prctl(PR_SET_PDEATHSIG, SIGTERM); // it ends with the test, however that ends
        const auto descriptor = std::to_string(ends[1]);
        execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "1600x1200x24", "-nolisten",
               "tcp", nullptr);
        _exit(127);
    }
    close(ends[1]);
    const auto number = readLine(ends[0]);
    close(ends[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb did not start");
    setenv("DISPLAY", (":" + number).c_str(), 1);
    display = XOpenDisplay(nullptr);
    if (display == nullptr)
        throw std::runtime_error("Xvfb does not answer");
}

VirtualDisplay::~VirtualDisplay()
{
    if (display != nullptr)
        XCloseDisplay(display);
    kill(server, SIGTERM);
    waitpid(server, nullptr, 0);
}

const VirtualDisplay& VirtualDisplay::shared()
{
    static const VirtualDisplay display;
    return display;
}

XWindow VirtualDisplay::makeWindow(unsigned width, unsigned height) const
{
    const auto window =
        XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, width, height, 0, 0, 0x303030);
    XSelectInput(display, window, KeyPressMask);
    XMapWindow(display, window);
    XSync(display, False);
    return window;
}

void VirtualDisplay::destroyWindow(XWindow window) const
{
    XDestroyWindow(display, window);
    XSync(display, False);
}

void VirtualDisplay::resizeWindow(XWindow window, unsigned width, unsigned height) const
{
    XResizeWindow(display, window, width, height);
    XSync(display, False);
}

XWindow VirtualDisplay::childOf(XWindow window) const
{
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    XQueryTree(display, window, &root, &parent, &children, &count);
    const auto child = count == 1 ? children[0] : 0;
    if (children != nullptr)
        XFree(children);
    return child;
}

std::pair<int, int> VirtualDisplay::sizeOf(XWindow window) const
{
    XWindowAttributes attributes{};
    XGetWindowAttributes(display, window, &attributes);
    return {attributes.width, attributes.height};
}

std::vector<unsigned long> VirtualDisplay::pixelsOf(XWindow window, int firstColumn) const
{
    const auto [width, height] = sizeOf(window);
    auto* const image = XGetImage(display, window, 0, 0, static_cast<unsigned>(width),
                                  static_cast<unsigned>(height), AllPlanes, ZPixmap);
    if (image == nullptr)
        throw std::runtime_error("no picture of the window");
    std::vector<unsigned long> pixels;
    for (int y = 0; y < height; ++y)
        for (int x = firstColumn; x < width; ++x)
            pixels.push_back(XGetPixel(image, x, y));
    XDestroyImage(image);
    return pixels;
}

unsigned long VirtualDisplay::pixelOf(XWindow window, const std::string& place) const
{
    int x = 0;
    int y = 0;
    std::istringstream(place) >> x >> y;
    return pixelsOf(window).at(static_cast<std::size_t>(y * sizeOf(window).first + x));
}

int VirtualDisplay::coloursIn(XWindow window) const
{
    const auto pixels = pixelsOf(window);
    return static_cast<int>(std::set(pixels.begin(), pixels.end()).size());
}

void VirtualDisplay::giveKeyboardTo(XWindow window) const
{
    XSetInputFocus(display, window, RevertToParent, CurrentTime);
    XSync(display, False);
}

XWindow VirtualDisplay::keyboardOwner() const
{
    Window owner = 0;
    int revertsTo = 0;
    XGetInputFocus(display, &owner, &revertsTo);
    return owner;
}

bool VirtualDisplay::listensToKeys(XWindow window) const
{
    XWindowAttributes attributes{};
    XGetWindowAttributes(display, window, &attributes);
    return (attributes.all_event_masks & KeyPressMask) != 0;
}

bool VirtualDisplay::takeKeyPress(XWindow window) const
{
    XEvent event{};
    return XCheckTypedWindowEvent(display, window, KeyPress, &event) == True;
}

void VirtualDisplay::act(const std::string& commands) const
{
    if (std::system(("xdotool " + commands).c_str()) != 0)
        throw std::runtime_error("xdotool could not " + commands);
}

} // namespace velotrine
