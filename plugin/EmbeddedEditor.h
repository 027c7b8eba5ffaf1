#pragma once

#include "plugin/HostedInstrument.h"

#include <functional>
#include <memory>
#include <vector>

namespace velotrine {

/// The editor in a host's window, on X11. The host owns the window around it, its size, and the event loop:
/// it calls pump() when one of the descriptors has something to read, or often enough. Main thread. The
/// host's window may go away at any time; what the editor still draws then has no effect.
class EmbeddedEditor
{
public:
    /// Of the window, in the screen's pixels.
    struct PixelSize
    {
        int width = 0;
        int height = 0;
    };

    /// @param instrument  outlives the editor
    explicit EmbeddedEditor(HostedInstrument& instrument);
    ~EmbeddedEditor();

    /// Whether there is an X server to show anything on.
    [[nodiscard]] static bool hasDisplay();

    /// Builds the editor at the size that the state remembers. Nothing shows yet.
    void open();

    /// Takes it down again; the next open() starts afresh. Does nothing while not open.
    void close();

    [[nodiscard]] bool isOpen() const noexcept { return window != nullptr; }

    // While open:

    /// Puts the editor into the host's window, at its top left. False if it cannot be done.
    bool attach(unsigned long parentWindow);

    /// The editor's window inside the host's; 0 while it is in none.
    [[nodiscard]] unsigned long ownWindow() const;

    void setVisible(bool shouldBeVisible);

    /// Pixels for each of the editor's points, in place of what the screen's settings say. False for a scale
    /// that no screen has.
    bool setScale(double pixelsPerPoint);

    [[nodiscard]] PixelSize size() const;

    /// Of the sizes that the editor can have on this screen, the nearest to the wanted one.
    [[nodiscard]] PixelSize nearestSize(PixelSize wanted) const;

    /// Takes the nearest size to the wanted one; the state then remembers it.
    void setSize(PixelSize wanted);

    // Messages, open or not:

    /// File descriptors to watch for input.
    [[nodiscard]] std::vector<int> descriptors() const;

    /// Called when there are others to watch.
    std::function<void()> onDescriptorsChanged;

    /// Handles the messages that are there, and does not wait for more.
    void pump();

private:
    class Messages;
    class Window;

    HostedInstrument& hostedInstrument;
    std::unique_ptr<Messages> messages;
    std::unique_ptr<Window> window;
};

} // namespace velotrine
