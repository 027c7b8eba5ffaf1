#include "host/WrappingLabel.h"

#include "editor/FontLoader.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

const std::string longText =
    "When a spot fires, it plays a pitched FM synthesised voice — of its ring's timbre, octave and volume.";

class WrappingLabelTest : public testing::Test
{
protected:
    /// The lowest row with ink, or -1.
    static int lowestInk(WrappingLabel& label)
    {
        const auto picture = label.createComponentSnapshot(label.getLocalBounds());
        for (int y = picture.getHeight() - 1; y >= 0; --y)
            for (int x = 0; x < picture.getWidth(); ++x)
                if (picture.getPixelAt(x, y).getAlpha() > 60)
                    return y;
        return -1;
    }

    WrappingLabel label{longText, systemFont(14.0f), juce::Colours::white};
};

TEST_F(WrappingLabelTest, GrowsTallerAsItGetsNarrower)
{
    int previous = 0;
    for (int width = 460; width >= 100; width -= 40) {
        EXPECT_GE(label.heightForWidth(width), previous);
        previous = label.heightForWidth(width);
    }
    EXPECT_GT(label.heightForWidth(100), 5 * label.heightForWidth(2000) / 2);
}

TEST_F(WrappingLabelTest, LinesAreNeverLongerThan460Points)
{
    EXPECT_EQ(label.heightForWidth(2000), label.heightForWidth(460));
    EXPECT_EQ(label.preferredWidth(), 460);
}

TEST_F(WrappingLabelTest, ShowsItsLastLineWholeAtTheHeightThatItAsksFor)
{
    for (const auto width : {120, 250, 460}) {
        label.setSize(width, label.heightForWidth(width));
        const auto lowestAsAsked = lowestInk(label);
        label.setSize(width, label.heightForWidth(width) + 100);
        EXPECT_EQ(lowestAsAsked, lowestInk(label)) << width;
    }
}

TEST_F(WrappingLabelTest, AShortTextPrefersItsOwnWidthAndOneLine)
{
    const WrappingLabel title("Rings", systemFont(22.0f), juce::Colours::white);
    EXPECT_LT(title.preferredWidth(), 100);
    EXPECT_EQ(title.heightForWidth(title.preferredWidth()), title.heightForWidth(460));
}

TEST_F(WrappingLabelTest, CentredTextHasEqualMargins)
{
    WrappingLabel title("HOH", systemFont(22.0f), juce::Colours::white, juce::Justification::centredTop);
    title.setSize(464, 30);
    const auto picture = title.createComponentSnapshot(title.getLocalBounds());
    int left = picture.getWidth();
    int right = 0;
    for (int x = 0; x < picture.getWidth(); ++x)
        for (int y = 0; y < picture.getHeight(); ++y)
            if (picture.getPixelAt(x, y).getAlpha() > 60) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
    EXPECT_NEAR(left, picture.getWidth() - 1 - right, 2);
}

TEST_F(WrappingLabelTest, ReadsItsTextToAssistiveTechnology)
{
    const auto handler = label.createAccessibilityHandler();
    EXPECT_EQ(handler->getRole(), juce::AccessibilityRole::staticText);
    EXPECT_EQ(handler->getTitle(), juce::String::fromUTF8(longText.c_str()));
}

} // namespace
} // namespace velotrine
