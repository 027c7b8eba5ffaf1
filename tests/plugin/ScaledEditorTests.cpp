#include "tests/plugin/EditorInUse.h"
#include "tests/plugin/PluginContract.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

/// An editor that the host shows larger.
template <typename Plugin>
class ScaledEditor : public testing::Test
{
protected:
    ~ScaledEditor() override { display.act("mousemove 1500 1100"); }

    const VirtualDisplay& display = VirtualDisplay::shared();
};

std::string scaled(const std::string& place, double scale)
{
    double x = 0.0;
    double y = 0.0;
    std::istringstream(place) >> x >> y;
    return std::to_string(std::lround(x * scale)) + " " + std::to_string(std::lround(y * scale));
}

/// Left and top of an area of one colour: the first column and row with a long run of it, for the pixels of
/// its edges are smoothed.
std::pair<int, int> cornerOf(const std::vector<unsigned long>& pixels, std::size_t width,
                             unsigned long colour)
{
    constexpr int piece = 40;
    const auto height = pixels.size() / width;
    std::vector<int> inColumn(width);
    std::pair corner(static_cast<int>(width), static_cast<int>(height));
    for (std::size_t y = 0; y < height; ++y) {
        int inRow = 0;
        for (std::size_t x = 0; x < width; ++x) {
            const auto isSame = pixels[y * width + x] == colour;
            inRow = isSame ? inRow + 1 : 0;
            inColumn[x] = isSame ? inColumn[x] + 1 : 0;
            if (inColumn[x] >= piece)
                corner.first = std::min(corner.first, static_cast<int>(x));
            if (inRow >= piece)
                corner.second = std::min(corner.second, static_cast<int>(y));
        }
    }
    return corner;
}

TYPED_TEST_SUITE(ScaledEditor, EveryFormat, FormatNames);

TYPED_TEST(ScaledEditor, IsAsManyPixelsAsTheScaleSaysAndRemembersPoints)
{
    const auto parent = this->display.makeWindow(1500, 1100);
    for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
        TypeParam plugin;
        EditorInUse editor(plugin, parent, scale);
        const std::pair wanted(static_cast<int>(editorWidth * scale), static_cast<int>(editorHeight * scale));
        EXPECT_TRUE(editor.comesTrue([&] {
            return this->display.sizeOf(this->display.childOf(parent)) == wanted;
        })) << scale;
        EXPECT_TRUE(editor.saves("\"width\": 480")) << scale;
    }
    this->display.destroyWindow(parent);
}

TYPED_TEST(ScaledEditor, ARingsPanelMovesWithTheMouseThatDragsIt)
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        const auto width = static_cast<unsigned>(editorWidth * scale);
        const auto height = static_cast<unsigned>(editorHeight * scale);
        const auto parent = this->display.makeWindow(width, height);
        TypeParam plugin;
        EditorInUse editor(plugin, parent, scale);
        ASSERT_TRUE(editor.shows());
        const auto ground = scaled(panelGround, scale);
        const auto bare = this->display.pixelOf(parent, ground);
        editor.click(scaled(innermostRing, scale));
        ASSERT_TRUE(editor.comesTrue([&] { return this->display.pixelOf(parent, ground) != bare; }));
        const auto panelColour = this->display.pixelOf(parent, ground);

        const auto corner = [&] { return cornerOf(this->display.pixelsOf(parent), width, panelColour); };
        const auto before = corner();
        editor.act("mousemove " + scaled(panelTitle, scale) + " mousedown 1");
        editor.act("mousemove_relative 30 20 mousemove_relative 30 20");
        editor.act("mouseup 1");
        EXPECT_TRUE(editor.comesTrue([&] { return corner() != before; })) << scale;
        // The panel is placed on whole points.
        EXPECT_NEAR(corner().first, before.first + 60, scale) << scale;
        EXPECT_NEAR(corner().second, before.second + 40, scale) << scale;
        this->display.destroyWindow(parent);
    }
}

} // namespace
} // namespace velotrine
