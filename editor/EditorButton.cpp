#include "editor/EditorButton.h"

#include "editor/AccessibleValue.h"
#include "editor/Colours.h"
#include "editor/FontLoader.h"

namespace velotrine {

EditorButton::EditorButton(const juce::String& name, Face face) : ControlButton(name), _face(face)
{
    setTitle(name);
    if (face == Face::check)
        setClickingTogglesState(true);
}

void EditorButton::setFontSize(float points)
{
    fontSize = points;
    repaint();
}

void EditorButton::paintButton(juce::Graphics& graphics, bool isHighlighted, bool isDown)
{
    const auto bounds = getLocalBounds().toFloat();
    graphics.setColour(isDown          ? colours::controlDown
                       : isHighlighted ? colours::controlHover
                                       : colours::control);
    graphics.fillRoundedRectangle(bounds, controlCornerRadius);
    graphics.setColour(colours::text);
    if (_face == Face::text) {
        graphics.setFont(displayFont(fontSize));
        graphics.drawText(getButtonText(), bounds, juce::Justification::centred, false);
    } else if (_face == Face::check) {
        graphics.strokePath(sign(),
                            juce::PathStrokeType(bounds.getWidth() * 0.09f, juce::PathStrokeType::mitered,
                                                 juce::PathStrokeType::butt));
    } else {
        graphics.fillPath(sign());
    }
}

juce::Path EditorButton::sign() const
{
    const auto bounds = getLocalBounds().toFloat();
    const auto at = [&](float x, float y) { return bounds.getRelativePoint(x, y); };
    juce::Path path;
    if (_face == Face::check && getToggleState()) {
        path.startNewSubPath(at(0.27f, 0.52f));
        path.lineTo(at(0.43f, 0.68f));
        path.lineTo(at(0.74f, 0.32f));
    } else if (_face == Face::playStop && getToggleState()) {
        path.addRectangle(juce::Rectangle<float>(at(0.31f, 0.31f), at(0.69f, 0.69f)));
    } else if (_face == Face::playStop) {
        path.addTriangle(at(0.35f, 0.26f), at(0.77f, 0.5f), at(0.35f, 0.74f));
    }
    return path;
}

juce::String EditorButton::valueText() const
{
    if (_face == Face::text)
        return getButtonText();
    if (_face == Face::check)
        return getToggleState() ? "On" : "Off";
    return getToggleState() ? "Playing" : "Stopped";
}

std::unique_ptr<juce::AccessibilityHandler> EditorButton::createAccessibilityHandler()
{
    return makeButtonHandler(
        *this, [this] { return valueText(); }, [this] { triggerClick(); });
}

} // namespace velotrine
