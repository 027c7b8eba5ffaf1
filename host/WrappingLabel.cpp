#include "host/WrappingLabel.h"

#include <cmath>

namespace velotrine {

namespace {

constexpr int longestLinePoints = 460;
constexpr float lineSpacingInHeights = 0.14f; ///< beyond the font's own height, for an easy read

} // namespace

WrappingLabel::WrappingLabel(const std::string& utf8Text, const juce::Font& font, juce::Colour colour,
                             juce::Justification justification)
{
    text.append(juce::String::fromUTF8(utf8Text.data(), static_cast<int>(utf8Text.size())), font, colour);
    text.setWordWrap(juce::AttributedString::byWord);
    text.setJustification(justification);
    text.setLineSpacing(lineSpacingInHeights * font.getHeight());
    setInterceptsMouseClicks(false, false);
    setTitle(text.getText());
}

int WrappingLabel::preferredWidth() const
{
    const auto font = text.getAttribute(0).font;
    const auto width = static_cast<int>(std::ceil(font.getStringWidthFloat(text.getText())));
    return juce::jmin(longestLinePoints, width + 1);
}

int WrappingLabel::heightForWidth(int width) const
{
    return static_cast<int>(std::ceil(layoutForWidth(width).getHeight()));
}

juce::TextLayout WrappingLabel::layoutForWidth(int width) const
{
    juce::TextLayout result;
    result.createLayout(text, static_cast<float>(juce::jlimit(1, longestLinePoints, width)));
    return result;
}

void WrappingLabel::resized()
{
    layout = layoutForWidth(getWidth());
}

void WrappingLabel::paint(juce::Graphics& graphics)
{
    auto area = getLocalBounds().toFloat();
    if (text.getJustification().testFlags(juce::Justification::horizontallyCentred))
        area = area.withSizeKeepingCentre(layout.getWidth(), area.getHeight());
    layout.draw(graphics, area);
}

std::unique_ptr<juce::AccessibilityHandler> WrappingLabel::createAccessibilityHandler()
{
    return std::make_unique<juce::AccessibilityHandler>(*this, juce::AccessibilityRole::staticText);
}

} // namespace velotrine
