#pragma once

#include "tests/plugin/ClapHost.h"
#include "tests/plugin/EditorPlaces.h"
#include "tests/plugin/Lv2Host.h"
#include "tests/plugin/VirtualDisplay.h"
#include "tests/plugin/Vst3Host.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velotrine {

// One editor in a window of the host's, for tests of what all formats have in common: what the host does to
// open it, to let it work for some moments, and to keep its values.

class ClapEditorInAHost
{
public:
    void open(XWindow parent, double scale = 1.0)
    {
        const auto* const plugin = &host.plugin();
        const auto& gui = host.extension<clap_plugin_gui_t>(CLAP_EXT_GUI);
        clap_window_t window{};
        window.api = CLAP_WINDOW_API_X11;
        window.x11 = parent;
        if (!gui.create(plugin, CLAP_WINDOW_API_X11, false) || !gui.set_scale(plugin, scale) ||
            !gui.set_parent(plugin, &window) || !gui.show(plugin))
            throw std::runtime_error("the CLAP editor does not open");
    }

    void work(std::chrono::milliseconds duration) { host.runLoop(duration); }

    [[nodiscard]] std::string save() const { return host.save(); }

    bool load(const std::string& state) { return host.load(state); }

private:
    ClapLibrary library;
    ClapHost host{library};
};

class Lv2EditorInAHost
{
public:
    void open(XWindow parent, double scale = 1.0)
    {
        if (!host.openUi(parent, static_cast<float>(scale)))
            throw std::runtime_error("the LV2 editor does not open");
    }

    void work(std::chrono::milliseconds duration) { host.idle(duration); }

    [[nodiscard]] std::string save() const { return host.save(); }

    bool load(const std::string& state) { return host.restore(state) == LV2_STATE_SUCCESS; }

private:
    Lv2Library library;
    Lv2Host host{library};
};

class Vst3EditorInAHost
{
public:
    void open(XWindow parent)
    {
        if (!host.open(parent))
            throw std::runtime_error("the VST3 editor does not open");
    }

    void work(std::chrono::milliseconds duration) { host.runLoop(duration); }

    [[nodiscard]] std::string save() const { return host.save(); }

    bool load(const std::string& state) { return host.load(state); }

private:
    Vst3Host host;
};

/// The editor, and the hand that uses it. What it waits for it waits for as long as a busy machine needs.
template <typename Editor>
class EditorInUse
{
public:
    explicit EditorInUse(XWindow hostWindow) : parent(hostWindow) { editor.open(parent); }

    EditorInUse(XWindow hostWindow, double scale) : parent(hostWindow) { editor.open(parent, scale); }

    /// Lets the host work until something holds. False if it does not within some seconds.
    template <typename Condition>
    [[nodiscard]] bool comesTrue(Condition condition)
    {
        using namespace std::chrono_literals;
        for (const auto end = std::chrono::steady_clock::now() + 10s; !condition();) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            editor.work(10ms);
        }
        return true;
    }

    [[nodiscard]] bool shows()
    {
        return comesTrue([this] { return display.coloursIn(parent) > manyColours; });
    }

    /// xdotool's words, and some moments for the host.
    void act(const std::string& commands)
    {
        display.act(commands);
        editor.work(std::chrono::milliseconds(50));
    }

    void click(const std::string& place) { act("mousemove " + place + " click 1"); }

    [[nodiscard]] bool hostHasKeyboard() const
    {
        return display.keyboardOwner() == parent && !display.listensToKeys(display.childOf(parent));
    }

    [[nodiscard]] bool comesToHaveKeyboard()
    {
        return comesTrue([this] {
            return display.keyboardOwner() != parent && display.listensToKeys(display.childOf(parent));
        });
    }

    /// Whether a key that is pressed now is the host's.
    [[nodiscard]] bool leavesKeyToHost(const std::string& key)
    {
        if (!comesTrue([this] { return hostHasKeyboard(); }))
            return false;
        display.act("key " + key);
        return comesTrue([this] { return display.takeKeyPress(parent); });
    }

    /// Whether the plug-in comes to save this text.
    [[nodiscard]] bool comesToSave(std::string_view text)
    {
        return comesTrue([&] { return saves(text); });
    }

    [[nodiscard]] bool saves(std::string_view text) const { return save().find(text) != std::string::npos; }

    [[nodiscard]] std::string save() const { return editor.save(); }

    bool load(const std::string& state) { return editor.load(state); }

private:
    const VirtualDisplay& display = VirtualDisplay::shared();
    const XWindow parent;
    Editor editor;
};

} // namespace velotrine
