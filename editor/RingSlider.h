#pragma once

#include "editor/Control.h"

#include <functional>

namespace velotrine {

/// A slider of the ring's panel. Arrow keys move it by a step, or by a hundredth of its range where it has
/// none, Shift ten times finer; Page Up and Down by a tenth; Home and End go to the ends; Escape takes a drag
/// back. Main thread.
class RingSlider final : public Control<juce::Slider>
{
public:
    RingSlider();

    /// Told of a key with which a number begins: somebody types the value.
    std::function<void(const juce::String& firstCharacter)> onEntryBegan;

    void mouseDown(const juce::MouseEvent& event) override;
    void mouseDrag(const juce::MouseEvent& event) override;
    bool keyPressed(const juce::KeyPress& key) override;

private:
    bool cancelDrag();

    double valueAtPress = 0.0;
    bool isDragCancelled = false;
};

} // namespace velotrine
