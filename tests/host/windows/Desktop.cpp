#include "tests/host/windows/Desktop.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/MessageLoop.h"

#include <sstream>

namespace velotrine {

namespace {

constexpr double patienceSeconds = 10.0;

// JUCE survives a window that closes while it asks about it only in what it takes for an application.
[[maybe_unused]] const auto asApplication =
    juce::JUCEApplicationBase::createInstance = []() -> juce::JUCEApplicationBase* { return nullptr; };

} // namespace

std::string xdotool(const std::vector<std::string>& arguments)
{
    std::vector<std::string> commandLine{"/usr/bin/xdotool"};
    commandLine.insert(commandLine.end(), arguments.begin(), arguments.end());
    return runProcess(commandLine).out;
}

void pressKey(const std::string& keys)
{
    xdotool({"key", keys});
}

std::vector<std::string> windowsTitled(const std::string& title)
{
    std::istringstream lines(xdotool({"search", "--onlyvisible", "--name", "^" + title + "$"}));
    std::vector<std::string> windows;
    for (std::string line; std::getline(lines, line);)
        windows.push_back(line);
    return windows;
}

juce::Rectangle<int> boundsOfWindow(const std::string& window)
{
    std::istringstream lines(xdotool({"getwindowgeometry", "--shell", window}));
    juce::Rectangle<int> bounds;
    for (std::string line; std::getline(lines, line);) {
        const auto equals = line.find('=');
        if (equals == std::string::npos)
            continue;
        const auto name = line.substr(0, equals);
        const auto value = std::atoi(line.c_str() + equals + 1);
        if (name == "X")
            bounds.setX(value);
        else if (name == "Y")
            bounds.setY(value);
        else if (name == "WIDTH")
            bounds.setWidth(value);
        else if (name == "HEIGHT")
            bounds.setHeight(value);
    }
    return bounds;
}

bool windowAppears(const std::string& title)
{
    return runMessagesUntil([&] { return !windowsTitled(title).empty(); }, patienceSeconds);
}

bool windowGoes(const std::string& title)
{
    return runMessagesUntil([&] { return windowsTitled(title).empty(); }, patienceSeconds);
}

bool windowHasKeyboard(const std::string& title)
{
    return runMessagesUntil(
        [&] {
            return xdotool({"getwindowfocus", "getwindowname"}) == title + "\n";
        },
        patienceSeconds);
}

} // namespace velotrine
