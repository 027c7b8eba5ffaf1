#include "editor/CirclePainter.h"

#include <gtest/gtest.h>

#include <numbers>

namespace velotrine {
namespace {

constexpr int side = 40;

juce::Image blank()
{
    return juce::Image(juce::Image::ARGB, side, side, true, juce::SoftwareImageType());
}

/// How many whole pixels of full alpha the picture's coverage makes up.
double coveredPixels(const juce::Image& image)
{
    double sum = 0.0;
    for (int y = 0; y < image.getHeight(); ++y)
        for (int x = 0; x < image.getWidth(); ++x)
            sum += image.getPixelAt(x, y).getAlpha() / 255.0;
    return sum;
}

TEST(CirclePainter, ADiscCoversItsAreaWhereverItsCentreLies)
{
    for (const auto offset : {0.0f, 0.25f, 0.5f, 0.8f}) {
        auto image = blank();
        CirclePainter<juce::PixelARGB>(image).fillDisc({20.0f + offset, 20.0f - offset}, 9.5f,
                                                       juce::Colours::white);
        const auto area = std::numbers::pi * 9.5 * 9.5;
        EXPECT_NEAR(coveredPixels(image), area, 0.01 * area) << offset;
    }
}

TEST(CirclePainter, ACircleCoversItsLineAndNothingInsideOrOutside)
{
    auto image = blank();
    CirclePainter<juce::PixelARGB>(image).drawCircle({20.0f, 20.0f}, 12.0f, 3.0f, juce::Colours::white);
    const auto area = 2.0 * std::numbers::pi * 12.0 * 3.0;
    EXPECT_NEAR(coveredPixels(image), area, 0.01 * area);
    EXPECT_EQ(image.getPixelAt(20, 20).getAlpha(), 0);
    EXPECT_EQ(image.getPixelAt(20, 8).getAlpha(), 255);
    EXPECT_EQ(image.getPixelAt(20, 5).getAlpha(), 0);
    EXPECT_EQ(image.getPixelAt(20, 12).getAlpha(), 0);
}

TEST(CirclePainter, ALineThinnerThanAPixelIsFainterInstead)
{
    auto image = blank();
    CirclePainter<juce::PixelARGB>(image).drawCircle({20.0f, 20.0f}, 12.5f, 0.5f, juce::Colours::white);
    EXPECT_NEAR(image.getPixelAt(20, 7).getAlpha(), 128, 8);
}

TEST(CirclePainter, WhatLiesBeyondTheImageIsLeftOut)
{
    auto image = blank();
    {
        CirclePainter<juce::PixelARGB> painter(image);
        painter.fillDisc({-30.0f, 20.0f}, 10.0f, juce::Colours::white);
        painter.drawCircle({20.0f, 900.0f}, 10.0f, 2.0f, juce::Colours::white);
    }
    EXPECT_EQ(coveredPixels(image), 0.0);
    CirclePainter<juce::PixelARGB>(image).fillDisc({0.0f, 0.0f}, 10.0f, juce::Colours::white);
    EXPECT_NEAR(coveredPixels(image), 25.0 * std::numbers::pi, 1.0);
}

TEST(CirclePainter, APartlyTransparentColourMixesWithWhatIsThere)
{
    juce::Image image(juce::Image::RGB, side, side, true, juce::SoftwareImageType());
    CirclePainter<juce::PixelRGB>(image).fillDisc({20.0f, 20.0f}, 9.0f, juce::Colours::white.withAlpha(0.2f));
    EXPECT_NEAR(image.getPixelAt(20, 20).getRed(), 51, 2);
    EXPECT_EQ(image.getPixelAt(2, 2).getRed(), 0);
}

bool isSame(const juce::Image& one, const juce::Image& other)
{
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            if (one.getPixelAt(x, y) != other.getPixelAt(x, y))
                return false;
    return true;
}

TEST(CirclePainter, ASpotIsADiscWithACircleAroundItWhateverItsLine)
{
    const auto fill = juce::Colours::slategrey;
    for (const auto lineWidth : {0.7f, 1.9f, 2.0f, 3.3f, 9.0f})
        for (const auto radius : {3.0f, 7.4f, 12.0f})
            for (const auto line : {juce::Colours::white, juce::Colours::white.withAlpha(0.2f)})
                for (int sixteenth = 0; sixteenth < 16; ++sixteenth) {
                    const juce::Point centre(20.0f + static_cast<float>(sixteenth) / 16.0f, 19.3f);
                    auto expected = blank();
                    CirclePainter<juce::PixelARGB> painter(expected);
                    painter.fillDisc(centre, radius, fill);
                    painter.drawCircle(centre, radius, lineWidth, line);
                    auto spot = blank();
                    CirclePainter<juce::PixelARGB>(spot).drawSpot(centre, radius, lineWidth, fill, line);
                    EXPECT_TRUE(isSame(expected, spot)) << lineWidth << " around " << radius;
                }
}

TEST(CirclePainter, APartOfADrawingIsTheSameInAnImageOfItsOwn)
{
    const auto draw = [](CirclePainter<juce::PixelARGB>& painter) {
        painter.drawLine({20.3f, 21.1f}, {39.0f, 21.1f}, 1.3f, juce::Colours::red);
        painter.drawLine({20.3f, 21.1f}, {3.0f, 2.0f}, 1.3f, juce::Colours::red);
        painter.drawCircle({20.3f, 21.1f}, 14.2f, 2.0f, juce::Colours::white);
        painter.drawSpot({30.1f, 30.7f}, 5.0f, 2.0f, juce::Colours::grey, juce::Colours::white);
    };
    auto whole = blank();
    CirclePainter<juce::PixelARGB> painter(whole);
    draw(painter);
    for (const auto part :
         {juce::Rectangle(0, 0, 17, 23), juce::Rectangle(17, 0, 23, 40), juce::Rectangle(0, 23, 17, 17)}) {
        juce::Image image(juce::Image::ARGB, part.getWidth(), part.getHeight(), true,
                          juce::SoftwareImageType());
        CirclePainter<juce::PixelARGB> partPainter(image, -part.getPosition());
        draw(partPainter);
        for (int y = 0; y < part.getHeight(); ++y)
            for (int x = 0; x < part.getWidth(); ++x)
                ASSERT_EQ(image.getPixelAt(x, y), whole.getPixelAt(x + part.getX(), y + part.getY()));
    }
}

} // namespace
} // namespace velotrine
