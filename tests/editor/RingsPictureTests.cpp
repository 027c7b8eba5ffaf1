#include "audiounit/Presets.h"
#include "editor/ConcentricCirclesViewMac.h"
#include "engine/VelotrineDSPKernel.h"
#include "tests/support/WindowInMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace velotrine {
namespace {

constexpr int side = 150;
constexpr int framesARefresh = 800; // 60 refreshes a second at 48 kHz

/// A preset that plays, and shows itself on any number of views.
class PlayingPreset
{
public:
    explicit PlayingPreset(std::size_t number)
    {
        kernel.setup(framesARefresh, 48000.0);
        const auto& values = presetTable()[number].values;
        for (ParameterAddress address = 0; address < parameterCount; ++address)
            kernel.setParameter(address, values[address]);
        kernel.sync = false;
        kernel.internalPlaying = true;
    }

    void playOn()
    {
        std::array<float, framesARefresh> left{};
        std::array<float, framesARefresh> right{};
        kernel.process(left.data(), right.data(), framesARefresh);
        now = hostClockNow();
    }

    void showOn(ConcentricCirclesViewMac& view)
    {
        view.setSize(side, side);
        view.backdrop = juce::Colours::darkgrey;
        view.hostClock = [this] { return now; };
        view.spotFireTimes = kernel.spotFireTimes.data();
        view.clockPhase = &kernel.clockPhaseBuf;
        view.activityPhases = kernel.activityPhases.data();
        view.lfoOffsets = kernel.lfoOffsets.data();
        for (std::size_t ring = 0; ring < ringCount; ++ring) {
            view.spotsPerRing[ring] = kernel.spotCounts[ring];
            view.ringPhaseOffsets[ring] = kernel.phaseOffsets[ring];
        }
    }

    VelotrineDSPKernel kernel;
    std::uint64_t now = 0;
};

bool isSame(const juce::Image& a, const juce::Image& b)
{
    const juce::Image::BitmapData left(a, juce::Image::BitmapData::readOnly);
    const juce::Image::BitmapData right(b, juce::Image::BitmapData::readOnly);
    if (left.width != right.width || left.height != right.height || left.pixelFormat != right.pixelFormat)
        return false;
    const auto bytes = static_cast<std::size_t>(left.width) * static_cast<std::size_t>(left.pixelStride);
    for (int y = 0; y < left.height; ++y)
        if (std::memcmp(left.getLinePointer(y), right.getLinePointer(y), bytes) != 0)
            return false;
    return true;
}

class RingsPictureKept : public testing::TestWithParam<std::tuple<std::size_t, float>>
{};

TEST_P(RingsPictureKept, IsPixelForPixelThatOfTheFramePaintedWhole)
{
    const auto [number, scale] = GetParam();
    PlayingPreset preset(number);
    ConcentricCirclesViewMac kept;
    preset.showOn(kept);
    WindowInMemory window(kept, scale);
    for (int frame = 0; frame < 1000; ++frame) {
        preset.playOn();
        kept.refreshTick();
        ConcentricCirclesViewMac fresh;
        preset.showOn(fresh);
        WindowInMemory another(fresh, scale);
        fresh.refreshTick();
        ASSERT_TRUE(isSame(window.paint(), another.paint())) << "frame " << frame;
    }
}

TEST_P(RingsPictureKept, IsTheSameWhereItIsNotPaintedIntoAWindow)
{
    const auto [number, scale] = GetParam();
    PlayingPreset preset(number);
    ConcentricCirclesViewMac view;
    preset.showOn(view);
    WindowInMemory window(view, scale);
    for (int frame = 0; frame < 100; ++frame)
        preset.playOn();
    view.refreshTick();
    const auto snapshot = view.createComponentSnapshot(view.getLocalBounds(), true, scale);
    EXPECT_TRUE(isSame(window.paint(), snapshot));
}

INSTANTIATE_TEST_SUITE_P(AllPresets, RingsPictureKept,
                         testing::Combine(testing::Range<std::size_t>(0, presetCount),
                                          testing::Values(1.0f, 1.5f, 2.0f)));

/// The view's picture itself, without a view around it.
class RingsPictureChanges : public testing::Test
{
protected:
    RingsPictureChanges()
    {
        frame.centre = {100.0f, 100.0f};
        frame.hand = juce::Colours::grey;
        frame.handTip = juce::Point<float>{100.0f, 20.0f};
        frame.handWidth = 1.0f;
        frame.dotRadius = 2.0f;
        frame.lineWidth = 2.0f;
        frame.spotRadius = 5.0f;
        frame.rings.push_back({80.0f, juce::Colours::white, {{{100.0f, 20.0f}, juce::Colours::black}}});
        frame.rings.push_back({60.0f, juce::Colours::white, {{{40.0f, 100.0f}, juce::Colours::black}}});
        grid.width = grid.height = 200;
    }

    std::span<const juce::Rectangle<int>> show() { return picture.show(frame, grid); }

    RingsFrame frame;
    PixelGrid grid;
    RingsPicture picture;
};

TEST_F(RingsPictureChanges, AreTheWholePictureAtFirst)
{
    const auto changes = show();
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0], juce::Rectangle<int>(200, 200));
}

TEST_F(RingsPictureChanges, AreNoneWhileNothingMoves)
{
    show();
    EXPECT_TRUE(show().empty());
}

TEST_F(RingsPictureChanges, AreTheSpotThatFlashesAndNothingElse)
{
    show();
    frame.rings[1].spots[0].fill = juce::Colours::white;
    const auto changes = show();
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_TRUE(changes[0].contains(juce::Rectangle<int>(34, 94, 12, 12)));
    EXPECT_LE(changes[0].getWidth() * changes[0].getHeight(), 16 * 16);
}

TEST_F(RingsPictureChanges, AreTwoPlacesOfASpotThatJumps)
{
    show();
    frame.rings[1].spots[0].centre = {160.0f, 100.0f};
    EXPECT_EQ(show().size(), 2u);
}

TEST_F(RingsPictureChanges, OfAMovingHandAreAFractionOfItsSquare)
{
    show();
    frame.handTip = juce::Point<float>{156.5f, 43.5f};
    int pixels = 0;
    for (const auto& change : show())
        pixels += change.getWidth() * change.getHeight();
    EXPECT_LT(pixels, 200 * 200 / 8);
}

TEST_F(RingsPictureChanges, AreEverythingWhenALineChangesItsColour)
{
    show();
    frame.rings[0].line = juce::Colours::black;
    ASSERT_EQ(show().size(), 1u);
    EXPECT_EQ(show().size(), 0u);
}

TEST_F(RingsPictureChanges, FollowSpotsThatComeAndGo)
{
    show();
    const auto spot = frame.rings[0].spots[0];
    frame.rings[0].spots.push_back({{180.0f, 100.0f}, juce::Colours::black});
    EXPECT_EQ(show().size(), 1u);
    frame.rings[0].spots = {spot};
    EXPECT_EQ(show().size(), 1u);
}

} // namespace
} // namespace velotrine
