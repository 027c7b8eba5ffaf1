#include "editor/ConcentricCirclesViewMac.h"

#include "engine/HostClock.h"
#include "tests/editor/MouseEvents.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

namespace velotrine {
namespace {

class RingsView : public testing::Test
{
protected:
    static constexpr int side = 300;

    RingsView()
    {
        view.setSize(side, side);
        view.spotFireTimes = fireTimes.data();
        view.clockPhase = &clockPhase;
        view.activityPhases = activityPhases.data();
        view.lfoOffsets = lfoOffsets.data();
    }

    juce::Image snapshot(float scale = 1.0f)
    {
        return view.createComponentSnapshot(view.getLocalBounds(), true, scale);
    }

    [[nodiscard]] static juce::Point<double> at(double radius, double turns)
    {
        const auto angle = turns * 2.0 * std::numbers::pi;
        return {side / 2.0 + radius * std::sin(angle), side / 2.0 - radius * std::cos(angle)};
    }

    [[nodiscard]] static juce::Colour pixel(const juce::Image& image, juce::Point<double> point,
                                            float scale = 1.0f)
    {
        const auto p = point * static_cast<double>(scale);
        return image.getPixelAt(static_cast<int>(p.x), static_cast<int>(p.y));
    }

    void onlySpotsOn(std::size_t ring, std::int64_t count)
    {
        view.spotsPerRing = {0, 0, 0, 0, 0};
        view.spotsPerRing[ring] = count;
    }

