#pragma once

#include "editor/Control.h"
#include "editor/PixelGrid.h"
#include "editor/ValueField.h"

#include <functional>
#include <optional>

namespace velotrine {

/// What a drag does just now.
enum class DragState
{
    began,
    changed,
    ended,
    cancelled,
};

/// A knob: a fixed picture and one that turns with the value. Dragged anywhere, up or right for more; a
/// double click resets it. Shift makes drags, wheel and arrow keys ten times finer; Page Up and Down move by
/// a tenth of the range, Home and End go to its ends, Escape takes a drag back. A digit begins to type a
/// value, where its name is written. Main thread.
class AURotaryControl final : public Control<juce::Component>, private juce::Timer
{
public:
    /// Makes a picture for a size in points and the screen's density in pixels per point.
    using ImageProvider = std::function<juce::Image(juce::Point<float> sizePoints, float pixelsPerPoint)>;

    AURotaryControl();

    /// The range; the ends differ.
    float lowerBound = 0.0f;
    float upperBound = 1.0f;
    float resetValue = 0.0f;

    /// The knob's name, for those who hear the screen; not drawn.
    juce::String label;

    ImageProvider underlayImageProvider;
    ImageProvider overlayImageProvider;

    /// What lies behind the knob, if it is one opaque colour: drawing is cheaper when it is known.
    std::optional<juce::Colour> backdrop;

    /// Where the overlay stands at the ends of the range: degrees, clockwise from upright. The two differ.
    float lowAngle = -160.0f;
    float highAngle = 160.0f;

    /// Told of every change of the value, whoever made it.
    std::function<void(float)> onValueChanged;

    /// Told when a drag begins, and when it ends or is cancelled.
    std::function<void()> onDragBegan;
    std::function<void()> onDragEnded;

    /// How a value reads, for the readout and the screen reader; without it, two digits behind the point.
    std::function<juce::String(float)> textFromValue;

    /// Reads what somebody typed; none for what is no value, which then changes nothing. Without it, nothing
    /// can be typed.
    std::function<std::optional<float>(const juce::String&)> valueFromText;

    [[nodiscard]] float value() const noexcept { return _value; }

    /// Bounds the value to the range and tells onValueChanged if that makes a difference.
    void setValue(float newValue);

    /// @param translation  points since the drag began, x to the right and y downward
    void handleDrag(DragState state, juce::Point<float> translation);

    void handleDoubleClick();

    /// Clockwise from upright.
    [[nodiscard]] float overlayAngleDegrees() const { return angleOf(_value); }

    [[nodiscard]] bool isShowingReadout() const noexcept { return readoutVisible; }

    /// Where a value is being typed; none until somebody has.
    [[nodiscard]] ValueField* entryField() noexcept { return entry.get(); }

    void paint(juce::Graphics& graphics) override;
    void resized() override;
    void mouseDown(const juce::MouseEvent& event) override;
    void mouseDrag(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
    void mouseDoubleClick(const juce::MouseEvent& event) override;
    void mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel) override;
    bool keyPressed(const juce::KeyPress& key) override;
    std::unique_ptr<juce::AccessibilityHandler> createAccessibilityHandler() override;

private:
    [[nodiscard]] float angleOf(float value) const;
    [[nodiscard]] float valueAt(float angle) const;
    [[nodiscard]] juce::String valueText() const;
    void moveBy(double fractionOfRange);
    void beginEntry(const juce::String& firstCharacter);
    void setByUser(float newValue);
    void makeImages(float pixelsPerPoint);
    void drawFace(juce::Graphics& graphics) const;
    void drawReadout(juce::Graphics& graphics) const;
    void drawMark(juce::Graphics& graphics) const override;
    [[nodiscard]] juce::Rectangle<float> foot() const;
    [[nodiscard]] float readoutPoints() const;
    void faceChanged();
    void showReadout();
    bool cancelDrag();
    void timerCallback() override;

    enum class MouseState
    {
        up,
        pressed,
        dragging,
        cancelled, ///< and still down
    };

    float _value = 0.0f;
    juce::Image underlayImage;
    juce::Image overlayImage;
    float imagesPixelsPerPoint = 0.0f; ///< 0 while there are none of the present size
    juce::Image face;                  ///< the knob as it looks now
    PixelGrid faceGrid;                ///< of no size while the face has changed
    float dragHome = 0.0f;             ///< degrees, at the start of the drag

    /// A drag over this fraction of the knob's width turns it by one radian.
    double speedFraction = 0.25;

    MouseState mouseState = MouseState::up;
    juce::Point<float> dragBefore;       ///< what the drag had done when Shift last went up or down
    juce::Point<float> dragSegmentStart; ///< and how far the mouse had moved by then
    float dragScale = 1.0f;
    bool readoutVisible = false;
    std::unique_ptr<ValueField> entry;
};

} // namespace velotrine
