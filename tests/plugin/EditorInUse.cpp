#include "tests/plugin/EditorInUse.h"

#include <stdexcept>

namespace velotrine {

using namespace std::chrono_literals;

EditorInUse::EditorInUse(PluginUnderTest& pluginInAHost, XWindow hostWindow, double scale)
    : plugin(pluginInAHost), parent(hostWindow)
{
    if (!plugin.openEditor(parent, scale))
        throw std::runtime_error("the editor does not open");
}

EditorInUse::~EditorInUse()
{
    plugin.closeEditor();
}

bool EditorInUse::comesTrue(const std::function<bool()>& condition)
{
    for (const auto end = std::chrono::steady_clock::now() + 10s; !condition();) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        plugin.runLoop(10ms);
    }
    return true;
}

bool EditorInUse::shows()
{
    return comesTrue([this] { return display.coloursIn(parent) > manyColours; });
}

void EditorInUse::act(const std::string& commands)
{
    display.act(commands);
    plugin.runLoop(50ms);
}

void EditorInUse::click(const std::string& place)
{
    act("mousemove " + place + " click 1");
}

void EditorInUse::turnKnob()
{
    act(std::string("mousemove ") + knob + " mousedown 1");
    act("mousemove_relative -- 0 -20 mousemove_relative -- 0 -20");
}

bool EditorInUse::hostHasKeyboard() const
{
    return display.keyboardOwner() == parent && !display.listensToKeys(display.childOf(parent));
}

bool EditorInUse::comesToHaveKeyboard()
{
    return comesTrue([this] {
        return display.keyboardOwner() != parent && display.listensToKeys(display.childOf(parent));
    });
}

bool EditorInUse::type(const std::string& field, const std::string& text)
{
    click(field);
    if (!comesToHaveKeyboard())
        return false;
    act("type " + text);
    return true;
}

bool EditorInUse::leavesKeyToHost(const std::string& key)
{
    if (!comesTrue([this] { return hostHasKeyboard(); }))
        return false;
    display.act("key " + key);
    return comesTrue([this] { return display.takeKeyPress(parent); });
}

bool EditorInUse::comesToSave(std::string_view text)
{
    return comesTrue([&] { return saves(text); });
}

bool EditorInUse::saves(std::string_view text) const
{
    return plugin.save().find(text) != std::string::npos;
}

} // namespace velotrine
