#include "host/HelpContent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace velotrine {
namespace {

/// The item's texts as a person reads them, top down.
std::vector<std::string> textsOf(const HelpContentItem& item)
{
    if (const auto* row = std::get_if<HelpParamRow>(&item))
        return {row->name, row->description};
    if (const auto* tip = std::get_if<HelpTip>(&item))
        return {tip->text};
    return {std::get<HelpBody>(item).text};
}

/// Everything that the pages say and how it is arranged.
std::string everything()
{
    std::string all;
    for (const auto& page : helpContentPages()) {
        all += page.navLabel + '\n' + page.title + '\n';
        for (const auto& item : page.items) {
            all += std::to_string(item.index());
            for (const auto& text : textsOf(item))
                all += '\t' + text;
            all += '\n';
        }
    }
    return all;
}

/// FNV-1a in 64 bits (Fowler, Noll, Vo; its offset basis and prime).
std::uint64_t digest(std::string_view text)
{
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : text)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    return hash;
}

TEST(HelpContent, ReadsAsItAlwaysHas)
{
    // After an intended change of a text, take the new digest from this test's failure.
    EXPECT_EQ(digest(everything()), 431933095246323232u) << everything();
}

TEST(HelpContent, HasSevenPagesInTheOrderOfTheirSegments)
{
    std::vector<std::string> labels;
    for (const auto& page : helpContentPages())
        labels.push_back(page.navLabel);
    EXPECT_THAT(labels, testing::ElementsAre("Overview", "Rings", "Ring Editor", "Knobs", "Transport",
                                             "Scale", "Etc"));
}

TEST(HelpContent, ConsistsOfSentencesWithoutStrayBlanks)
{
    for (const auto& page : helpContentPages())
        for (const auto& item : page.items) {
            const auto text = textsOf(item).back();
            EXPECT_THAT(text, testing::MatchesRegex("[^ ].*[.:)]"));
            EXPECT_EQ(text.find("  "), std::string::npos) << text;
        }
}

TEST(HelpContent, NamesNoControlTwiceOnAPage)
{
    for (const auto& page : helpContentPages()) {
        std::set<std::string> names;
        for (const auto& item : page.items)
            if (const auto* row = std::get_if<HelpParamRow>(&item)) {
                EXPECT_FALSE(row->name.empty());
                EXPECT_TRUE(names.insert(row->name).second) << row->name;
            }
    }
}

TEST(HelpContent, HasOneWordForAMousePressAtTheStartOfASentenceAndInsideOne)
{
    const auto textAt = [](std::size_t page, std::size_t item) {
        return textsOf(helpContentPages().at(page).items.at(item)).back();
    };
    EXPECT_THAT(textAt(1, 5), testing::StartsWith("Click any ring"));
    EXPECT_THAT(textAt(2, 0), testing::StartsWith("Click a ring"));
    EXPECT_THAT(textAt(2, 7), testing::HasSubstr(", or click outside"));
    EXPECT_THAT(textAt(3, 5), testing::StartsWith("Double-click any knob"));
}

TEST(HelpContent, CountsItsKindsOfItemsBodyParamRowTip)
{
    EXPECT_EQ(HelpContentItem(HelpBody{}).index(), 0u);
    EXPECT_EQ(HelpContentItem(HelpParamRow{}).index(), 1u);
    EXPECT_EQ(HelpContentItem(HelpTip{}).index(), 2u);
}

} // namespace
} // namespace velotrine
