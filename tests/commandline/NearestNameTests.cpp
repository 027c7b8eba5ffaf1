#include "commandline/NearestName.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velotrine {
namespace {

TEST(NearestName, IsTheOneWithTheFewestLettersToChange)
{
    EXPECT_EQ(nearestName("activty", {"boredom", "activity", "calories"}), "activity");
    EXPECT_EQ(nearestName("RINGVOLR3", {"ringVolR1", "ringVolR3"}), "ringVolR3");
}

TEST(NearestName, CountsALetterTooManyOneTooFewAndAWrongOneAlike)
{
    for (const auto* const typed : {"tempoo", "temp", "tenpo"})
        EXPECT_EQ(nearestName(typed, {"bars", "tempo"}), "tempo") << typed;
}

TEST(NearestName, TakesUpperAndLowerCaseForTheSame)
{
    EXPECT_EQ(nearestName("DRUM CIRCLE", {"Default", "Drum Circle"}), "Drum Circle");
    EXPECT_EQ(nearestName("drum circle", {"DRUM CIRCLE"}), "DRUM CIRCLE");
}

TEST(NearestName, IsTheFirstOfSeveralThatAreEquallyNear)
{
    EXPECT_EQ(nearestName("spotsR9", {"spotsR1", "spotsR2"}), "spotsR1");
    EXPECT_EQ(nearestName("spotsR9", {"spotsR2", "spotsR1"}), "spotsR2");
}

TEST(NearestName, IsEmptyWhenNothingIsNear)
{
    EXPECT_EQ(nearestName("xyzzy", {"activity", "boredom"}), "");
    EXPECT_EQ(nearestName("activity", {}), "");
}

TEST(NearestName, MayDifferInTwoLettersOfAShortWordAndInAThirdOfALongOne)
{
    EXPECT_EQ(nearestName("abc", {"axx"}), "axx");
    EXPECT_EQ(nearestName("abc", {"xxx"}), "");
    EXPECT_EQ(nearestName("abcdefghi", {"xxxdefghi"}), "xxxdefghi");
    EXPECT_EQ(nearestName("abcdefghi", {"xxxxefghi"}), "");
}

TEST(NearestName, FindsNothingForAnEmptyOrAnEndlessText)
{
    EXPECT_EQ(nearestName("", {"activity"}), "");
    EXPECT_EQ(nearestName(std::string(100000, 'a'), {"activity"}), "");
}

TEST(Suggestion, AsksForTheNearestName)
{
    EXPECT_EQ(suggestion("activty", {"boredom", "activity"}), "; did you mean \"activity\"?");
}

TEST(Suggestion, IsEmptyWhenNothingIsNear)
{
    EXPECT_EQ(suggestion("xyzzy", {"boredom", "activity"}), "");
}

} // namespace
} // namespace velotrine