    ConcentricCirclesViewMac view;
    std::array<Shared<std::uint64_t>, 80> fireTimes{};
    Shared<double> clockPhase{0.0};
    std::array<Shared<double>, 5> activityPhases{};
    std::array<Shared<double>, 5> lfoOffsets{};
};

// 300 - 2 x (2 + 12) leaves a radius of 136 for the outermost ring.
constexpr double outermost = 136.0;
constexpr std::array radii{0.35 * outermost, 0.5125 * outermost, 0.675 * outermost, 0.8375 * outermost,
                           outermost};

TEST_F(RingsView, RingsLieEvenlyBetweenAThirdAndTheWholeOfTheOutermostRadius)
{
    onlySpotsOn(0, 0);
    for (const auto scale : {1.0f, 1.5f, 2.0f, 3.0f}) {
        const auto image = snapshot(scale);
        for (const auto radius : radii) {
            // The pixel's middle lies up to 0.7 pixels away from the line's, which reaches 1 pixel.
            EXPECT_GE(pixel(image, at(radius, 0.13), scale).getAlpha(), 0.79 * 255) << scale << ' ' << radius;
            EXPECT_EQ(pixel(image, at(radius + 3.0, 0.13), scale).getAlpha(), 0);
            EXPECT_EQ(pixel(image, at(radius - 3.0, 0.13), scale).getAlpha(), 0);
        }
    }
    ASSERT_EQ(view.cachedRadii().size(), radii.size());
    for (std::size_t i = 0; i < radii.size(); ++i)
        EXPECT_NEAR(view.cachedRadii()[i], radii[i], 1e-9);
    EXPECT_EQ(view.cachedStrokeWidth(), 2.0);
}

TEST_F(RingsView, OneSpotSitsAtTwelveOClockAndAnOffsetOfAQuarterTurnsItClockwise)
{
    onlySpotsOn(2, 1);
    auto image = snapshot();
    EXPECT_EQ(pixel(image, at(radii[2], 0.0)), juce::Colour::greyLevel(0.25f));
    EXPECT_EQ(pixel(image, at(radii[2], 0.25)), juce::Colours::white);
    view.ringPhaseOffsets[2] = 0.25f;
    image = snapshot();
    EXPECT_EQ(pixel(image, at(radii[2], 0.0)), juce::Colours::white);
    EXPECT_EQ(pixel(image, at(radii[2], 0.25)), juce::Colour::greyLevel(0.25f));
}

TEST_F(RingsView, ARingWithoutSpotsIsABareLineWhereItsFirstSpotWouldBe)
{
    onlySpotsOn(2, 0);
    view.displayedClockPhase = 0.5; // the hand is not there
    EXPECT_EQ(pixel(snapshot(), at(radii[2], 0.0)), juce::Colours::white);
    EXPECT_EQ(pixel(snapshot(), at(radii[2] + 3.0, 0.0)).getAlpha(), 0);
}

TEST_F(RingsView, RotationWobbleAndOffsetAddUp)
{
    onlySpotsOn(4, 1);
    clockPhase = 0.5;
    activityPhases[4] = 0.1;
    lfoOffsets[4] = -0.02;
    view.ringPhaseOffsets[4] = 0.05f;
    view.refreshTick();
    EXPECT_EQ(pixel(snapshot(), at(radii[4], 0.13)), juce::Colour::greyLevel(0.25f));
}

TEST_F(RingsView, AFlashFadesFromWhiteToNothingInAThirdOfASecondAndOneToComeIsNotLit)
{
    onlySpotsOn(4, 1);
    const auto brightness = [&] { return pixel(snapshot(), at(radii[4], 0.0)).getBrightness(); };
    const auto index = 4 * 16;
    EXPECT_NEAR(brightness(), 0.25f, 0.01f);
    fireTimes[index] = hostClockNow();
    EXPECT_GT(brightness(), 0.9f);
    fireTimes[index] = hostClockNow() - 175'000'000;
    EXPECT_NEAR(brightness(), 0.625f, 0.1f);
    fireTimes[index] = hostClockNow() - 350'000'000;
    EXPECT_NEAR(brightness(), 0.25f, 0.01f);
    fireTimes[index] = hostClockNow() + 10'000'000'000;
    EXPECT_NEAR(brightness(), 0.25f, 0.01f);
}

TEST_F(RingsView, TheSelectedRingIsBlackAndTheOthersAreDim)
{
    onlySpotsOn(0, 0);
    view.selectedRing = 1;
    const auto image = snapshot();
    EXPECT_EQ(pixel(image, at(radii[1], 0.13)), juce::Colours::black);
    EXPECT_NEAR(pixel(image, at(radii[3], 0.13)).getFloatAlpha(), 0.2f, 0.01f);
}

TEST_F(RingsView, LooksTheSameOverABackdropThatItKnowsAsOverOneThatItDoesNot)
{
    view.selectedRing = 3;
    fireTimes[16] = hostClockNow();
    const auto backdrop = juce::Colour::greyLevel(0.25f);
    const auto transparent = snapshot(1.5f);
    view.backdrop = backdrop;
    fireTimes[16] = hostClockNow(); // it has faded meanwhile
    const auto opaque = snapshot(1.5f);
    int different = 0;
    for (int y = 0; y < opaque.getHeight(); ++y)
        for (int x = 0; x < opaque.getWidth(); ++x) {
            const auto expected = backdrop.overlaidWith(transparent.getPixelAt(x, y));
            const auto seen = opaque.getPixelAt(x, y);
            different += std::abs(expected.getRed() - seen.getRed()) > 12 ? 1 : 0;
        }
    EXPECT_LT(different, 40);
}

TEST_F(RingsView, ANegativeNumberOfSpotsStopsTheProgram)
{
    view.spotsPerRing[0] = -1;
    EXPECT_DEATH(snapshot(), "negative number of spots");
}

TEST_F(RingsView, StoppedTheHandGoesHomeTheShorterWay)
{
    view.displayedClockPhase = 0.3;
    view.refreshTick();
    EXPECT_NEAR(view.displayedClockPhase, 0.28, 1e-12);
    view.displayedClockPhase = 0.7;
    view.refreshTick();
    EXPECT_NEAR(view.displayedClockPhase, 0.72, 1e-12);
    view.displayedClockPhase = 0.99;
    view.refreshTick();
    EXPECT_EQ(view.displayedClockPhase, 0.0);
    view.displayedLfoOffsets[0] = 0.1;
    view.refreshTick();
    EXPECT_NEAR(view.displayedLfoOffsets[0], 0.085, 1e-12);
    EXPECT_EQ(view.lastClockPhase, 0.0);
}

TEST_F(RingsView, RunningItShowsWhatTheKernelPublishes)
{
    clockPhase = 0.4;
    activityPhases[1] = 0.2;
    lfoOffsets[2] = -0.1;
    view.refreshTick();
    EXPECT_EQ(view.displayedClockPhase, 0.4);
    EXPECT_EQ(view.displayedActivityPhases[1], 0.2);
    EXPECT_EQ(view.displayedLfoOffsets[2], -0.1);
    EXPECT_EQ(view.lastClockPhase, 0.4);
}

TEST_F(RingsView, AClickWithinTwelvePointsOfARingSelectsItAndTheNextAnywhereLetsItGo)
{
    std::ignore = snapshot();
    std::vector<int> selected;
    int deselected = 0;
    view.onRingSelected = [&](int ring) { selected.push_back(ring); };
    view.onRingDeselected = [&] { ++deselected; };
    const auto click = [&](double radius) { view.mouseDown(clickAt(view, at(radius, 0.37).toFloat())); };

    click(radii[2] + 10.5);
    EXPECT_EQ(selected, std::vector{2});
    click(radii[4]);
    EXPECT_EQ(view.selectedRing, std::nullopt);
    EXPECT_EQ(deselected, 1);
    EXPECT_EQ(selected.size(), 1u);
    click(radii[0] - 12.5);
    EXPECT_EQ(view.selectedRing, std::nullopt);
    click(radii[0] - 11.5);
    EXPECT_EQ(view.selectedRing, 0);
}

TEST_F(RingsView, BetweenTwoRingsFarApartTheNearerIsHitAndNoneBeforeTheFirstDrawing)
{
    const auto click = [&](ConcentricCirclesViewMac& rings, float x) {
        rings.mouseDown(clickAt(rings, {static_cast<float>(rings.getWidth()) / 2.0f + x,
                                        static_cast<float>(rings.getHeight()) / 2.0f}));
    };
    ConcentricCirclesViewMac large;
    large.setSize(600, 600);
    click(large, 280.0f);
    EXPECT_EQ(large.selectedRing, std::nullopt);
    std::ignore = large.createComponentSnapshot(large.getLocalBounds());
    const auto first = large.cachedRadii()[0];
    const auto second = large.cachedRadii()[1];
    click(large, static_cast<float>((first + second) / 2.0 - 0.5));
    EXPECT_EQ(large.selectedRing, 0);
    large.selectedRing.reset();
    click(large, static_cast<float>((first + second) / 2.0 + 0.5));
    EXPECT_EQ(large.selectedRing, 1);
}

TEST_F(RingsView, AClickAsFarFromOneRingAsFromAnotherSelectsTheInnerOne)
{
    view.spotsPerRing = {1, 1};
    view.spotFraction = 0.16; // radii of 35 and 100
    std::ignore = snapshot();
    ASSERT_EQ(view.cachedRadii(), (std::vector{35.0, 100.0}));
    view.mouseDown(clickAt(view, {side / 2.0f + 67.5f, side / 2.0f}));
    EXPECT_EQ(view.selectedRing, 0);
}

TEST(RingsViewTolerance, IsTwelvePointsBetweenRingsTwentyApartAndHalfTheSpacingBetweenRingsFortyApart)
{
    struct Case
    {
        int side;
        double spacing;
        double hit;
        double miss;
    };

    for (const auto& each : {Case{300, 20.0, 11.0, 13.0}, Case{600, 40.0, 19.0, 21.0}}) {
        const auto side = each.side;
        const auto spacing = each.spacing;
        ConcentricCirclesViewMac view;
        view.setSize(side, side);
        const auto wantedRadius = 4.0 * spacing / 0.65;
        view.spotFraction = (side / 2.0 - 2.0 * side / 300.0 - wantedRadius) / side;
        std::ignore = view.createComponentSnapshot(view.getLocalBounds());
        const auto last = view.cachedRadii().back();
        ASSERT_NEAR(last - view.cachedRadii()[3], spacing, 1e-9);
        const auto selectedAt = [&](double radius) {
            view.selectedRing.reset();
            const auto middle = static_cast<float>(side) / 2.0f;
            view.mouseDown(clickAt(view, {middle + static_cast<float>(radius), middle}));
            return view.selectedRing;
        };
        EXPECT_EQ(selectedAt(last + each.hit), 4) << spacing;
        EXPECT_EQ(selectedAt(last + each.miss), std::nullopt) << spacing;
    }
}

TEST_F(RingsView, OnlyThePrimaryButtonSelects)
{
    std::ignore = snapshot();
    const auto onRing = at(radii[2], 0.37).toFloat();
    for (const auto button :
         {juce::ModifierKeys::rightButtonModifier, juce::ModifierKeys::middleButtonModifier})
        view.mouseDown(clickAt(view, onRing, button));
    EXPECT_EQ(view.selectedRing, std::nullopt);
    view.selectedRing = 1;
    view.mouseDown(clickAt(view, onRing, juce::ModifierKeys::rightButtonModifier));
    EXPECT_EQ(view.selectedRing, 1);
}

TEST_F(RingsView, ArrowKeysGoFromRingToRingAndReturnOpensTheOneTheyAreOn)
{
    std::vector<int> opened;
    view.onRingOpenedByKey = [&](int ring) { opened.push_back(ring); };
    const auto press = [&](int key) { return view.keyPressed(juce::KeyPress(key)); };
    for (const auto key : {juce::KeyPress::returnKey, juce::KeyPress::upKey, juce::KeyPress::rightKey,
                           juce::KeyPress::returnKey, juce::KeyPress::endKey, juce::KeyPress::upKey,
                           juce::KeyPress::returnKey, juce::KeyPress::downKey, juce::KeyPress::returnKey,
                           juce::KeyPress::homeKey, juce::KeyPress::leftKey, juce::KeyPress::returnKey})
        EXPECT_TRUE(press(key));
    EXPECT_EQ(opened, (std::vector{0, 2, 4, 3, 0}));
    EXPECT_FALSE(press(juce::KeyPress::spaceKey)) << "it plays";
    EXPECT_FALSE(press('x'));
}

/// How far a stopped hand has come home on a screen, after each tenth of a second.
std::vector<double> wayHomeAt(int refreshesPerSecond)
{
    ConcentricCirclesViewMac view;
    view.displayedClockPhase = 0.5;
    std::vector<double> way;
    for (int refresh = 0; refresh <= refreshesPerSecond * 3 / 10; ++refresh) {
        view.screenRefreshed(100.0 + static_cast<double>(refresh) / refreshesPerSecond);
        if (refresh % (refreshesPerSecond / 10) == 0)
            way.push_back(view.displayedClockPhase);
    }
    return way;
}

TEST(RingsViewGoingHome, TakesAStepForEverySixtiethOfASecondWhateverTheScreensRate)
{
    for (const auto rate : {50, 60, 80, 120, 240}) {
        const auto way = wayHomeAt(rate);
        ASSERT_EQ(way.size(), 4u);
        for (std::size_t tenth = 0; tenth < way.size(); ++tenth)
            EXPECT_NEAR(way[tenth], 0.5 - 0.02 * (1.0 + 6.0 * static_cast<double>(tenth)), 1e-9)
                << rate << " Hz, " << tenth;
    }
}

TEST(RingsViewGoingHome, IsNeitherFasterNorSlowerOnScreensThatSixtyDoesNotDivide)
{
    for (const auto rate : {48.0, 59.94, 75.0, 144.0}) {
        ConcentricCirclesViewMac view;
        view.displayedLfoOffsets[0] = 1.0;
        const auto refreshes = static_cast<int>(rate / 3.0);
        for (int refresh = 0; refresh <= refreshes; ++refresh)
            view.screenRefreshed(7.0 + refresh / rate);
        const auto sixtieths = std::log(view.displayedLfoOffsets[0]) / std::log(0.85);
        EXPECT_NEAR(sixtieths, 1.0 + 60.0 * refreshes / rate, 1.0) << rate;
    }
}

TEST(RingsViewGoingHome, GoesOnWhereItWasAfterTheScreenDidNotShowForAWhile)
{
    ConcentricCirclesViewMac view;
    view.displayedClockPhase = 0.5;
    view.screenRefreshed(5.0);
    view.screenRefreshed(10.0);
    EXPECT_NEAR(view.displayedClockPhase, 0.46, 1e-12);
}

TEST_F(RingsView, WhilePlayingEveryRefreshShowsThePresent)
{
    for (int refresh = 0; refresh < 100; ++refresh) {
        clockPhase = 0.001 * (1 + refresh);
        view.screenRefreshed(3.0 + refresh / 144.0);
        EXPECT_EQ(view.displayedClockPhase, clockPhase.load());
    }
}

/// Counts requests to draw: each marks the cached picture as out of date.
class CountingCache final : public juce::CachedComponentImage
{
public:
    explicit CountingCache(int& counter) : requests(counter) {}

