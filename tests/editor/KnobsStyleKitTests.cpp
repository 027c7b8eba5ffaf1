#include "editor/KnobsStyleKit.h"

#include "editor/FontLoader.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>

namespace velotrine {
namespace {

constexpr auto underlays =
    std::array{KnobsStyleKit::imageOfActivityUnderlay, KnobsStyleKit::imageOfBoredomUnderlay,
               KnobsStyleKit::imageOfCaloriesUnderlay, KnobsStyleKit::imageOfDrudgeryUnderlay};

class KnobsArtwork : public testing::Test
{
protected:
    KnobsArtwork() { registerDisplayFont(); }

    [[nodiscard]] static double ink(const juce::Image& image)
    {
        double sum = 0.0;
        for (int y = 0; y < image.getHeight(); ++y)
            for (int x = 0; x < image.getWidth(); ++x)
                sum += static_cast<double>(image.getPixelAt(x, y).getFloatAlpha());
        return sum;
    }

    /// Opaque pixels are white, and there are both opaque and clear ones.
    static void expectWhiteOnClear(const juce::Image& image)
    {
        int opaque = 0;
        int clear = 0;
        for (int y = 0; y < image.getHeight(); ++y)
            for (int x = 0; x < image.getWidth(); ++x) {
                const auto pixel = image.getPixelAt(x, y);
                clear += pixel.getAlpha() == 0 ? 1 : 0;
                if (pixel.getAlpha() != 255)
                    continue;
                ++opaque;
                EXPECT_EQ(pixel, juce::Colours::white) << x << ' ' << y;
            }
        EXPECT_GT(opaque, 50);
        EXPECT_GT(clear, 1000);
    }
};

TEST_F(KnobsArtwork, IsWhiteOnTransparent)
{
    for (const auto& underlay : underlays)
        expectWhiteOnClear(underlay({80.0f, 80.0f}, 2.0f));
    expectWhiteOnClear(KnobsStyleKit::imageOfOverlay({80.0f, 80.0f}, 2.0f));
}

TEST_F(KnobsArtwork, IsMadeForTheSizeInPointsTimesTheScreensDensity)
{
    for (const auto density : {1.0f, 1.5f, 2.0f, 3.0f}) {
        const auto image = KnobsStyleKit::imageOfOverlay({72.0f, 60.0f}, density);
        EXPECT_EQ(image.getWidth(), juce::roundToInt(72.0f * density));
        EXPECT_EQ(image.getHeight(), juce::roundToInt(60.0f * density));
    }
}

TEST_F(KnobsArtwork, GrowsWithItsRectangle)
{
    for (const auto& underlay : underlays)
        EXPECT_NEAR(ink(underlay({160.0f, 160.0f}, 2.0f)) / ink(underlay({80.0f, 80.0f}, 2.0f)), 4.0, 0.1);
    EXPECT_NEAR(ink(KnobsStyleKit::imageOfOverlay({160.0f, 160.0f}, 1.0f)) /
                    ink(KnobsStyleKit::imageOfOverlay({80.0f, 80.0f}, 1.0f)),
                4.0, 0.1);
}

TEST_F(KnobsArtwork, EveryKnobHasANameOfItsOwn)
{
    for (std::size_t i = 0; i < underlays.size(); ++i)
        for (std::size_t j = i + 1; j < underlays.size(); ++j) {
            const auto a = underlays[i]({80.0f, 80.0f}, 1.0f);
            const auto b = underlays[j]({80.0f, 80.0f}, 1.0f);
            double difference = 0.0;
            for (int y = 0; y < 80; ++y)
                for (int x = 0; x < 80; ++x)
                    difference +=
                        std::abs(a.getPixelAt(x, y).getAlpha() - b.getPixelAt(x, y).getAlpha()) / 255.0;
            EXPECT_GT(difference, 40.0) << i << ' ' << j;
        }
}

TEST_F(KnobsArtwork, NamesStandWhereTheOverlayNeverPasses)
{
    const auto overlay = KnobsStyleKit::imageOfOverlay({80.0f, 80.0f}, 1.0f);
    double reach = 0.0;
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 80; ++x)
            if (overlay.getPixelAt(x, y).getAlpha() > 0)
                reach = std::max(reach, std::hypot(x + 0.5 - 40.0, y + 0.5 - 40.0));
    for (const auto& underlay : underlays) {
        const auto image = underlay({80.0f, 80.0f}, 1.0f);
        for (int y = 0; y < 80; ++y)
            for (int x = 0; x < 80; ++x)
                if (image.getPixelAt(x, y).getAlpha() > 128) {
                    EXPECT_GT(std::hypot(x + 0.5 - 40.0, y + 0.5 - 40.0), reach) << x << ' ' << y;
                }
    }
}

TEST_F(KnobsArtwork, TheOverlaysMarkPointsUp)
{
    const auto image = KnobsStyleKit::imageOfOverlay({100.0f, 100.0f}, 1.0f);
    EXPECT_EQ(image.getPixelAt(50, 34).getAlpha(), 255);
    for (const auto& [x, y] : {std::pair{34, 50}, {50, 66}, {66, 50}, {50, 50}})
        EXPECT_EQ(image.getPixelAt(x, y).getAlpha(), 0) << x << ' ' << y;
}

TEST_F(KnobsArtwork, TheCircleIsInsetByASixteenthInWholePointsAndTheDiscByAQuarterMore)
{
    const auto draw = [](auto drawing) { return imageDrawnBy({100.0f, 100.0f}, 1.0f, drawing); };
    // A sixteenth of 100 rounds to 6.
    const auto circle = draw(KnobsStyleKit::drawCircle);
    EXPECT_GT(circle.getPixelAt(6, 50).getAlpha(), 128);
    EXPECT_EQ(circle.getPixelAt(9, 50).getAlpha(), 0);
    EXPECT_EQ(circle.getPixelAt(4, 50).getAlpha(), 0);
    EXPECT_EQ(circle.getPixelAt(50, 50).getAlpha(), 0);
    const auto both = draw(KnobsStyleKit::drawCircleWithDisc);
    EXPECT_EQ(both.getPixelAt(50, 50), juce::Colours::white);
    EXPECT_EQ(both.getPixelAt(32, 50).getAlpha(), 255);
    EXPECT_EQ(both.getPixelAt(29, 50).getAlpha(), 0);
}

} // namespace
} // namespace velotrine
