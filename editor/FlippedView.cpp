#include "editor/FlippedView.h"

namespace velotrine {

void FlippedView::setBackground(juce::Colour colour, float cornerRadiusPoints)
{
    background = colour;
    cornerRadius = cornerRadiusPoints;
    setOpaque(colour.isOpaque() && cornerRadiusPoints <= 0.0f);
    repaint();
}

void FlippedView::paint(juce::Graphics& graphics)
{
    graphics.setColour(background);
    if (cornerRadius > 0.0f)
        graphics.fillRoundedRectangle(getLocalBounds().toFloat(), cornerRadius);
    else
        graphics.fillRect(getLocalBounds());
}

} // namespace velotrine
