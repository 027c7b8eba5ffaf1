#include "host/XSettings.h"

#include "tests/host/XSettingsText.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

using Order = XSettingsText::ByteOrder;

XSettingsText desktop(Order order)
{
    XSettingsText settings(order);
    settings.text("Net/ThemeName", "Dark").colour("Some/Colour").integer("Gdk/WindowScalingFactor", 2);
    return settings.text("Xft/RGBA", "none").integer("Xft/DPI", -1);
}

TEST(XSettings, FindsANumberAfterTextsAndColoursInEitherByteOrder)
{
    for (const auto order : {Order::leastFirst, Order::mostFirst}) {
        const auto bytes = desktop(order).bytes();
        EXPECT_EQ(xSettingsInteger(bytes, "Gdk/WindowScalingFactor"), 2);
        EXPECT_EQ(xSettingsInteger(bytes, "Xft/DPI"), -1);
    }
}

TEST(XSettings, WhatIsMissingOrNoNumberIsNotFound)
{
    const auto bytes = desktop(Order::leastFirst).bytes();
    EXPECT_FALSE(xSettingsInteger(bytes, "Xft/DP"));
    EXPECT_FALSE(xSettingsInteger(bytes, "Xft/DPI/"));
    EXPECT_FALSE(xSettingsInteger(bytes, "Net/ThemeName"));
    EXPECT_FALSE(xSettingsInteger(bytes, "Some/Colour"));
    EXPECT_FALSE(xSettingsInteger({}, "Xft/DPI"));
}

TEST(XSettings, NothingIsReadFromTruncatedSettings)
{
    const auto whole = desktop(Order::mostFirst).bytes();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::vector<std::byte> part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_FALSE(xSettingsInteger(part, "Xft/DPI")) << length;
    }
}

TEST(XSettings, WhatFollowsAnUnknownTypeCannotBeRead)
{
    const auto bytes = XSettingsText().integer("A", 1).unknown("B").integer("C", 3).bytes();
    EXPECT_EQ(xSettingsInteger(bytes, "A"), 1);
    EXPECT_FALSE(xSettingsInteger(bytes, "C"));
}

TEST(XSettings, NothingIsFoundAfterImpossibleLengthsAndCounts)
{
    const auto bytes = desktop(Order::leastFirst).bytes();
    for (std::size_t i = 8; i + 4 <= bytes.size(); ++i) {
        auto wrong = bytes;
        std::fill_n(wrong.begin() + static_cast<std::ptrdiff_t>(i), 4, std::byte{0xff});
        EXPECT_FALSE(xSettingsInteger(wrong, "None such")) << i;
    }
}

} // namespace
} // namespace velotrine
