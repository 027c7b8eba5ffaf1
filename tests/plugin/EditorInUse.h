#pragma once

#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/PluginUnderTest.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace velotrine {

/// A plug-in's editor in a window of the host's, and the hand that uses it. What it waits for it waits for as
/// long as a busy machine needs.
class EditorInUse
{
public:
    /// Opens the editor. Throws if that fails.
    /// @param plugin  outlives this
    EditorInUse(PluginUnderTest& plugin, XWindow hostWindow, double scale = 1.0);

    /// Closes it, if it is still open.
    ~EditorInUse();

    EditorInUse(const EditorInUse&) = delete;
    EditorInUse& operator=(const EditorInUse&) = delete;

    /// Lets the host work until something holds. False if it does not within some seconds.
    [[nodiscard]] bool comesTrue(const std::function<bool()>& condition);

    [[nodiscard]] bool shows();

    /// xdotool's words, and some moments for the host.
    void act(const std::string& commands);

    void click(const std::string& place);

    /// Presses the mouse on the first knob and turns the knob up.
    void turnKnob();

    [[nodiscard]] bool hostHasKeyboard() const;
    [[nodiscard]] bool comesToHaveKeyboard();

    /// Clicks a field and types into it, and does no more.
    [[nodiscard]] bool type(const std::string& field, const std::string& text);

    /// Whether a key that is pressed now is the host's.
    [[nodiscard]] bool leavesKeyToHost(const std::string& key);

    /// Whether the plug-in saves this text, now or within some seconds.
    [[nodiscard]] bool comesToSave(std::string_view text);
    [[nodiscard]] bool saves(std::string_view text) const;

private:
    const VirtualDisplay& display = VirtualDisplay::shared();
    PluginUnderTest& plugin;
    const XWindow parent;
};

} // namespace velotrine
