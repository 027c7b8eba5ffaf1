#include "tests/support/CommaLocale.h"

#include "audiounit/Parameters.h"
#include "tests/plugin/EditorInUse.h"
#include "tests/plugin/PluginContract.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

// A host that has set a locale with a comma gets, to the letter, what other hosts get.

constexpr int steps = 16;

std::vector<std::string> clapTexts()
{
    const ClapLibrary library;
    const ClapHost host(library);
    std::vector<std::string> texts;
    for (const auto& parameter : parameterTable())
        for (int i = 0; i <= steps; ++i) {
            const auto range = static_cast<double>(parameter.maxValue - parameter.minValue);
            const auto value = static_cast<double>(parameter.minValue) + range * i / steps;
            const auto id = static_cast<clap_id>(parameter.address);
            std::array<char, 64> text{};
            host.params().value_to_text(&host.plugin(), id, value, text.data(), text.size());
            texts.emplace_back(text.data());
            double read = -1.0;
            EXPECT_TRUE(host.params().text_to_value(&host.plugin(), id, text.data(), &read)) << text.data();
            host.params().value_to_text(&host.plugin(), id, read, text.data(), text.size());
            EXPECT_EQ(texts.back(), text.data());
        }
    return texts;
}

std::vector<std::string> vst3Texts()
{
    const Vst3Host host;
    std::vector<std::string> texts;
    for (const auto& parameter : host.parameters())
        for (int i = 0; i <= steps; ++i) {
            texts.push_back(host.text(parameter.id, static_cast<double>(i) / steps));
            const auto read = host.valueOf(parameter.id, texts.back());
            EXPECT_TRUE(read) << parameter.title << ": " << texts.back();
            EXPECT_EQ(host.text(parameter.id, read.value_or(-1.0)), texts.back()) << parameter.title;
        }
    return texts;
}

TEST(CommaLocale, ChangesNoTextOfTheClapPluginsValues)
{
    const auto expected = clapTexts();
    const CommaLocale locale;
    EXPECT_EQ(clapTexts(), expected);
}

TEST(CommaLocale, ChangesNoTextOfTheVst3PluginsValues)
{
    std::ignore = VirtualDisplay::shared();
    const auto expected = vst3Texts();
    const CommaLocale locale;
    EXPECT_EQ(vst3Texts(), expected);
}

TEST(CommaLocale, ChangesNothingInWhatTheLv2PluginLogs)
{
    const CommaLocale locale;
    const Lv2Library library;
    const Lv2Host host(library, 7999.5);
    EXPECT_EQ(host.logged,
              std::vector<std::string>{"Velotrine: There is no sound at a sample rate of 7999.5 Hz.\n"});
}

/// The largest difference between two pictures in any pixel and colour, of 255.
int furthestApart(const std::vector<unsigned long>& one, const std::vector<unsigned long>& other)
{
    const auto channel = [](unsigned long pixel, int shift) {
        return static_cast<int>((pixel >> shift) & 0xff);
    };
    int furthest = one.size() == other.size() ? 0 : 255;
    for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i)
        for (const auto shift : {0, 8, 16})
            furthest = std::max(furthest, std::abs(channel(one[i], shift) - channel(other[i], shift)));
    return furthest;
}

/// The plug-in in a host that loads a state with fractions.
template <typename Plugin>
class EditorInACommaLocale : public testing::Test
{
protected:
    /// The editor with one of the rings' panels open, and what the plug-in then saves.
    struct Shown
    {
        std::vector<unsigned long> pixels;
        std::string state;
    };

    [[nodiscard]] Shown use() const
    {
        const auto parent = display.makeWindow(editorWidth, editorHeight);
        display.giveKeyboardTo(parent);
        Plugin plugin;
        EditorInUse editor(plugin, parent);
        EXPECT_TRUE(editor.shows());
        const auto type = [&](const char* field, const char* text) {
            EXPECT_TRUE(editor.type(field, text));
            editor.act("key Return");
        };
        type(tempoField, "97.5");
        EXPECT_TRUE(editor.comesToSave("\"bpm\": 97.5"));
        const auto ground = display.pixelOf(parent, panelGround);
        editor.click(innermostRing);
        EXPECT_TRUE(editor.comesTrue([&] { return display.pixelOf(parent, panelGround) != ground; }));
        type(luckField, "0.25");
        EXPECT_TRUE(editor.comesToSave("\"probR1\": 0.25"));
        editor.act("mousemove 1500 1100");
        EXPECT_TRUE(editor.comesTrue([&] { return editor.hostHasKeyboard(); }));
        std::vector<unsigned long> pixels;
        int unchanged = 0;
        EXPECT_TRUE(editor.comesTrue([&] { // nothing moves any more, nor is a control lit under the mouse
            unchanged = std::exchange(pixels, display.pixelsOf(parent)) == pixels ? unchanged + 1 : 0;
            return unchanged == 10;
        }));
        const auto saved = plugin.save();
        EXPECT_TRUE(plugin.load(saved));
        EXPECT_EQ(plugin.save(), saved);
        return {pixels, saved};
    }

    const VirtualDisplay& display = VirtualDisplay::shared();
};

TYPED_TEST_SUITE(EditorInACommaLocale, EveryFormat, FormatNames);

TYPED_TEST(EditorInACommaLocale, ShowsReadsAndSavesNumbersWithAPoint)
{
    const auto expected = this->use();
    const CommaLocale locale;
    const auto shown = this->use();
    // A ring at rest may stand a thousandth of a turn from where it stood before.
    EXPECT_LE(furthestApart(shown.pixels, expected.pixels), 2);
    EXPECT_EQ(shown.state, expected.state);
}

} // namespace
} // namespace velotrine
