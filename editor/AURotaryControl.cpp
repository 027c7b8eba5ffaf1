#include "editor/AURotaryControl.h"

#include "audiounit/ParameterText.h"
#include "editor/AccessibleValue.h"
#include "editor/Colours.h"
#include "editor/FontLoader.h"
#include "editor/JuceText.h"
#include "editor/KeyTurn.h"
#include "editor/KnobsStyleKit.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velotrine {

namespace {

constexpr float fineScale = 0.1f;
constexpr double arrowStep = 0.01; ///< of the range
constexpr double pageStep = 0.1;
constexpr int readoutMilliseconds = 900;

// A little short of pi: the feel of the knob's drag, to the last bit, hangs on it.
constexpr float halfTurn = 3.1415925f;

// What a point to the right or up counts on the diagonal.
constexpr double diagonalPart = 0.7071067811865476;

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
        const auto alongDiagonal =
            (static_cast<double>(translation.x) - static_cast<double>(translation.y)) * diagonalPart;
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

void AURotaryControl::moveBy(double fractionOfRange)
{
    setByUser(_value + static_cast<float>(fractionOfRange) * (upperBound - lowerBound));
}

void AURotaryControl::beginEntry(const juce::String& firstCharacter)
{
    entry = std::make_unique<ValueField>();
    entry->setTitle(label);
    entry->setJustification(juce::Justification::centred);
    entry->setIndents(0, 0);
    entry->onEntryEnded = [this](const juce::String& text) {
        if (const auto typed = valueFromText(text))
            setByUser(*typed);
    };
    entry->onLeft = [this] { entry->setVisible(false); };
    addAndMakeVisible(*entry);
    resized();
    entry->beginEntry(firstCharacter, *this);
}

juce::Rectangle<float> AURotaryControl::foot() const
{
    return getLocalBounds().toFloat().removeFromBottom(static_cast<float>(getWidth()) * 0.17f);
}

float AURotaryControl::readoutPoints() const
{
    return std::max(11.0f, static_cast<float>(getWidth()) * 0.16f);
}

void AURotaryControl::resized()
{
    if (entry) {
        const auto height = readoutPoints() * 1.5f;
        const auto width = static_cast<float>(getWidth()) * 0.7f;
        entry->setFontSize(readoutPoints());
        entry->setBounds(
            juce::Rectangle<float>(width, height)
                .withCentre({foot().getCentreX(), static_cast<float>(getHeight()) - height / 2.0f})
                .toNearestInt());
    }
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
    const auto radians = static_cast<double>(overlayAngleDegrees()) * std::numbers::pi / 180.0;
    graphics.setOpacity(1.0f);
    graphics.drawImageTransformed(overlayImage, toPoints.rotated(static_cast<float>(radians),
                                                                 bounds.getCentreX(), bounds.getCentreY()));
}

void AURotaryControl::faceChanged()
{
    faceGrid = {};
    repaint();
}

void AURotaryControl::drawReadout(juce::Graphics& graphics) const
{
    graphics.setColour(colours::text);
    graphics.setFont(displayFont(readoutPoints()));
    graphics.drawText(valueText(), foot(), juce::Justification::centred, false);
}

/// An arc that is open where the name is written.
void AURotaryControl::drawMark(juce::Graphics& graphics) const
{
    constexpr float lineWidth = 2.0f;
    constexpr float halfArcRadians = 2.0f;
    const auto bounds = getLocalBounds().toFloat().reduced(lineWidth / 2.0f);
    juce::Path arc;
    arc.addCentredArc(bounds.getCentreX(), bounds.getCentreY(), bounds.getWidth() / 2.0f,
                      bounds.getHeight() / 2.0f, 0.0f, -halfArcRadians, halfArcRadians, true);
    graphics.setColour(colours::focus);
    graphics.strokePath(
        arc, juce::PathStrokeType(lineWidth, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
}

juce::String AURotaryControl::valueText() const
{
    return textFromValue ? textFromValue(_value) : juceText(fixedText(static_cast<double>(_value), 2));
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
    if (!isPrimaryButton(event))
        return;
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

void AURotaryControl::mouseDoubleClick(const juce::MouseEvent& event)
{
    if (isPrimaryButton(event))
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
    moveBy(static_cast<double>(notches * (event.mods.isShiftDown() ? fineScale : 1.0f) *
                               (wheel.isReversed ? -1.0f : 1.0f)) *
           arrowStep);
}

bool AURotaryControl::keyPressed(const juce::KeyPress& key)
{
    if (key.isKeyCode(juce::KeyPress::escapeKey))
        return cancelDrag();
    if (const auto turn = valueTurnOf(key)) {
        const auto range = static_cast<double>(upperBound - lowerBound);
        const auto step = arrowStep * (turn->isFine ? static_cast<double>(fineScale) : 1.0);
        setByUser(static_cast<float>(turned(
            static_cast<double>(_value), {static_cast<double>(lowerBound), static_cast<double>(upperBound)},
            {step * range, pageStep * range}, *turn)));
        return true;
    }
    if (!valueFromText || !ValueField::isFirstKeyOfNumber(key))
        return false;
    beginEntry(juce::String::charToString(key.getTextCharacter()));
    return true;
}

std::unique_ptr<juce::AccessibilityHandler> AURotaryControl::createAccessibilityHandler()
{
    setTitle(label);
    return makeSliderHandler(*this,
                             {{static_cast<double>(lowerBound), static_cast<double>(upperBound)},
                              arrowStep * static_cast<double>(upperBound - lowerBound)},
                             {[this] { return static_cast<double>(_value); },
                              [this](double newValue) { setByUser(static_cast<float>(newValue)); },
                              [this] { return valueText(); }});
}

} // namespace velotrine
