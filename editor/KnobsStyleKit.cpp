#include "editor/KnobsStyleKit.h"

#include "editor/FontLoader.h"

#include <cmath>
#include <numbers>

namespace velotrine {

namespace {

constexpr float pi = std::numbers::pi_v<float>;

// Fractions of the target's width, measured from its centre.
constexpr float capHeight = 0.112f;
constexpr float baselineRadius = 0.488f; ///< the letters' feet point outward
constexpr float letterSpacing = 0.016f;
constexpr float capHeightInEms = 0.7f;

constexpr int scallopCount = 14;
constexpr float rimRadius = 0.322f;
constexpr float scallopDepth = 0.013f;
constexpr float holeRadius = 0.238f;
constexpr int segmentsPerScallop = 14;

constexpr float markWidth = 0.05f;
constexpr float markTop = 0.212f;
constexpr float markBottom = 0.098f;

/// The letters round the lower edge, read from left to right, each upright where it stands.
void drawName(juce::Graphics& graphics, juce::Rectangle<float> target, const juce::String& name)
{
    const auto width = target.getWidth();
    juce::GlyphArrangement line;
    line.addLineOfText(displayFont(width * capHeight / capHeightInEms), name, 0.0f, 0.0f);

    const auto letters = line.getNumGlyphs();
    const auto spacing = width * letterSpacing;
    const auto length =
        line.getBoundingBox(0, letters, true).getWidth() + spacing * static_cast<float>(letters - 1);
    const auto middleOfCaps = width * (baselineRadius - capHeight / 2.0f);
    for (int i = 0; i < letters; ++i) {
        const auto& letter = line.getGlyph(i);
        const auto middle = (letter.getLeft() + letter.getRight()) / 2.0f;
        const auto along = middle + spacing * static_cast<float>(i) - length / 2.0f;
        juce::Path outline;
        letter.createPath(outline);
        graphics.fillPath(outline, juce::AffineTransform::translation(-middle, width * baselineRadius)
                                       .rotated(-along / middleOfCaps)
                                       .translated(target.getCentre()));
    }
}

juce::Path rim(juce::Rectangle<float> target)
{
    juce::Path outline;
    constexpr auto segments = scallopCount * segmentsPerScallop;
    for (int i = 0; i < segments; ++i) {
        const auto angle = 2.0f * pi * static_cast<float>(i) / segments;
        const auto radius = target.getWidth() *
                            (rimRadius + scallopDepth * std::cos(angle * static_cast<float>(scallopCount)));
        const auto point = target.getCentre().getPointOnCircumference(radius, angle);
        if (i == 0)
            outline.startNewSubPath(point);
        else
            outline.lineTo(point);
    }
    outline.closeSubPath();
    const auto hole = target.getWidth() * holeRadius;
    outline.addEllipse(juce::Rectangle<float>(2.0f * hole, 2.0f * hole).withCentre(target.getCentre()));
    outline.setUsingNonZeroWinding(false);
    return outline;
}

juce::Rectangle<float> insetBySixteenth(juce::Rectangle<float> target)
{
    return target.reduced(std::round(target.getWidth() / 16.0f), std::round(target.getHeight() / 16.0f));
}

template <auto draw>
juce::Image imageOf(juce::Point<float> sizePoints, float pixelsPerPoint)
{
    return imageDrawnBy(sizePoints, pixelsPerPoint, draw);
}

} // namespace

void KnobsStyleKit::drawActivityUnderlay(juce::Graphics& graphics, juce::Rectangle<float> target)
{
    graphics.setColour(juce::Colours::white);
    drawName(graphics, target, "ACTIVITY");
}

void KnobsStyleKit::drawBoredomUnderlay(juce::Graphics& graphics, juce::Rectangle<float> target)
{
    graphics.setColour(juce::Colours::white);
    drawName(graphics, target, "BOREDOM");
}

void KnobsStyleKit::drawCaloriesUnderlay(juce::Graphics& graphics, juce::Rectangle<float> target)
{
    graphics.setColour(juce::Colours::white);
    drawName(graphics, target, "CALORIES");
}

void KnobsStyleKit::drawDrudgeryUnderlay(juce::Graphics& graphics, juce::Rectangle<float> target)
{
    graphics.setColour(juce::Colours::white);
    drawName(graphics, target, "DRUDGERY");
}

void KnobsStyleKit::drawOverlay(juce::Graphics& graphics, juce::Rectangle<float> target)
{
    graphics.setColour(juce::Colours::white);
    graphics.fillPath(rim(target));
    const auto size = target.getWidth();
    const juce::Rectangle<float> mark(target.getCentreX() - size * markWidth / 2.0f,
                                      target.getCentreY() - size * markTop, size * markWidth,
                                      size * (markTop - markBottom));
    graphics.fillRoundedRectangle(mark, mark.getWidth() / 2.0f);
}

void KnobsStyleKit::drawCircle(juce::Graphics& graphics, juce::Rectangle<float> target)
{
    graphics.setColour(juce::Colours::white);
    graphics.drawEllipse(insetBySixteenth(target), 1.5f);
}

void KnobsStyleKit::drawCircleWithDisc(juce::Graphics& graphics, juce::Rectangle<float> target)
{
    drawCircle(graphics, target);
    graphics.fillEllipse(insetBySixteenth(target).reduced(target.getWidth() / 4.0f));
}

juce::Image KnobsStyleKit::imageOfActivityUnderlay(juce::Point<float> sizePoints, float pixelsPerPoint)
{
    return imageOf<drawActivityUnderlay>(sizePoints, pixelsPerPoint);
}

juce::Image KnobsStyleKit::imageOfBoredomUnderlay(juce::Point<float> sizePoints, float pixelsPerPoint)
{
    return imageOf<drawBoredomUnderlay>(sizePoints, pixelsPerPoint);
}

juce::Image KnobsStyleKit::imageOfCaloriesUnderlay(juce::Point<float> sizePoints, float pixelsPerPoint)
{
    return imageOf<drawCaloriesUnderlay>(sizePoints, pixelsPerPoint);
}

juce::Image KnobsStyleKit::imageOfDrudgeryUnderlay(juce::Point<float> sizePoints, float pixelsPerPoint)
{
    return imageOf<drawDrudgeryUnderlay>(sizePoints, pixelsPerPoint);
}

juce::Image KnobsStyleKit::imageOfOverlay(juce::Point<float> sizePoints, float pixelsPerPoint)
{
    return imageOf<drawOverlay>(sizePoints, pixelsPerPoint);
}

} // namespace velotrine