    void paint(juce::Graphics&) override {}

    bool invalidateAll() override
    {
        ++requests;
        return false;
    }

    bool invalidate(const juce::Rectangle<int>&) override
    {
        ++requests;
        return false;
    }

    void releaseResources() override {}

private:
    int& requests;
};

TEST_F(RingsView, AFlashIsDrawnToItsEnd)
{
    int requests = 0;
    view.setVisible(true);
    view.setCachedComponentImage(new CountingCache(requests));
    std::uint64_t now = 1'000'000'000;
    view.hostClock = [&] { return now; };
    fireTimes[3] = now;
    requests = 0;
    view.refreshTick();
    EXPECT_EQ(requests, 1);
    now += 10'000'000'000;
    requests = 0;
    for (int tick = 0; tick < 10; ++tick)
        view.refreshTick();
    EXPECT_EQ(requests, 1) << "the spot as it is without the flash";
}

TEST_F(RingsView, NothingIsDrawnWhileStoppedAndSettled)
{
    int requests = 0;
    view.setVisible(true);
    view.setCachedComponentImage(new CountingCache(requests));
    requests = 0;
    fireTimes[3] = hostClockNow() - 1'000'000'000;
    for (int tick = 0; tick < 100; ++tick)
        view.refreshTick();
    EXPECT_EQ(requests, 0);
    view.displayedClockPhase = 0.1;
    for (int tick = 0; tick < 100; ++tick)
        view.refreshTick();
    EXPECT_EQ(requests, 5);
    fireTimes[3] = hostClockNow() + 1'000'000'000;
    view.refreshTick();
    EXPECT_EQ(requests, 6);
    clockPhase = 0.5;
    view.refreshTick();
    view.refreshTick();
    EXPECT_EQ(requests, 8);
}

} // namespace
} // namespace velotrine
