#include "editor/EditorLayout.h"

#include "editor/FontLoader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace velotrine {
namespace {

EditorLayout layOut(double width, double height)
{
    registerDisplayFont();
    return layOutEditor(width, height, [](std::string_view text, double fontSize) {
        return static_cast<double>(
            displayFont(static_cast<float>(fontSize)).getStringWidthFloat(std::string(text)));
    });
}

std::vector<juce::Rectangle<double>> controlsOf(const EditorLayout& layout)
{
    std::vector controls(layout.knobs.begin(), layout.knobs.end());
    controls.insert(controls.end(), {layout.scaleLabel, layout.rootButton, layout.scaleButton,
                                     layout.syncButton, layout.syncTextLabel, layout.bpmPrefixLabel,
                                     layout.bpmField, layout.bpmStepper, layout.playButton});
    return controls;
}

/// How far the rings' drawing reaches from its middle: outermost ring, spot, and half a line.
double circleReach(juce::Rectangle<double> rings)
{
    const auto side = rings.getWidth();
    const auto line = std::max(1.0, 2.0 * side / 300.0);
    const auto outermost = side / 2.0 - (line + std::max(4.0, 0.04 * side));
    return outermost + std::max(4.0, 0.04 * outermost) + line / 2.0;
}

std::vector<juce::Point<int>> windowSizes()
{
    std::vector<juce::Point<int>> sizes{{361, 360}, {360, 361}, {480, 360}, {1920, 320}, {360, 1600}};
    for (int width = 360; width <= 1400; width += 52)
        for (int height = 320; height <= 1000; height += 34)
            sizes.emplace_back(width, height);
    return sizes;
}

TEST(EditorLayout, NothingIsCutOffAndNoTwoControlsOverlapAtAnySize)
{
    for (const auto size : windowSizes()) {
        const auto controls = controlsOf(layOut(size.x, size.y));
        const juce::Rectangle<double> window(size.x, size.y);
        for (std::size_t i = 0; i < controls.size(); ++i) {
            EXPECT_TRUE(window.contains(controls[i])) << size.toString() << " control " << i;
            for (std::size_t j = i + 1; j < controls.size(); ++j)
                EXPECT_FALSE(controls[i].intersects(controls[j])) << size.toString() << ' ' << i << ' ' << j;
        }
    }
}

TEST(EditorLayout, TheRingsCircleKeepsFourPointsFromEveryControlAndStaysInsideTheMargins)
{
    for (const auto size : windowSizes()) {
        const auto layout = layOut(size.x, size.y);
        const auto centre = layout.rings.getCentre();
        for (const auto& control : controlsOf(layout))
            EXPECT_GE(control.getConstrainedPoint(centre).getDistanceFrom(centre) - circleReach(layout.rings),
                      4.0)
                << size.toString();
        EXPECT_TRUE(juce::Rectangle<double>(size.x, size.y).reduced(layout.margin).contains(layout.rings));
        EXPECT_EQ(layout.rings.getWidth(), layout.rings.getHeight());
    }
}

TEST(EditorLayout, TheFirstWindowGivesTheRingsAboutThreeHundredPoints)
{
    const auto layout = layOut(480, 360);
    EXPECT_NEAR(layout.rings.getWidth(), 305.0, 15.0);
    EXPECT_EQ(layout.knobSize, 72.0);
    EXPECT_EQ(layout.margin, 10.0);
    EXPECT_DOUBLE_EQ(layout.fontSize, 14.4);
}

TEST(EditorLayout, TheGapsBetweenKnobsAreAllTheSame)
{
    const auto wide = layOut(700, 500);
    const auto tall = layOut(500, 700);
    EXPECT_FALSE(wide.isTall);
    EXPECT_TRUE(tall.isTall);
    for (std::size_t i = 0; i < 4; ++i) {
        const auto gapAbove = wide.knobs[i].getY() - (i == 0 ? 0.0 : wide.knobs[i - 1].getBottom());
        EXPECT_NEAR(gapAbove, (500.0 - 4.0 * 100.0) / 5.0, 1e-9);
        EXPECT_EQ(wide.knobs[i].getRight(), 700.0 - 15.0);
        const auto gapLeft = tall.knobs[i].getX() - (i == 0 ? 0.0 : tall.knobs[i - 1].getRight());
        EXPECT_NEAR(gapLeft, (500.0 - 4.0 * 100.0) / 5.0, 1e-9);
        EXPECT_EQ(tall.knobs[i].getBottom(), 700.0 - 15.0);
    }
}

TEST(EditorLayout, ASquareWindowIsLaidOutWideAndOneHigherThanWideTall)
{
    EXPECT_FALSE(layOut(400, 400).isTall);
    const auto tall = layOut(400, 401);
    EXPECT_TRUE(tall.isTall);
    EXPECT_EQ(tall.portraitTransportBottomY, tall.bpmStepper.getBottom());
    EXPECT_NEAR(tall.playButton.getWidth(), 0.75 * tall.bpmStepper.getHeight(), 1e-9);
}

TEST(LargestClearSquare, KeepsItsDistanceFromAnObstacleAndIsAsLargeAsThatLeaves)
{
    const std::array obstacles{juce::Rectangle<double>(0.0, 0.0, 100.0, 20.0)};
    const auto square = largestClearSquare({0.0, 0.0, 100.0, 300.0}, obstacles, 4.0);
    EXPECT_EQ(square.getWidth(), 100.0);
    EXPECT_GE(square.getY(), 24.0);
    EXPECT_NEAR(square.getCentreY(), (24.0 + 300.0) / 2.0, 1.0) << "in the middle of the room that is left";
    EXPECT_EQ(largestClearSquare({0.0, 0.0, 10.0, 10.0}, obstacles, 4.0).getWidth(), 0.0);
}

} // namespace
} // namespace velotrine
