#include "host/DesktopScale.h"

#include "tests/host/XSettingsText.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

constexpr const char* factor = "Gdk/WindowScalingFactor";
constexpr const char* dpi = "Xft/DPI";

std::optional<double> scaleOfManager(const XSettingsText& settings)
{
    return desktopScale({.xSettings = settings.bytes(), .resources = {}, .gdkScale = {}});
}

std::optional<double> scaleOfResources(const std::string& resources)
{
    return desktopScale({.xSettings = {}, .resources = resources, .gdkScale = {}});
}

std::optional<double> scaleOfVariable(const std::string& value)
{
    return desktopScale({.xSettings = {}, .resources = {}, .gdkScale = value});
}

TEST(DesktopScale, IsUnsetWhereNothingSetsIt)
{
    EXPECT_FALSE(desktopScale({}));
    EXPECT_FALSE(scaleOfManager(XSettingsText().text("Net/ThemeName", "Dark")));
    EXPECT_FALSE(scaleOfResources("*background: black\n"));
}

TEST(DesktopScale, TheSettingsManagerComesFirstThenTheResourcesThenTheVariable)
{
    DesktopSettings settings{.xSettings = XSettingsText().integer(factor, 2).bytes(),
                             .resources = "Xft.dpi: 288\n",
                             .gdkScale = "4"};
    EXPECT_EQ(desktopScale(settings), 2.0);
    settings.xSettings.clear();
    EXPECT_EQ(desktopScale(settings), 3.0);
    settings.resources.clear();
    EXPECT_EQ(desktopScale(settings), 4.0);
}

TEST(DesktopScale, WindowsScaledByAFactorAreNotScaledAgainByTheTextsDpi)
{
    EXPECT_EQ(scaleOfManager(XSettingsText().integer(factor, 2).integer(dpi, 192 * 1024)), 2.0);
    EXPECT_EQ(scaleOfManager(XSettingsText().integer(factor, 2).integer(dpi, 96 * 1024)), 2.0);
}

TEST(DesktopScale, WhereWindowsAreNotScaledTheTextsDpiCounts)
{
    EXPECT_EQ(scaleOfManager(XSettingsText().integer(factor, 1).integer(dpi, 144 * 1024)), 1.5);
    EXPECT_EQ(scaleOfManager(XSettingsText().integer(dpi, 192 * 1024)), 2.0);
    EXPECT_EQ(scaleOfManager(XSettingsText().integer(factor, 1)), 1.0);
    EXPECT_EQ(scaleOfManager(XSettingsText().integer(factor, 1).integer(dpi, -1)), 1.0);
}

TEST(DesktopScale, ReadsTheResourcesAsTheirOwnLibraryDoes)
{
    EXPECT_EQ(scaleOfResources("Xft.dpi:\t192\n"), 2.0);
    EXPECT_EQ(scaleOfResources("Xft.antialias: 1\nXft.dpi: 120\nXft.hinting: 1\n"), 1.25);
    EXPECT_EQ(scaleOfResources("*dpi: 192\n"), 2.0);
    EXPECT_EQ(scaleOfResources("! Xft.dpi: 192\n"), std::nullopt);
}

TEST(DesktopScale, WhatMakesNoSenseIsIgnored)
{
    for (const auto value : {0, -1, 9})
        EXPECT_FALSE(scaleOfManager(XSettingsText().integer(factor, value))) << value;
    for (const auto value : {0, -1, 10 * 1024, 1000 * 1024})
        EXPECT_FALSE(scaleOfManager(XSettingsText().integer(dpi, value))) << value;
    for (const auto* const value : {"", "0", "-192", "nan", "inf", "much", "192 or so", "1e9"})
        EXPECT_FALSE(scaleOfResources(std::string("Xft.dpi: ") + value + "\n")) << value;
    for (const auto* const value : {"", "0", "-2", "nan", "0.4", "8.5", "two"})
        EXPECT_FALSE(scaleOfVariable(value)) << value;
    EXPECT_EQ(desktopScale({.xSettings = XSettingsText().integer(factor, 0).bytes(),
                            .resources = "Xft.dpi: none\n",
                            .gdkScale = "2"}),
              2.0);
}

TEST(DesktopScale, TheSmallestAndTheLargestAreTaken)
{
    EXPECT_EQ(scaleOfVariable("0.5"), smallestScale);
    EXPECT_EQ(scaleOfVariable("8"), largestScale);
}

} // namespace
} // namespace velotrine
