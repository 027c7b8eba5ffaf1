#include "editor/FontLoader.h"

#include <gtest/gtest.h>

namespace velotrine {
namespace {

class DisplayFont : public testing::Test
{
protected:
    DisplayFont() { registerDisplayFont(); }

    [[nodiscard]] static float widthOf(const char* text)
    {
        return displayFont(100.0f).getStringWidthFloat(text);
    }
};

TEST_F(DisplayFont, KernsPairsThatWouldGape)
{
    EXPECT_LT(widthOf("Tone"), widthOf("T") + widthOf("one") - 5.0f);
    EXPECT_LT(widthOf("AV"), widthOf("A") + widthOf("V") - 3.0f);
}

TEST_F(DisplayFont, KeepsDigitsInTheirColumns)
{
    EXPECT_FLOAT_EQ(widthOf("1717"), 4.0f * widthOf("0"));
}

} // namespace
} // namespace velotrine
