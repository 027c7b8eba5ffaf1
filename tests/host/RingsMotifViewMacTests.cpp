#include "host/RingsMotifViewMac.h"

#include "editor/Colours.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <tuple>

namespace velotrine {
namespace {

// Frames of every shape; the motif is designed for a square of 360.
class RingsMotif : public testing::TestWithParam<std::tuple<int, int>>
{
protected:
    RingsMotif()
    {
        const auto [width, height] = GetParam();
        scale = static_cast<double>(std::min(width, height)) / 360.0;
        centreX = width / 2.0;
        centreY = height / 2.0;
        RingsMotifViewMac view;
        view.setSize(width, height);
        picture = view.createComponentSnapshot(view.getLocalBounds());
    }

    [[nodiscard]] juce::Colour at(double x, double y) const
    {
        return picture.getPixelAt(static_cast<int>(std::floor(x)), static_cast<int>(std::floor(y)));
    }

    /// @param radius  in units of the design
    /// @param turns   from twelve o'clock, clockwise
    [[nodiscard]] juce::Colour onRing(double radius, double turns) const
    {
        const auto angle = 2.0 * std::numbers::pi * turns;
        return at(centreX + scale * radius * std::sin(angle), centreY - scale * radius * std::cos(angle));
    }

    double scale, centreX, centreY;
    juce::Image picture;
};

void expectWhite(juce::Colour colour)
{
    EXPECT_GT(colour.getAlpha(), 200);
    EXPECT_GT(colour.getBrightness(), 0.95f);
}

TEST_P(RingsMotif, HasWhiteCirclesAtRadii60And100And140)
{
    // Between spots, for each ring.
    expectWhite(onRing(140.0, 1.0 / 12.0));
    expectWhite(onRing(100.0, 1.0 / 10.0));
    expectWhite(onRing(60.0, 1.0 / 8.0));
}

TEST_P(RingsMotif, IsClearBetweenTheCircles)
{
    for (const auto radius : {20.0, 80.0, 120.0, 165.0})
        EXPECT_EQ(onRing(radius, 1.0 / 12.0).getAlpha(), 0) << radius;
}

TEST_P(RingsMotif, HasGreySpotsClockwiseFromTheTop)
{
    for (const auto& [radius, count] : {std::pair{140.0, 6}, std::pair{100.0, 5}, std::pair{60.0, 4}})
        for (int spot = 0; spot < count; ++spot)
            EXPECT_EQ(onRing(radius, static_cast<double>(spot) / count), grey(0.18f))
                << radius << ", spot " << spot;
}

TEST_P(RingsMotif, OutlinesEachSpotInWhite)
{
    // Along the outermost ring's radius at the top, outline is from 10.5 to 17.5 units about the spot.
    expectWhite(at(centreX, centreY - scale * (140.0 + 14.0)));
    expectWhite(at(centreX, centreY - scale * (140.0 - 14.0)));
    EXPECT_EQ(at(centreX, centreY - scale * (140.0 + 20.0)).getAlpha(), 0);
}

TEST_P(RingsMotif, KeepsItsDistanceFromAllSidesOfItsSquare)
{
    for (int turn = 0; turn < 36; ++turn)
        EXPECT_EQ(onRing(162.0, turn / 36.0).getAlpha(), 0) << turn;
}

INSTANTIATE_TEST_SUITE_P(Frames, RingsMotif,
                         testing::Values(std::tuple{132, 132}, std::tuple{360, 360}, std::tuple{720, 200},
                                         std::tuple{150, 400}, std::tuple{133, 391}));

TEST(RingsMotif, DrawsNothingInAnEmptyFrame)
{
    RingsMotifViewMac view;
    view.setSize(0, 0);
    juce::Image elsewhere(juce::Image::ARGB, 4, 4, true);
    juce::Graphics graphics(elsewhere);
    view.paint(graphics);
    EXPECT_EQ(elsewhere.getPixelAt(0, 0).getAlpha(), 0);
}

} // namespace
} // namespace velotrine
