#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <string>
#include <vector>

namespace velotrine {

/// Runs xdotool, which moves the mouse and presses keys. What it printed.
std::string xdotool(const std::vector<std::string>& arguments);

/// Presses keys, such as "ctrl+w", on whatever window has the keyboard.
void pressKey(const std::string& keys);

/// The numbers of the visible windows with exactly this title.
[[nodiscard]] std::vector<std::string> windowsTitled(const std::string& title);

/// A window's place on the screen, without its frame.
[[nodiscard]] juce::Rectangle<int> boundsOfWindow(const std::string& window);

/// Whether the window appears, or is gone, within some seconds; lets JUCE's messages run meanwhile.
[[nodiscard]] bool windowAppears(const std::string& title);
[[nodiscard]] bool windowGoes(const std::string& title);

/// Whether the window with the keyboard has this title, now or within some seconds.
[[nodiscard]] bool windowHasKeyboard(const std::string& title);

} // namespace velotrine
