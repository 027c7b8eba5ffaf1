#include "editor/FontLoader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <tuple>

namespace velotrine {
namespace {

class FontLoader : public testing::Test
{
protected:
    static std::string outputOf(const std::function<void()>& action)
    {
        testing::internal::CaptureStdout();
        action();
        return testing::internal::GetCapturedStdout();
    }

    static bool isUsable(const juce::Font& font) { return font.getStringWidthFloat("RING 1") > 10.0f; }
};

TEST_F(FontLoader, TheDisplayFontIsTheProgramsOwnAndRegisteringItAgainSaysNothing)
{
    EXPECT_EQ(outputOf([] {
                  for (int i = 0; i < 3; ++i)
                      registerDisplayFont();
              }),
              "");
    EXPECT_TRUE(displayFont(14.0f).getTypefaceName().contains("Everyday"));
    EXPECT_TRUE(isUsable(displayFont(14.0f)));
}

TEST_F(FontLoader, ALostFontIsSaidInOneLineOnceAndTheSystemsFontStandsIn)
{
    EXPECT_EXIT(
        {
            registerDisplayFontFrom({});
            registerDisplayFont();
            registerDisplayFont();
            const auto font = displayFont(14.0f);
            std::exit(isUsable(font) && font.getTypefaceName() == systemFont(14.0f).getTypefaceName() ? 0
                                                                                                      : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(outputOf([] { registerDisplayFontFrom({}); }), "[FontLoader] Font file not found in bundle\n");
}

TEST_F(FontLoader, DataThatAreNoFontAreRefusedInOneLineAndTheSystemsFontStandsIn)
{
    const std::array<std::byte, 64> noise{std::byte{0x4f}, std::byte{0x54}, std::byte{0x54}, std::byte{0x4f}};
    const auto output = outputOf([&] { registerDisplayFontFrom(noise); });
    EXPECT_TRUE(output.starts_with("[FontLoader] Registration failed: ")) << output;
    EXPECT_EQ(std::ranges::count(output, '\n'), 1);
    EXPECT_TRUE(isUsable(displayFont(14.0f)));
    EXPECT_FALSE(displayFont(14.0f).getTypefaceName().contains("Everyday"));
}

TEST_F(FontLoader, AFailedRegistrationIsSaidOnceHoweverOftenTheFontIsAskedFor)
{
    const std::array<std::byte, 4> noise{};
    for (const auto& data : {std::span<const std::byte>(), std::span<const std::byte>(noise)}) {
        const auto output = outputOf([&] {
            registerDisplayFontFrom(data);
            for (int i = 0; i < 3; ++i) {
                registerDisplayFont();
                std::ignore = displayFont(12.0f);
            }
        });
        EXPECT_EQ(std::ranges::count(output, '\n'), 1) << output;
    }
}

} // namespace
} // namespace velotrine
