#include "editor/AURotaryControl.h"

#include "editor/AccessibleRange.h"
#include "editor/Colours.h"
#include "editor/FontLoader.h"
#include "editor/KnobsStyleKit.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velotrine {

namespace {

constexpr float fineScale = 0.1f;
constexpr float arrowStep = 0.01f; ///< of the range
constexpr float pageStep = 0.1f;
constexpr int readoutMilliseconds = 900;

// A little short of pi: the feel of the knob's drag, to the last bit, hangs on it.
constexpr float halfTurn = 3.1415925f;

juce::Image plainUnderlay(juce::Point<float> size, float pixelsPerPoint)
{
    return imageDrawnBy(size, pixelsPerPoint, [](juce::Graphics& graphics, juce::Rectangle<float> bounds) {
        graphics.setColour(juce::Colours::darkgrey);
        graphics.fillEllipse(bounds.reduced(2.0f));
    });
}

juce::Image plainOverlay(juce::Point<float> size, float pixelsPerPoint)
{
    return imageDrawnBy(size, pixelsPerPoint, [](juce::Graphics& graphics, juce::Rectangle<float> bounds) {
        graphics.setColour(juce::Colours::white);
        graphics.drawLine({bounds.getCentre(), {bounds.getCentreX(), bounds.getY() + 4.0f}}, 2.0f);
    });
}

} // namespace

AURotaryControl::AURotaryControl()
{
    setWantsKeyboardFocus(true);
    setMouseClickGrabsKeyboardFocus(false);
    setRepaintsOnMouseActivity(false);
}

void AURotaryControl::setValue(float newValue)
{
    const auto bounded = std::max(std::min(newValue, upperBound), lowerBound);
    if (bounded == _value || std::isnan(newValue))
        return;
    _value = bounded;
    faceChanged();
    if (onValueChanged)
        onValueChanged(_value);
    if (auto* handler = getAccessibilityHandler())
        handler->notifyAccessibilityEvent(juce::AccessibilityEvent::valueChanged);
}

float AURotaryControl::angleOf(float value) const
{
    return lowAngle + (value - lowerBound) * (highAngle - lowAngle) / (upperBound - lowerBound);
}

float AURotaryControl::valueAt(float angle) const
{
    return lowerBound + (angle - lowAngle) * (upperBound - lowerBound) / (highAngle - lowAngle);
}

void AURotaryControl::handleDrag(DragState state, juce::Point<float> translation)
{
    const auto boundedValueAt = [this](float angle) {
        return valueAt(std::clamp(angle, std::min(lowAngle, highAngle), std::max(lowAngle, highAngle)));
    };
    switch (state) {
    case DragState::began:
        dragHome = angleOf(_value);
        if (onDragBegan)
            onDragBegan();
        break;
    case DragState::changed: {
        const auto alongDiagonal = (static_cast<double>(translation.x) - static_cast<double>(translation.y)) *
                                   (1.0 / std::numbers::sqrt2);
        const auto radians = alongDiagonal / (getWidth() * speedFraction);
        const auto degrees = static_cast<float>(radians) * 180.0f / halfTurn;
        showReadout();
        setValue(boundedValueAt(dragHome + degrees));
        break;
    }
    case DragState::cancelled:
        setValue(boundedValueAt(dragHome));
        [[fallthrough]];
    case DragState::ended:
        if (onDragEnded)
            onDragEnded();
        break;
    }
}

void AURotaryControl::handleDoubleClick()
{
    setValue(resetValue);
}

void AURotaryControl::setByUser(float newValue)
{
    setValue(newValue);
    showReadout();
}

void AURotaryControl::moveBy(float fractionOfRange)
{
    setByUser(_value + fractionOfRange * (upperBound - lowerBound));
}

void AURotaryControl::resized()
{
    imagesPixelsPerPoint = 0.0f;
}

void AURotaryControl::makeImages(float pixelsPerPoint)
{
    if (pixelsPerPoint == imagesPixelsPerPoint)
        return;
    imagesPixelsPerPoint = pixelsPerPoint;
    const auto size = getLocalBounds().toFloat().getBottomRight();
    underlayImage = underlayImageProvider ? underlayImageProvider(size, pixelsPerPoint)
                                          : plainUnderlay(size, pixelsPerPoint);
    overlayImage = overlayImageProvider ? overlayImageProvider(size, pixelsPerPoint)
                                        : plainOverlay(size, pixelsPerPoint);
}

void AURotaryControl::paint(juce::Graphics& graphics)
{
    if (getLocalBounds().isEmpty())
        return;
    const auto grid = pixelGridOf(*this, graphics);
    if (grid != faceGrid) {
        faceGrid = grid;
        makeImages(grid.pixelsPerPoint);
        emptyPicture(face, grid, backdrop);
        juce::Graphics faceGraphics(face);
        faceGraphics.addTransform(grid.fromPoints());
        drawFace(faceGraphics);
    }
    graphics.setOpacity(1.0f);
    graphics.drawImageTransformed(face, grid.fromPoints().inverted());
}

void AURotaryControl::drawFace(juce::Graphics& graphics) const
{
    const auto bounds = getLocalBounds().toFloat();
    const auto toPoints =
        juce::AffineTransform::scale(bounds.getWidth() / static_cast<float>(underlayImage.getWidth()),
                                     bounds.getHeight() / static_cast<float>(underlayImage.getHeight()));
    // While the value changes, it takes the place of what is written on the knob.
    graphics.setImageResamplingQuality(juce::Graphics::highResamplingQuality);
    if (readoutVisible)
        drawReadout(graphics);
    else
        graphics.drawImageTransformed(underlayImage, toPoints);
    if (hasKeyboardFocus(false)) {
        graphics.setColour(grey(1.0f, 0.14f));
        graphics.fillEllipse(bounds.reduced(bounds.getWidth() * 0.25f));
    }
    graphics.setOpacity(1.0f);
    graphics.drawImageTransformed(overlayImage,
                                  toPoints.rotated(juce::degreesToRadians(overlayAngleDegrees()),
                                                   bounds.getCentreX(), bounds.getCentreY()));
}

