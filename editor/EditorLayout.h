#pragma once

#include <juce_graphics/juce_graphics.h>

#include <array>
#include <functional>
#include <span>
#include <string_view>

namespace velotrine {

/// Where everything in the editor's window goes: points, y downward.
struct EditorLayout
{
    double knobSize = 0.0;
    double margin = 0.0; ///< air along the window's edges
    double fontSize = 0.0;
    bool isTall = false;

    std::array<juce::Rectangle<double>, 4> knobs;
    juce::Rectangle<double> scaleLabel;
    juce::Rectangle<double> rootButton;
    juce::Rectangle<double> scaleButton;
    juce::Rectangle<double> syncButton;
    juce::Rectangle<double> syncTextLabel;
    juce::Rectangle<double> bpmPrefixLabel;
    juce::Rectangle<double> bpmField;
    juce::Rectangle<double> bpmStepper;
    juce::Rectangle<double> playButton;
    juce::Rectangle<double> transportNotice; ///< two short lines beside the play button
    juce::Rectangle<double> rings;           ///< a square whose circle touches nothing
    juce::Rectangle<double> ringEditor;      ///< where the panel opens

    /// The tempo row's lower edge in the tall arrangement; 0 in the wide one.
    double portraitTransportBottomY = 0.0;
};

/// Width of a text in the editor's font, in points.
using TextWidth = std::function<double(std::string_view text, double fontSize)>;

/// @param width   of the window, above 0
/// @param height  likewise
[[nodiscard]] EditorLayout layOutEditor(double width, double height, const TextWidth& textWidth);

/// The largest square of whole points inside an area whose inscribed circle keeps a distance from all
/// obstacles; of several side by side, the one in the middle. Its side is 0 where nothing fits.
[[nodiscard]] juce::Rectangle<double> largestClearSquare(juce::Rectangle<double> area,
                                                         std::span<const juce::Rectangle<double>> obstacles,
                                                         double clearance);

} // namespace velotrine
