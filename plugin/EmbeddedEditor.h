#pragma once

#include "plugin/HostedInstrument.h"

#include <functional>
#include <memory>
#include <vector>

namespace velotrine {

/// The editor in a window of the host's, on X11. The host owns the window around it, its size, and the loop
/// in which messages are taken: it calls pump() when one of the descriptors has something to read, or often
/// enough. Main thread. The host's window may go away at any time; what the editor then still draws comes to
/// nothing.
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

    /// Builds the editor in the size that the state remembers. Nothing shows yet.
    void open();

    /// Takes it down again; the next open() begins afresh. Does nothing while not open.
    void close();

    [[nodiscard]] bool isOpen() const noexcept { return window != nullptr; }

    // While open:

    /// Puts the editor into the host's window, at its top left. False if it cannot be done.
    bool attach(unsigned long parentWindow);

    /// The editor's window inside the host's; 0 while it is in none.
    [[nodiscard]] unsigned long ownWindow() const;

    void setVisible(bool shouldBeVisible);

    /// Pixels for each point of the editor's, instead of what the screen's settings say. False for what no
    /// screen has.
    bool setScale(double pixelsPerPoint);

    [[nodiscard]] PixelSize size() const;

    /// The size nearest to a wanted one that the editor can have on this screen.
    [[nodiscard]] PixelSize nearestSize(PixelSize wanted) const;

    /// Takes the size nearest to the wanted one, which the state then remembers.
    void setSize(PixelSize wanted);

    // Messages, open or not:

    /// What to watch for something to read.
    [[nodiscard]] std::vector<int> descriptors() const;

    /// Told when there are others to watch.
    std::function<void()> onDescriptorsChanged;

    /// Takes what messages there are, and does not wait for more.
    void pump();

private:
    class Messages;
    class Window;

    HostedInstrument& hostedInstrument;
    std::unique_ptr<Messages> messages;
    std::unique_ptr<Window> window;
};

} // namespace velotrine