void AURotaryControl::faceChanged()
{
    faceGrid = {};
    repaint();
}

void AURotaryControl::drawReadout(juce::Graphics& graphics) const
{
    const auto size = static_cast<float>(getWidth());
    graphics.setColour(colours::text);
    graphics.setFont(displayFont(std::max(11.0f, size * 0.16f)));
    const auto foot = getLocalBounds().toFloat().removeFromBottom(size * 0.17f);
    graphics.drawText(valueText(), foot, juce::Justification::centred, false);
}

juce::String AURotaryControl::valueText() const
{
    return textFromValue ? textFromValue(_value)
                         : juce::String::formatted("%.2f", static_cast<double>(_value));
}

void AURotaryControl::showReadout()
{
    startTimer(readoutMilliseconds);
    if (readoutVisible)
        return;
    readoutVisible = true;
    faceChanged();
}

void AURotaryControl::timerCallback()
{
    if (mouseState == MouseState::dragging)
        return;
    stopTimer();
    readoutVisible = false;
    faceChanged();
}

void AURotaryControl::mouseDown(const juce::MouseEvent& event)
{
    mouseState = MouseState::pressed;
    dragBefore = {};
    dragSegmentStart = {};
    dragScale = event.mods.isShiftDown() ? fineScale : 1.0f;
}

void AURotaryControl::mouseDrag(const juce::MouseEvent& event)
{
    if (juce::KeyPress::isKeyCurrentlyDown(juce::KeyPress::escapeKey))
        cancelDrag();
    if (mouseState == MouseState::pressed && event.mouseWasDraggedSinceMouseDown()) {
        mouseState = MouseState::dragging;
        handleDrag(DragState::began, {});
    }
    if (mouseState != MouseState::dragging)
        return;
    const auto way = event.position - event.mouseDownPosition;
    const auto scale = event.mods.isShiftDown() ? fineScale : 1.0f;
    if (scale != dragScale) {
        dragBefore += (way - dragSegmentStart) * dragScale;
        dragSegmentStart = way;
        dragScale = scale;
    }
    handleDrag(DragState::changed, dragBefore + (way - dragSegmentStart) * dragScale);
}

void AURotaryControl::mouseUp(const juce::MouseEvent&)
{
    if (std::exchange(mouseState, MouseState::up) == MouseState::dragging)
        handleDrag(DragState::ended, {});
}

bool AURotaryControl::cancelDrag()
{
    if (mouseState != MouseState::dragging)
        return false;
    mouseState = MouseState::cancelled;
    handleDrag(DragState::cancelled, {});
    return true;
}

void AURotaryControl::mouseDoubleClick(const juce::MouseEvent&)
{
    handleDoubleClick();
}

void AURotaryControl::mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel)
{
    // A notch of a wheel, as JUCE reports it; a touch pad sends less at a time.
    constexpr float notch = 50.0f / 256.0f;
    const auto delta = std::abs(wheel.deltaY) >= std::abs(wheel.deltaX) ? wheel.deltaY : -wheel.deltaX;
    if (delta == 0.0f || mouseState == MouseState::dragging)
        return;
    const auto notches = wheel.isSmooth ? delta / notch : std::copysign(1.0f, delta);
    moveBy(notches * arrowStep * (event.mods.isShiftDown() ? fineScale : 1.0f) *
           (wheel.isReversed ? -1.0f : 1.0f));
}

bool AURotaryControl::keyPressed(const juce::KeyPress& key)
{
    if (key.getModifiers().isCtrlDown() || key.getModifiers().isAltDown() ||
        key.getModifiers().isCommandDown())
        return false;
    const auto step = arrowStep * (key.getModifiers().isShiftDown() ? fineScale : 1.0f);
    const auto code = key.getKeyCode();
    if (code == juce::KeyPress::escapeKey)
        return cancelDrag();
    if (code == juce::KeyPress::upKey || code == juce::KeyPress::rightKey) {
        moveBy(step);
    } else if (code == juce::KeyPress::downKey || code == juce::KeyPress::leftKey) {
        moveBy(-step);
    } else if (code == juce::KeyPress::pageUpKey) {
        moveBy(pageStep);
    } else if (code == juce::KeyPress::pageDownKey) {
        moveBy(-pageStep);
    } else if (code == juce::KeyPress::homeKey) {
        setByUser(lowerBound);
    } else if (code == juce::KeyPress::endKey) {
        setByUser(upperBound);
    } else {
        return false;
    }
    return true;
}

void AURotaryControl::focusGained(FocusChangeType)
{
    faceChanged();
}

void AURotaryControl::focusLost(FocusChangeType)
{
    faceChanged();
}

std::unique_ptr<juce::AccessibilityHandler> AURotaryControl::createAccessibilityHandler()
{
    setTitle(label);
    return makeSliderHandler(
        *this, {{lowerBound, upperBound}, static_cast<double>(arrowStep * (upperBound - lowerBound))},
        {[this] { return static_cast<double>(_value); },
         [this](double newValue) { setByUser(static_cast<float>(newValue)); },
         [this] { return valueText(); }});
}

} // namespace velotrine
