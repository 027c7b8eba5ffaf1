#include "host/HelpAboutPage.h"

#include "host/BundleInformation.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

class HelpAboutPageTest : public testing::Test
{
protected:
    HelpAboutPage page{"v1.0.0 (1)"};
};

TEST_F(HelpAboutPageTest, CentresItsStackInThePage)
{
    for (const auto& [width, height] : {std::pair{560, 562}, std::pair{420, 422}, std::pair{901, 741}}) {
        page.setSize(width, height);
        EXPECT_NEAR(page.stack().getCentreX(), width / 2.0, 1.0);
        EXPECT_NEAR(page.stack().getCentreY(), height / 2.0, 1.0);
        EXPECT_LT(page.stack().getHeight(), height);
    }
}

TEST_F(HelpAboutPageTest, NeverExceeds85PercentOfThePagesWidth)
{
    for (int width = 160; width <= 900; width += 20) {
        page.setSize(width, 900);
        EXPECT_LE(page.stack().getWidth(), 0.85 * width);
        for (const auto* child : page.getChildren())
            EXPECT_TRUE(page.stack().contains(child->getBounds())) << width;
    }
}

TEST_F(HelpAboutPageTest, ItsRuleIs180WideUnlessTheStackIsNarrower)
{
    page.setSize(560, 562);
    EXPECT_EQ(page.ruleView().getWidth(), 180);
    EXPECT_EQ(page.ruleView().getHeight(), 1);
    page.setSize(212, 562);
    EXPECT_EQ(page.ruleView().getWidth(), 180);
    page.setSize(200, 562);
    EXPECT_EQ(page.ruleView().getWidth(), 170);
}

TEST_F(HelpAboutPageTest, SpacesItsRowsAsDesigned)
{
    page.setSize(560, 562);
    const auto gapAfter = [this](int index) {
        return page.getChildComponent(index + 1)->getY() - page.getChildComponent(index)->getBottom();
    };
    EXPECT_EQ(gapAfter(0), 20); // emblem
    EXPECT_EQ(gapAfter(1), 4);  // name
    EXPECT_EQ(gapAfter(2), 6);  // version
    EXPECT_EQ(gapAfter(3), 6);  // rule
    EXPECT_EQ(gapAfter(4), 6);  // tagline
    EXPECT_EQ(page.motifView().getWidth(), 132);
    EXPECT_EQ(page.motifView().getHeight(), 132);
}

TEST_F(HelpAboutPageTest, HasItsTextsInOrder)
{
    EXPECT_EQ(page.getChildComponent(1)->getTitle(), "Velotrine");
    EXPECT_EQ(page.getChildComponent(2)->getTitle(), "v1.0.0 (1)");
    EXPECT_EQ(page.getChildComponent(4)->getTitle(), "Generative pitched sequencer");
    EXPECT_EQ(page.getChildComponent(5)->getTitle(),
              juce::String::fromUTF8("AUv3 — runs in any compatible host"));
}

TEST(VersionLine, NamesVersionAndBuild)
{
    EXPECT_EQ(versionLine({.shortVersion = "2.1", .buildNumber = "34"}), "v2.1 (34)");
}

TEST(VersionLine, HasAQuestionMarkForWhatIsMissing)
{
    EXPECT_EQ(versionLine({.shortVersion = {}, .buildNumber = "34"}), "v? (34)");
    EXPECT_EQ(versionLine({.shortVersion = "2.1", .buildNumber = {}}), "v2.1 (?)");
    EXPECT_EQ(versionLine({}), "v? (?)");
}

TEST(VersionLine, IsKnownForThisProgram)
{
    EXPECT_EQ(versionLine(mainBundleInformation()).find('?'), std::string::npos);
}

} // namespace
} // namespace velotrine
